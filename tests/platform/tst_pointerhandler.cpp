#include "platform/pointertransform.h"
#include "platform/windowserver.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QMouseEvent>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <tslib.h>
#include <utility>

namespace {

const QString CalibrationFile = QStringLiteral("/etc/pointercal");
const QString TsConf = QStringLiteral("/etc/ts.conf");
constexpr std::array<QPoint, 5> Targets{QPoint(50, 50), QPoint(750, 50), QPoint(750, 430),
                                        QPoint(50, 430), QPoint(400, 240)};

/// x = 799 - raw y / 5, y = raw x / 8.
constexpr char SwappedFile[] = "0 -13107 52396032 8192 0 32768 65536\n";
constexpr RawPoint swappedRaw(int x, int y)
{
    return {8 * y, 5 * (799 - x)};
}

/// A window over the whole screen that writes down what the pointer does.
class Sheet : public QWidget
{
public:
    Sheet()
    {
        setWindowFlag(Qt::FramelessWindowHint);
        setGeometry(0, 0, 800, 480);
    }
    QStringList take() { return std::exchange(log, {}); }
    QStringList log;

protected:
    bool event(QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            return note("press", event);
        case QEvent::MouseMove:
            return note("move", event);
        case QEvent::MouseButtonRelease:
            return note("release", event);
        default:
            return QWidget::event(event);
        }
    }

private:
    bool note(const char *what, QEvent *event)
    {
        const auto *pMouse = static_cast<QMouseEvent *>(event);
        // Moves without a button are Qt's own, in front of a press at another place.
        if (event->type() != QEvent::MouseMove || pMouse->buttons() != Qt::NoButton) {
            const QPoint at = pMouse->globalPosition().toPoint();
            log += QStringLiteral("%1 %2,%3").arg(QLatin1String(what)).arg(at.x()).arg(at.y());
        }
        return true;
    }
};

QStringList tapAt(int x, int y)
{
    return {QStringLiteral("press %1,%2").arg(x).arg(y),
            QStringLiteral("release %1,%2").arg(x).arg(y)};
}

/// Everything that is in the FIFO reaches the windows.
void deliver()
{
    for (int i = 0; i < 10; ++i) {
        QCoreApplication::processEvents();
    }
}

PointerCalibrationData targetsOnly()
{
    PointerCalibrationData data;
    data.screenPoints = Targets;
    return data;
}

/// The pairs of a touchscreen that reports 4 units for a pixel, \a offset units off.
PointerCalibrationData scaledPairs(int offset)
{
    PointerCalibrationData data = targetsOnly();
    std::ranges::transform(Targets, data.devPoints.begin(), [offset](QPoint target) {
        return RawPoint{4 * target.x() + offset, 4 * target.y() + offset};
    });
    return data;
}

} // namespace

class TestPointerHandler : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void touchPressesButton();
    void nothingIsLostWhileBlocked();
    void positionsStayOnScreen();
    void topmostWindowGetsTouch();
    void rotatedScreen_data();
    void rotatedScreen();
    void environmentNamesPaths();

    void brokenCalibrationFile_data();
    void brokenCalibrationFile();
    void agreesWithTsPrint_data();
    void agreesWithTsPrint();

    void suspended();
    void suspendReleasesPress();
    void cannotOpen_data();
    void cannotOpen();
    void vanishedTouchscreen();
    void configurationVanishes();

    void calibrates();
    void panelNeedsNoCalibration();
    void clears();
    void refusesDegeneratePoints();
    void fileCannotBeWritten();
    void reinstates_data();
    void reinstates();
    void fileChangesBehindProgram_data();
    void fileChangesBehindProgram();
    void restoreCannotWrite();
    void reinstatesEveryMoment();

private:
    std::unique_ptr<TouchscreenFifo> pTouchscreen;
    std::unique_ptr<WindowServer> pServer;
    std::unique_ptr<Sheet> pSheet;

    void start()
    {
        pServer = std::make_unique<WindowServer>();
        QVERIFY(pServer->openPointer());
    }
    QStringList tap(RawPoint raw)
    {
        pTouchscreen->tap(raw);
        deliver();
        return pSheet->take();
    }
    QByteArray file() { return root().read(CalibrationFile); }
};

void TestPointerHandler::init()
{
    DeviceTest::init();
    pTouchscreen = std::make_unique<TouchscreenFifo>(root());
    pSheet = std::make_unique<Sheet>();
    pSheet->show();
    QVERIFY(QTest::qWaitForWindowExposed(pSheet.get()));
}

void TestPointerHandler::cleanup()
{
    pServer.reset();
    pSheet.reset();
    pTouchscreen.reset();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("TSLIB_TSDEVICE");
    qunsetenv("POINTERCAL_FILE");
    ts_open_restricted = nullptr;
    DeviceTest::cleanup();
}

void TestPointerHandler::touchPressesButton()
{
    root().write(CalibrationFile, SwappedFile);
    QPushButton button(QStringLiteral("Start"), pSheet.get());
    button.setGeometry(600, 400, 80, 40);
    button.show();
    int nClicks = 0;
    connect(&button, &QPushButton::clicked, this, [&] { ++nClicks; });
    start();

    pTouchscreen->send(swappedRaw(640, 420), 120);
    deliver();
    QVERIFY(button.isDown());
    pTouchscreen->send(swappedRaw(610, 410), 120);
    // Controllers report any position when the finger has gone.
    pTouchscreen->send({0, 0}, 0);
    deliver();
    QVERIFY(!button.isDown());
    QCOMPARE(nClicks, 1);

    pTouchscreen->tap(swappedRaw(590, 410));
    deliver();
    QCOMPARE(nClicks, 1);
}

void TestPointerHandler::nothingIsLostWhileBlocked()
{
    start();
    for (int i = 0; i < 30; ++i) {
        pTouchscreen->send({100 + i, 200}, 1);
    }
    pTouchscreen->send({0, 0}, 0);
    pTouchscreen->tap({300, 300});
    pTouchscreen->send({400, 50}, 1);
    deliver();
    QCOMPARE(pSheet->take(),
             QStringList({"press 100,200", "move 129,200", "release 129,200"}) + tapAt(300, 300)
                 + QStringList{"press 400,50"});

    // More touches than are read in one go.
    pTouchscreen->send({0, 0}, 0);
    deliver();
    pSheet->take();
    for (int i = 0; i < 1000; ++i) {
        pTouchscreen->tap({i % 800, 10});
    }
    deliver();
    QCOMPARE(pSheet->take().size(), 2000);
}

void TestPointerHandler::positionsStayOnScreen()
{
    root().write(CalibrationFile, "65536 0 -655360 0 65536 -655360 65536");
    start();
    QCOMPARE(tap({0, 0}), tapAt(0, 0));
    QCOMPARE(tap({4095, 4095}), tapAt(799, 479));
    QCOMPARE(tap({809, 489}), tapAt(799, 479));
    QCOMPARE(tap({10, 489}), tapAt(0, 479));
}

void TestPointerHandler::topmostWindowGetsTouch()
{
    start();
    Sheet box;
    box.setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    box.setGeometry(200, 100, 100, 100);
    box.setWindowModality(Qt::ApplicationModal);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QCOMPARE(tap({250, 150}), QStringList());
    QCOMPARE(box.take(), tapAt(250, 150));
    QCOMPARE(tap({20, 20}), QStringList());
    QCOMPARE(box.take(), QStringList());

    // A touch that began on the box stays with it.
    pTouchscreen->send({250, 150}, 1);
    pTouchscreen->send({20, 20}, 1);
    pTouchscreen->send({0, 0}, 0);
    deliver();
    QCOMPARE(box.take(), QStringList({"press 250,150", "move 20,20", "release 20,20"}));
    QCOMPARE(pSheet->take(), QStringList());

    box.hide();
    QCOMPARE(tap({250, 150}), tapAt(250, 150));
}

void TestPointerHandler::rotatedScreen_data()
{
    QTest::addColumn<QByteArray>("rotation");
    QTest::addColumn<QPoint>("expected");

    // The device position 30,40 on a picture of 800 x 480 that is turned on the panel.
    QTest::newRow("0") << QByteArray("0") << QPoint(30, 40);
    QTest::newRow("90") << QByteArray("90") << QPoint(759, 30);
    QTest::newRow("180") << QByteArray("180") << QPoint(769, 439);
    QTest::newRow("270") << QByteArray("270") << QPoint(40, 449);
}

void TestPointerHandler::rotatedScreen()
{
    QFETCH(QByteArray, rotation);
    QFETCH(QPoint, expected);
    qputenv("QT_QPA_PLATFORM", "offscreen:rotation=" + rotation);
    start();
    QCOMPARE(tap({30, 40}), tapAt(expected.x(), expected.y()));
}

void TestPointerHandler::environmentNamesPaths()
{
    TouchscreenFifo other(root(), QStringLiteral("/tmp/other"));
    root().write(QStringLiteral("/tmp/other.cal"), "65536 0 655360 0 65536 0 65536");
    root().write(CalibrationFile, SwappedFile);
    qputenv("TSLIB_TSDEVICE", QFile::encodeName(other.path));
    qputenv("POINTERCAL_FILE", QFile::encodeName(root().path(QStringLiteral("/tmp/other.cal"))));
    start();
    QCOMPARE(tap({100, 100}), QStringList());
    other.tap({100, 100});
    deliver();
    QCOMPARE(pSheet->take(), tapAt(110, 100));
    // Whoever opens the touchscreen next finds the environment as the device set it.
    QVERIFY(!qEnvironmentVariableIsSet("TSLIB_CALIBFILE"));
    QVERIFY(!qEnvironmentVariableIsSet("TSLIB_CONFFILE"));
}

void TestPointerHandler::brokenCalibrationFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("calibrate me\n");
    QTest::newRow("six numbers") << QByteArray("1 2 3 4 5 6\n");
    QTest::newRow("divisor 0") << QByteArray("65536 0 0 0 65536 0 0\n");
    QTest::newRow("beyond 32 bit") << QByteArray("99999999999 0 0 0 65536 0 65536\n");
    QTest::newRow("binary") << QByteArray("\0\xff\0\x01", 4);
    QTest::newRow("2 MB") << QByteArray(2 << 20, '1');
}

void TestPointerHandler::brokenCalibrationFile()
{
    QFETCH(QByteArray, content);
    root().write(CalibrationFile, content);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("pointercal is broken")));
    start();
    QCOMPARE(tap({100, 200}), tapAt(100, 200));
    QCOMPARE(file(), content);

    // It is no obstacle to the calibration that mends it.
    QVERIFY(pServer->calibrate(scaledPairs(20)));
    QCOMPARE(tap({420, 820}), tapAt(100, 200));
}

void TestPointerHandler::agreesWithTsPrint_data()
{
    QTest::addColumn<QByteArray>("content"); ///< empty: computed here
    QTest::newRow("own") << QByteArray();
    QTest::newRow("of ts_calibrate") << QByteArray("-13826 62 53000000 -147 8300 -2300000 65536 "
                                                   "800 480 0");
    QTest::newRow("of ts_calibrate, turned")
        << QByteArray("8192 0 0 0 12288 -655360 65536 480 800 1");
}

void TestPointerHandler::agreesWithTsPrint()
{
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("ts_print"));
    if (tool.isEmpty()) {
        QSKIP("ts_print is not installed");
    }
    QFETCH(QByteArray, content);
    if (!content.isEmpty()) {
        root().write(CalibrationFile, content);
    }
    start();
    PointerCalibrationData data = targetsOnly();
    data.devPoints = {RawPoint{3700, 390}, {420, 310}, {380, 3610}, {3660, 3720}, {2041, 2007}};
    QVERIFY(!content.isEmpty() || pServer->calibrate(data));

    TouchscreenFifo copy(root(), QStringLiteral("/tmp/copy"));
    QProcess print;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TSLIB_TSDEVICE"), copy.path);
    environment.insert(QStringLiteral("TSLIB_CONFFILE"), root().path(TsConf));
    environment.insert(QStringLiteral("TSLIB_CALIBFILE"), root().path(CalibrationFile));
    print.setProcessEnvironment(environment);
    // Line by line, although it writes into a pipe.
    print.start(QStringLiteral("stdbuf"), {QStringLiteral("-oL"), tool});
    QVERIFY(print.waitForStarted());

    const std::array<RawPoint, 5> touches{
        RawPoint{3700, 390}, {500, 500}, {1000, 3000}, {2041, 2007}, {2500, 1111}};
    for (const RawPoint touch : touches) {
        copy.tap(touch);
        const QString seen = tap(touch).value(0);
        while (!print.canReadLine()) {
            QVERIFY(print.waitForReadyRead(20000));
        }
        const QList<QByteArray> words = print.readLine().simplified().split(' ');
        QCOMPARE(words.size(), 4);
        QCOMPARE(seen, QStringLiteral("press %1,%2").arg(words[1].toInt()).arg(words[2].toInt()));
        while (!print.canReadLine()) {
            QVERIFY(print.waitForReadyRead(20000));
        }
        print.readLine(); // the release
    }
    print.kill();
    QVERIFY(print.waitForFinished());
}

void TestPointerHandler::suspended()
{
    start();
    QCOMPARE(tap({10, 20}), tapAt(10, 20));
    pServer->suspendPointer();
    pServer->suspendPointer();
    QCOMPARE(tap({30, 40}), QStringList());

    // Another reader gets all that comes meanwhile.
    pTouchscreen->tap({50, 60});
    QFile reader(pTouchscreen->path);
    QVERIFY(reader.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    deliver();
    QCOMPARE(reader.read(16),
             TouchscreenFifo::sample({30, 40}, 1) + TouchscreenFifo::sample({30, 40}, 0));

    pServer->resumePointer();
    deliver();
    QCOMPARE(pSheet->take(), QStringList());
    QCOMPARE(tap({70, 80}), tapAt(70, 80));
    pServer->resumePointer();
    QCOMPARE(tap({90, 80}), tapAt(90, 80));
}

void TestPointerHandler::suspendReleasesPress()
{
    start();
    pTouchscreen->send({10, 20}, 1);
    deliver();
    pServer->suspendPointer();
    deliver();
    QCOMPARE(pSheet->take(), tapAt(10, 20));
    pTouchscreen->send({10, 20}, 0);
    pServer->resumePointer();
    QCOMPARE(tap({30, 40}), tapAt(30, 40));

    // The end of the program is no exception.
    pTouchscreen->send({10, 20}, 1);
    deliver();
    pServer.reset();
    deliver();
    QCOMPARE(pSheet->take(), tapAt(10, 20));
}

void TestPointerHandler::cannotOpen_data()
{
    QTest::addColumn<QByteArray>("device");
    QTest::addColumn<QByteArray>("conf");
    QTest::addColumn<QString>("warning");

    QTest::newRow("no device") << QByteArray("/nonexistent/touchscreen")
                               << QByteArray("module linear")
                               << QStringLiteral("Cannot open the touchscreen /nonexistent");
    QTest::newRow("unknown module") << QByteArray() << QByteArray("module_raw nonsense\n")
                                    << QStringLiteral("tslib cannot configure");
    QTest::newRow("empty configuration")
        << QByteArray() << QByteArray() << QStringLiteral("tslib cannot configure");
}

void TestPointerHandler::cannotOpen()
{
    QFETCH(QByteArray, device);
    QFETCH(QByteArray, conf);
    QFETCH(QString, warning);
    if (!device.isEmpty()) {
        qputenv("TSLIB_TSDEVICE", device);
    }
    const QByteArray good = root().read(TsConf);
    root().write(TsConf, conf);
    pServer = std::make_unique<WindowServer>();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(warning));
    QVERIFY(!pServer->openPointer());

    pServer->suspendPointer();
    pServer->clearCalibration();
    PointerCalibrationData data = targetsOnly();
    pServer->getCalibration(&data);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(warning));
    pServer->resumePointer();
    QCOMPARE(tap({10, 20}), QStringList());

    qunsetenv("TSLIB_TSDEVICE");
    root().write(TsConf, good);
    pServer->resumePointer();
    QCOMPARE(tap({30, 40}), tapAt(30, 40));
}

void TestPointerHandler::vanishedTouchscreen()
{
    // A socket can be cut off, which a FIFO that tslib opens for writing too cannot.
    static std::array<int, 2> ends{};
    const auto plugIn = [] {
        return socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()) == 0;
    };
    ts_open_restricted = [](const char *, int, void *) { return ends[0]; };
    const auto send = [](RawPoint point) {
        const QByteArray bytes = TouchscreenFifo::sample(point, 1);
        QCOMPARE(write(ends[1], bytes.constData(), std::size_t(bytes.size())), bytes.size());
    };
    QVERIFY(plugIn());
    start();
    send({10, 20});
    close(ends[1]);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("touchscreen is gone")));
    deliver();
    QCOMPARE(pSheet->take(), tapAt(10, 20));

    QVERIFY(pServer->calibrate(scaledPairs(20)));
    QVERIFY(plugIn());
    pServer->suspendPointer();
    pServer->resumePointer();
    send({420, 820});
    deliver();
    QCOMPARE(pSheet->take(), QStringList{"press 100,200"});

    // Out and in again while nobody reads it.
    pServer->suspendPointer();
    deliver();
    pSheet->take();
    close(ends[1]);
    QVERIFY(plugIn());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("touchscreen is gone")));
    pServer->resumePointer();
    send({420, 820});
    deliver();
    QCOMPARE(pSheet->take(), QStringList{"press 100,200"});
    close(ends[1]);
    pServer.reset();
}

void TestPointerHandler::configurationVanishes()
{
    start();
    const QByteArray good = root().read(TsConf);
    root().write(TsConf, "module_raw nonsense\n");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot reload")));
    QVERIFY(pServer->calibrate(scaledPairs(20)));
    QCOMPARE(tap({420, 820}), QStringList());
    root().write(TsConf, good);
    pServer->resumePointer();
    QCOMPARE(tap({420, 820}), tapAt(100, 200));
}

void TestPointerHandler::calibrates()
{
    root().write(CalibrationFile, SwappedFile);
    start();
    QVERIFY(pServer->calibrate(scaledPairs(20)));
    QCOMPARE(tap({420, 820}), tapAt(100, 200));
    QCOMPARE(file().simplified().split(' ').size(), 7);
    QCOMPARE(QDir(root().path(QStringLiteral("/etc"))).entryList(QDir::Files),
             QStringList({"pointercal", "ts.conf"}));

    // The next start of the program takes it over.
    start();
    QCOMPARE(tap({420, 820}), tapAt(100, 200));
}

/// A run measures the very pairs that were handed out. They are stored like any others.
void TestPointerHandler::panelNeedsNoCalibration()
{
    start();
    PointerCalibrationData data = targetsOnly();
    pServer->getCalibration(&data);
    QVERIFY(pServer->calibrate(data));
    QVERIFY(root().exists(CalibrationFile));
    QCOMPARE(tap({100, 200}), tapAt(100, 200));
    QVERIFY(pServer->calibrate(data, true));
    QVERIFY(!root().exists(CalibrationFile));
}

void TestPointerHandler::clears()
{
    root().write(CalibrationFile, SwappedFile);
    start();
    pServer->clearCalibration();
    QCOMPARE(tap({100, 200}), tapAt(100, 200));
    QCOMPARE(file(), QByteArray(SwappedFile));
    PointerCalibrationData data = targetsOnly();
    pServer->getCalibration(&data);
    QCOMPARE(data.devPoints[1], (RawPoint{750, 50}));
}

void TestPointerHandler::refusesDegeneratePoints()
{
    root().write(CalibrationFile, SwappedFile);
    start();
    PointerCalibrationData data = targetsOnly();
    data.devPoints.fill({2000, 2000});
    pServer->clearCalibration();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("calibration refused")));
    QVERIFY(!pServer->calibrate(data));
    QCOMPARE(file(), QByteArray(SwappedFile));
    QCOMPARE(tap(swappedRaw(100, 200)), tapAt(100, 200));
}

void TestPointerHandler::fileCannotBeWritten()
{
    root().write(CalibrationFile, SwappedFile);
    start();
    PointerCalibrationData backup = targetsOnly();
    pServer->getCalibration(&backup);
    pServer->clearCalibration();
    {
        // A full disk, which stops even the root user.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        // The new file is a byte too long; what tslib gets of the old one is not.
        const rlimit old{sizeof SwappedFile - 1, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &old);
        const auto restore = qScopeGuard([&] { setrlimit(RLIMIT_FSIZE, &before); });
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot write")));
        QVERIFY(!pServer->calibrate(scaledPairs(20)));
        // What is there already needs no writing.
        QVERIFY(pServer->calibrate(backup, true));
    }
    QCOMPARE(file(), QByteArray(SwappedFile));
    QCOMPARE(tap(swappedRaw(100, 200)), tapAt(100, 200));
    QCOMPARE(QDir(root().path(QStringLiteral("/etc"))).entryList(QDir::Files),
             QStringList({"pointercal", "ts.conf"}));

    qputenv("POINTERCAL_FILE", "/nonexistent/pointercal");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot write")));
    QVERIFY(!pServer->calibrate(scaledPairs(20)));
    QCOMPARE(tap(swappedRaw(100, 200)), tapAt(100, 200));
}

void TestPointerHandler::reinstates_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("linked"); ///< the calibration file is a symbolic link
    QTest::newRow("own file") << QByteArray(SwappedFile) << true << false;
    QTest::newRow("of ts_calibrate")
        << QByteArray("13107 0 -65536 0 8738 -131072 65536 800 480 1") << true << false;
    QTest::newRow("coarser than the screen, own layout")
        << QByteArray("700000 11 -7\r\n12 400000 33\r\n65536\r\n") << true << false;
    QTest::newRow("almost singular") << QByteArray("1 0 0 0 1 0 65536\n") << true << false;
    QTest::newRow("broken") << QByteArray("1 2 3") << true << false;
    QTest::newRow("none") << QByteArray() << false << false;
    QTest::newRow("link") << QByteArray(SwappedFile) << true << true;
    QTest::newRow("dangling link") << QByteArray() << false << true;
}

void TestPointerHandler::reinstates()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, exists);
    QFETCH(bool, linked);
    const QString target = QStringLiteral("/flash/pointercal");
    const QString link = root().path(CalibrationFile);
    if (linked) {
        root().write(target, {});
        QVERIFY(QFile::link(root().path(target), link));
        root().remove(target);
    }
    if (exists) {
        root().write(linked ? target : CalibrationFile, content);
        if (!PointerTransform::parse(content)) {
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(QStringLiteral("pointercal is broken")));
        }
    }
    start();
    const std::array<RawPoint, 3> probes{RawPoint{130, 270}, {411, 99}, {77, 344}};
    QList<QStringList> before;
    for (const RawPoint probe : probes) {
        before += tap(probe);
    }
    // More than one round: a restored calibration must not drift.
    for (int i = 0; i < 3; ++i) {
        PointerCalibrationData backup = targetsOnly();
        pServer->getCalibration(&backup);
        pServer->clearCalibration();
        QVERIFY(pServer->calibrate(scaledPairs(20)));
        QVERIFY(file() != content);
        pServer->clearCalibration();
        QVERIFY(pServer->calibrate(backup, true));
        QCOMPARE(root().exists(CalibrationFile), exists);
        QCOMPARE(QFileInfo(link).isSymLink(), linked);
        QCOMPARE(file(), content);
        for (std::size_t probe = 0; probe < probes.size(); ++probe) {
            QCOMPARE(tap(probes[probe]), before[qsizetype(probe)]);
        }
    }
}

void TestPointerHandler::fileChangesBehindProgram_data()
{
    QTest::addColumn<QByteArray>("before"); ///< the file as it was loaded
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<QByteArray>("restored"); ///< the file after a run and its restore
    const QByteArray zero("65536 0 0 0 65536 0 0\n");
    QTest::newRow("broken") << QByteArray(SwappedFile) << zero << QByteArray(SwappedFile);
    QTest::newRow("replaced") << QByteArray(SwappedFile) << QByteArray("65536 0 9 0 65536 9 65536")
                              << QByteArray(SwappedFile);
    QTest::newRow("deleted") << QByteArray(SwappedFile) << QByteArray() << QByteArray(SwappedFile);
    QTest::newRow("broken, none before") << QByteArray() << zero << zero;
    // A directory stands for a file that cannot be read.
    QTest::newRow("unreadable") << QByteArray() << QByteArray("DIR") << QByteArray("DIR");
}

/// tslib never gets what has not been checked, and a restore is what was in force.
void TestPointerHandler::fileChangesBehindProgram()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, change);
    QFETCH(QByteArray, restored);
    if (!before.isEmpty()) {
        root().write(CalibrationFile, before);
    }
    start();
    const QStringList touch = tap(swappedRaw(100, 200));
    const QString path = root().path(CalibrationFile);
    QFile::remove(path);
    const bool bUnreadable = change == "DIR";
    if (bUnreadable) {
        QVERIFY(QDir().mkpath(path));
    } else if (!change.isEmpty()) {
        root().write(CalibrationFile, change);
    }
    // A run that is refused leaves in force what was, not what the file says now.
    PointerCalibrationData line = targetsOnly();
    line.devPoints.fill({2000, 2000});
    pServer->clearCalibration();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("calibration refused")));
    QVERIFY(!pServer->calibrate(line));
    QCOMPARE(tap(swappedRaw(100, 200)), touch);

    PointerCalibrationData backup = targetsOnly();
    pServer->getCalibration(&backup);
    pServer->clearCalibration();
    if (bUnreadable) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot write")));
    }
    QCOMPARE(pServer->calibrate(scaledPairs(20)), !bUnreadable);
    pServer->clearCalibration();
    QVERIFY(pServer->calibrate(backup, true));
    QCOMPARE(tap(swappedRaw(100, 200)), touch);
    QCOMPARE(QFileInfo(path).isDir() ? QByteArray("DIR") : file(), restored);
}

/// The old calibration is live again although the file cannot follow.
void TestPointerHandler::restoreCannotWrite()
{
    root().write(CalibrationFile, SwappedFile);
    start();
    PointerCalibrationData backup = targetsOnly();
    pServer->getCalibration(&backup);
    QVERIFY(pServer->calibrate(scaledPairs(20)));
    qputenv("POINTERCAL_FILE", "/nonexistent/pointercal");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot write")));
    QVERIFY(!pServer->calibrate(backup, true));
    QCOMPARE(tap(swappedRaw(100, 200)), tapAt(100, 200));
    // Nor does a run that cannot be stored bring back what the file still says.
    pServer->clearCalibration();
    pServer->clearCalibration();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot write")));
    QVERIFY(!pServer->calibrate(scaledPairs(40)));
    QCOMPARE(tap(swappedRaw(100, 200)), tapAt(100, 200));
    qunsetenv("POINTERCAL_FILE");
    QVERIFY(pServer->calibrate(backup, true));
    QCOMPARE(file(), QByteArray(SwappedFile));
}

void TestPointerHandler::reinstatesEveryMoment()
{
    start();
    QList<PointerCalibrationData> backups;
    QList<QByteArray> files;
    for (const int offset : {0, 100, 200}) {
        QVERIFY(pServer->calibrate(scaledPairs(offset)));
        files += file();
        backups += targetsOnly();
        pServer->getCalibration(&backups.last());
    }
    for (const int i : {0, 2, 1}) {
        QVERIFY(pServer->calibrate(backups[i], true));
        QCOMPARE(file(), files[i]);
        QCOMPARE(tap({1000, 1000}).value(0),
                 QStringLiteral("press %1,%1").arg((1000 - 100 * i) / 4));
    }
}

PANEL_TEST_MAIN(TestPointerHandler)
#include "tst_pointerhandler.moc"
