#include "calibration/calibrationrecord.h"
#include "tests/support/deviceroot.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <csignal>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr QSize ScreenSize{800, 480};
/// The panel looks for requests of screenshots every two seconds; the rest is for slow machines.
constexpr auto ScreenshotLimit = 20s;
constexpr auto PageLimit = 30s; // the first page but one comes after five seconds
constexpr auto EndLimit = 3000ms; // in which the panel ends when it is told to
const QString Calibration = "/etc/pointercal";

template <typename Condition>
bool waitFor(Condition condition, std::chrono::milliseconds limit = PageLimit)
{
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        std::this_thread::sleep_for(20ms);
    }
    return true;
}

/// The program on a simulated device of its own, as a thread of the test plays with it.
class Panel
{
public:
    Panel()
    {
        QFile screen(work.filePath("screen.json"));
        const QByteArray description =
            R"({"screens":[{"name":"panel","x":0,"y":0,"width":800,"height":480,)"
            R"("logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]})";
        need(screen.open(QIODevice::WriteOnly) && screen.write(description) > 0
                 && control("init " + device.path()) && control("keyboard plug"),
             "a device to run the program on");
    }
    ~Panel()
    {
        program.kill(); // if a step has gone wrong
        program.waitForFinished();
    }

    bool control(const QString &line) const
    {
        return QProcess::execute(QStringLiteral(PANELCTL),
                                 QStringList{"--root", device.path()} + line.split(u' '))
            == 0;
    }
    QString path(const QString &devicePath) const { return device.path() + devicePath; }
    QByteArray read(const QString &devicePath) const
    {
        QFile file(path(devicePath));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QString &devicePath, const QByteArray &content) const
    {
        QFile file(path(devicePath));
        need(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
             file.fileName());
    }

    void start()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("PANEL_ROOT", device.path());
        environment.insert("LD_LIBRARY_PATH", QStringLiteral(FIRMWARE_FOLDER));
        environment.insert("ASAN_OPTIONS", "detect_leaks=0"); // of tslib
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QStringLiteral(OPERATOR_PANEL),
                      {"-platform", "offscreen:configfile=" + work.filePath("screen.json")});
        need(program.waitForStarted(), "the program");
    }

    /// Null when there is none in time.
    QImage screenshot() const
    {
        const QString file = work.filePath("screenshot.png");
        return control(
                   QStringLiteral("screenshot %1 --wait %2").arg(file).arg(ScreenshotLimit.count()))
            ? QImage(file).convertToFormat(QImage::Format_RGB32)
            : QImage();
    }
    /// The first one on which \a isShown, or what is there instead.
    QImage screenshotOf(bool (*isShown)(const QImage &)) const
    {
        QImage picture;
        waitFor([&] { return isShown(picture = screenshot()); });
        return picture;
    }

    /// How often the program has the touchscreen open: once more in a calibration run.
    qsizetype openTouchscreens() const
    {
        return openDescriptors(path("/dev/input/touchscreen"), program.processId());
    }
    void touch(QPoint place) const
    {
        control(QStringLiteral("touch %1 %2 --ms 40").arg(place.x()).arg(place.y()));
    }

    /// Tells the program to end; the exit code, or -1 when it does not within EndLimit.
    int terminate()
    {
        kill(pid_t(program.processId()), SIGTERM);
        return program.waitForFinished(int(EndLimit.count()))
                && program.exitStatus() == QProcess::NormalExit
            ? program.exitCode()
            : -1;
    }

    /// What it has said that Qt does not always say on a simulated device.
    QStringList complaints()
    {
        static const QRegularExpression usual(
            "^$|This plugin does not support|evdevkeyboard: Failed to query led");
        QStringList lines = QString::fromUtf8(program.readAll()).split(u'\n');
        lines.removeIf([](const QString &line) { return line.contains(usual); });
        return lines;
    }

private:
    QTemporaryDir device;
    QTemporaryDir work;
    QProcess program;
};

bool isPainted(const QImage &picture, QPoint place)
{
    return picture.rect().contains(place) && picture.pixel(place) != picture.pixel(0, 0);
}

/// The busy bar lies across the screen, somewhere in its middle third.
bool isStartPage(const QImage &picture)
{
    for (int y = ScreenSize.height() / 3; y < ScreenSize.height() * 2 / 3; ++y) {
        if (isPainted(picture, {15, y}) && isPainted(picture, {785, y})) {
            return true;
        }
    }
    return false;
}

/// A button in each corner on the left.
bool isPreviewPage(const QImage &picture)
{
    return isPainted(picture, {20, 49}) && isPainted(picture, {32, 412});
}

/// Narrower than the screen, and of its height.
bool isWizard(const QImage &picture)
{
    return isPainted(picture, {85, 475}) && !isPainted(picture, {40, 475});
}

struct Pages
{
    QImage start, preview, wizard;
    int exitCode = -1;
    QStringList complaints;
};

Pages seePages()
{
    Panel panel;
    panel.control("plc start");
    panel.start();
    Pages pages;
    pages.start = panel.screenshot();
    panel.control("plc stop");
    pages.preview = panel.screenshotOf(isPreviewPage);
    panel.control("keyboard type <Return>");
    pages.wizard = panel.screenshotOf(isWizard);
    pages.exitCode = panel.terminate();
    pages.complaints = panel.complaints();
    return pages;
}

struct Calibrated
{
    QByteArray before, stored, after;
    QStringList left;
    int exitCode = -1;
};

Calibrated endInCalibration()
{
    constexpr QPoint StartButton{400, 91};
    constexpr auto WayToCross = 560ms;

    Panel panel;
    // The good calibration in other words: the one that is measured will not have them.
    Calibrated result;
    for (const QByteArray &number : panel.read(Calibration).simplified().split(' ')) {
        result.before += QByteArray::number(number.toLongLong() / 2) + ' ';
    }
    panel.write(Calibration, result.before);
    panel.control("calibration-request");
    panel.start();
    const qsizetype nOpen = 1;
    const auto isRunning = [&] { return panel.openTouchscreens() > nOpen; };
    waitFor([&] { return panel.openTouchscreens() == nOpen; });
    std::this_thread::sleep_for(5s); // nothing to press before
    waitFor([&] {
        panel.touch(StartButton);
        return waitFor(isRunning, 250ms);
    });
    for (const QPoint &cross : crosshairTargets(ScreenSize)) {
        panel.touch(cross);
        std::this_thread::sleep_for(WayToCross);
    }
    waitFor([&] { return panel.read(Calibration) != result.before; });
    result.stored = panel.read(Calibration);
    result.exitCode = panel.terminate();
    result.after = panel.read(Calibration);
    result.left = QDir(panel.path("/etc")).entryList({"*pointercal*"}, QDir::Files | QDir::Hidden);
    return result;
}

} // namespace

/// The program itself on a simulated device, seen and worked from outside. Both panels run at the
/// same time, because each takes the first five seconds to come up.
class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Threads, no futures: how these hand over is not seen by the thread sanitizer.
        std::thread first([this] { pages = seePages(); });
        calibrated = endInCalibration();
        first.join();
    }

    void showsItsPages()
    {
        QCOMPARE(pages.start.size(), ScreenSize);
        QVERIFY(isStartPage(pages.start) && !isPreviewPage(pages.start));
        QVERIFY(isPreviewPage(pages.preview) && !isStartPage(pages.preview));
        QVERIFY(isWizard(pages.wizard)); // by the real keyboard
        QCOMPARE(pages.exitCode, 0); // from within the wizard
        QCOMPARE(pages.complaints, QStringList());
    }

    /// Told to end in the seconds in which nobody has accepted the calibration yet.
    void endsInCalibration()
    {
        QVERIFY(calibrated.stored != calibrated.before);
        QCOMPARE(calibrated.exitCode, 0);
        QCOMPARE(calibrated.after, calibrated.before);
        QCOMPARE(calibrated.left, QStringList{"pointercal"});
    }

private:
    Pages pages;
    Calibrated calibrated;
};

PANEL_TEST_MAIN(TestProgram)
#include "tst_program.moc"
