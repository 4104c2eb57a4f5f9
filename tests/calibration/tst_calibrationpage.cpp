#include "calibration/calibrationpage.h"
#include "calibration/veltacalibrationpanel.h"
#include "calibration/veltacalibrationpanelcontext.h"
#include "platform/windowserver.h"
#include "tests/calibration/simulatedpanel.h"
#include "tests/calibration/touchsheet.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/boxwatcher.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLCDNumber>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>

#include <memory>

namespace {

constexpr char OldFile[] = "16384 0 0 0 8192 0 65536\n";
const QString CalibrationFile = QStringLiteral("/etc/pointercal");
const QString Request = QStringLiteral("/tmp/.system/TouchCalibration");
/// The sampling thread pauses three seconds in a run; the rest is for slow machines.
constexpr int RunLimitMs = 30000;
constexpr SimulatedPanel Glass{true, false, true, 0};

qsizetype samplingThreads()
{
    qsizetype count = 0;
    const QDir tasks(QStringLiteral("/proc/self/task"));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + QLatin1String("/comm")));
        count += name.open(QIODevice::ReadOnly) && name.readAll().startsWith("VeltaCalib") ? 1 : 0;
    }
    return count;
}

/// How often this process has a touchscreen open.
qsizetype openTouchscreens()
{
    qsizetype count = 0;
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo &entry : descriptors.entryInfoList(QDir::Files | QDir::System)) {
        count += entry.symLinkTarget().contains(QLatin1String("/dev/input/")) ? 1 : 0;
    }
    return count;
}

} // namespace

/// The page, its controller and its crosshair screen on a touchscreen that real tslib reads.
class TestCalibrationPage : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void acceptedByTouch();
    void nobodyAccepts_data();
    void nobodyAccepts();
    void withdrawnBeforeAcceptance_data();
    void withdrawnBeforeAcceptance();
    void startsBehindBox();
    void endsBehindBox();
    void endsInTheMiddle_data();
    void endsInTheMiddle();
    void runFails_data();
    void runFails();
    void countdownAndExit();
    void startsAgainAndAgain();
    void paints_data();
    void paints();
    void textsFit_data();
    void textsFit();
    void fitsScreen_data();
    void fitsScreen();

private:
    QPushButton *button(const char *name) const;
    bool inAcceptMode() const { return button("acceptCalibrationButton")->isEnabled(); }
    VeltaCalibrationPanel *crosshairs() const;
    void startPage();
    void touchCrosshairs();
    void touch(QPoint finger) { pFifo->tap(Glass.touch(finger)); }
    QPoint landing(RawPoint raw);
    int timers() const;

    std::unique_ptr<TouchscreenFifo> pFifo;
    std::unique_ptr<WindowServer> pServer;
    std::unique_ptr<CalibrationPage> pPage;
};

void TestCalibrationPage::init()
{
    DeviceTest::init();
    pFifo = std::make_unique<TouchscreenFifo>(root());
    root().write(CalibrationFile, OldFile);
    root().write(Request, {});
    pServer = std::make_unique<WindowServer>();
    QVERIFY(pServer->openPointer());
    pPage = std::make_unique<CalibrationPage>();
}

void TestCalibrationPage::cleanup()
{
    pPage.reset();
    pServer.reset();
    pFifo.reset();
    qunsetenv("TSLIB_TSDEVICE");
    qunsetenv("POINTERCAL_FILE");
    setScreen({800, 480});
    DeviceTest::cleanup();
}

QPushButton *TestCalibrationPage::button(const char *name) const
{
    return pPage->findChild<QPushButton *>(QLatin1String(name));
}

VeltaCalibrationPanel *TestCalibrationPage::crosshairs() const
{
    return pPage->findChild<VeltaCalibrationPanel *>();
}

void TestCalibrationPage::startPage()
{
    pPage->startAutoCalibration();
    pPage->StartCalibration();
}

void TestCalibrationPage::touchCrosshairs()
{
    for (const QPoint target : crosshairTargets(Glass.picture())) {
        touch(target);
    }
    QTRY_VERIFY_WITH_TIMEOUT(inAcceptMode(), RunLimitMs);
}

QPoint TestCalibrationPage::landing(RawPoint raw)
{
    TouchSheet sheet;
    sheet.raise();
    pFifo->tap(raw);
    return sheet.takeTouch().value_or(QPoint(-1, -1));
}

int TestCalibrationPage::timers() const
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return int(pPage->findChildren<QTimer *>(Qt::FindDirectChildrenOnly).size());
}

/// The whole road: count-down, five crosses, Accept touched through the new calibration, Exit.
void TestCalibrationPage::acceptedByTouch()
{
    landing({1, 1}); // opens the other end
    const qsizetype open = openTouchscreens();
    // As the message about a calibration that timed out leaves it.
    pServer->suspendPointer();
    pPage->startAutoCalibration();
    QVERIFY(pPage->isRunning());
    QTRY_COMPARE(pPage->geometry(), QRect(QPoint(), Glass.picture()));
    for (const char *text : {" (5)", " (4)", " (3)", " (2)", " (1)", " (0)"}) {
        QCOMPARE(button("startCalibrationButton")->text(),
                 QLatin1String("Start Calibration") + QLatin1String(text));
        pPage->updateStartCalibrationScreen();
    }
    QCOMPARE(button("startCalibrationButton")->text(), QStringLiteral("Start Calibration"));
    QVERIFY(crosshairs()->isVisible());
    QCOMPARE(crosshairs()->size(), Glass.picture());
    touchCrosshairs();

    QVERIFY(!crosshairs()->isVisible());
    QTRY_COMPARE(QApplication::activeWindow(), pPage.get());
    QVERIFY(!button("startCalibrationButton")->isEnabled());
    QVERIFY(!button("cancelCalibrationButton")->isEnabled());
    auto *pCount = pPage->findChild<QLCDNumber *>();
    QVERIFY(pCount->isVisible());
    QCOMPARE(pCount->intValue(), 10);
    QVERIFY(pServer->isCursorVisible());
    pPage->updateLCD();
    QCOMPARE(pCount->intValue(), 9);

    QPushButton *pAccept = button("acceptCalibrationButton");
    touch(pAccept->mapToGlobal(pAccept->rect().center()));
    QTRY_VERIFY(!inAcceptMode());
    QVERIFY(!pCount->isVisible());
    QVERIFY(!pServer->isCursorVisible());
    QCOMPARE(timers(), 0);
    const QByteArray accepted = root().read(CalibrationFile);
    QVERIFY(accepted != OldFile);

    QPushButton *pExit = button("cancelCalibrationButton");
    touch(pExit->mapToGlobal(pExit->rect().center()));
    QTRY_VERIFY(!root().exists(Request));
    QVERIFY(!pPage->isRunning());
    pPage.reset();
    QCOMPARE(root().read(CalibrationFile), accepted);
    QCOMPARE(landing(Glass.touch({333, 222})), QPoint(333, 222));
    QCOMPARE(openTouchscreens(), open);
}

void TestCalibrationPage::nobodyAccepts_data()
{
    QTest::addColumn<bool>("writable"); ///< the calibration file, when the count has run out
    QTest::addColumn<QString>("box");
    QTest::newRow("restored") << true << QStringLiteral("old calibration data restored");
    QTest::newRow("restored at the end of the program") << false << QStringLiteral("Error -212");
}

/// 10 to 0, the old calibration, and a count-down to the next run.
void TestCalibrationPage::nobodyAccepts()
{
    QFETCH(bool, writable);
    QFETCH(QString, box);
    const QPoint before = landing({1000, 1000});
    const QString path = root().path(CalibrationFile);
    startPage();
    touchCrosshairs();
    for (int i = 0; i < 10; ++i) {
        pPage->updateLCD();
    }
    QVERIFY(inAcceptMode());
    QCOMPARE(pPage->findChild<QLCDNumber *>()->intValue(), 0);
    if (!writable) {
        // Not even root can write a file where a directory is.
        QVERIFY(QFile::remove(path) && QDir().mkpath(path));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot write")));
    }
    {
        BoxWatcher operatorsEyes;
        pPage->updateLCD();
        QCOMPARE(operatorsEyes.texts().size(), 1);
        QVERIFY(operatorsEyes.texts().constFirst().startsWith(box));
    }
    QTRY_COMPARE(QApplication::activeWindow(), pPage.get());
    QVERIFY(!inAcceptMode());
    QCOMPARE(button("startCalibrationButton")->text(), QStringLiteral("Start Calibration (5)"));
    QCOMPARE(landing({1000, 1000}), before);
    QCOMPARE(timers(), 1);
    if (!writable) {
        QVERIFY(QDir().rmdir(path));
        pPage.reset();
    }
    QCOMPARE(root().read(CalibrationFile), OldFile);
}

void TestCalibrationPage::withdrawnBeforeAcceptance_data()
{
    QTest::addColumn<bool>("comesBack"); ///< the request, and with it the page
    QTest::addColumn<QString>("start"); ///< the start button's text in the end
    QTest::newRow("raised again") << true << QStringLiteral("Start Calibration (5)");
    QTest::newRow("for good") << false << QStringLiteral("Start Calibration");
}

/// A calibration that waits for acceptance waits on when the page is hidden and raised again.
void TestCalibrationPage::withdrawnBeforeAcceptance()
{
    QFETCH(bool, comesBack);
    startPage();
    touchCrosshairs();
    pPage->hide();
    QVERIFY(!pPage->isRunning());
    if (comesBack) {
        pPage->startAutoCalibration();
    }
    QCOMPARE(pPage->isRunning(), comesBack);
    QVERIFY(inAcceptMode());
    QCOMPARE(timers(), 1);
    BoxWatcher operatorsEyes;
    for (int i = 0; i <= 10; ++i) {
        pPage->updateLCD();
    }
    QCOMPARE(root().read(CalibrationFile), OldFile);
    QTEST(button("startCalibrationButton")->text(), "start");
    QCOMPARE(timers(), comesBack ? 1 : 0);
    QCOMPARE(pPage->isVisible(), comesBack);
}

/// While the end of a run shows a box, the page is hidden, raised and started again.
void TestCalibrationPage::startsBehindBox()
{
    landing({1, 1}); // opens the other end
    const qsizetype open = openTouchscreens();
    startPage();
    VeltaCalibrationPanel *pPanel = crosshairs();
    // Not even root can write into a directory that is not there.
    qputenv("POINTERCAL_FILE", "/nonexistent/pointercal");
    bool bRestarted = false;
    QTimer again;
    connect(&again, &QTimer::timeout, this, [&] {
        if (!bRestarted && pPanel->isApplying()) {
            bRestarted = true;
            QCOMPARE(pPanel->grab().toImage().pixelColor(790, 470), QColor(Qt::green));
            // As if someone else had closed it.
            QCOMPARE(pPanel->calibrationData().closeTouchscreen(), 0);
            pPage->hide();
            pPage->startAutoCalibration();
            pPage->StartCalibration();
            QVERIFY(!pPanel->isRunning());
        }
    });
    again.start(1);
    BoxWatcher operatorsEyes(200);
    touchCrosshairs();
    QVERIFY(bRestarted);
    const QStringList &boxes = operatorsEyes.texts();
    QCOMPARE(boxes.size(), 3);
    QVERIFY(boxes[0].startsWith(QStringLiteral("Error -233")));
    QVERIFY(boxes[1].startsWith(QStringLiteral("Error -234")));
    QVERIFY(boxes[2].startsWith(QStringLiteral("Error -210")));
    QVERIFY(boxes[2].contains(QStringLiteral("closeTouchscreen")));
    QVERIFY(!crosshairs()->isVisible());
    QCOMPARE(timers(), 1);
    qunsetenv("POINTERCAL_FILE");
    pPage.reset();
    QCOMPARE(openTouchscreens(), open);
    QCOMPARE(root().read(CalibrationFile), OldFile);
}

/// The program is told to end while the end of a run shows a box.
void TestCalibrationPage::endsBehindBox()
{
    const QPoint before = landing({1000, 1000});
    const qsizetype open = openTouchscreens();
    startPage();
    qputenv("POINTERCAL_FILE", "/nonexistent/pointercal");
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&] {
        if (QApplication::activeModalWidget() || inAcceptMode()) {
            QCoreApplication::quit();
        }
    });
    look.start(5);
    for (const QPoint target : crosshairTargets(Glass.picture())) {
        touch(target);
    }
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot write")));
    QCoreApplication::exec();
    look.stop();
    QVERIFY(inAcceptMode()); // nobody has accepted it
    pPage.reset();
    QCOMPARE(landing({1000, 1000}), before);
    QCOMPARE(openTouchscreens(), open);
}

void TestCalibrationPage::endsInTheMiddle_data()
{
    QTest::addColumn<int>("touches");
    QTest::addColumn<bool>("withdrawn"); ///< the page is hidden, else destroyed
    QTest::newRow("withdrawn at the first point") << 0 << true;
    QTest::newRow("program ends at the third point") << 2 << false;
    QTest::newRow("program ends before acceptance") << 5 << false;
}

void TestCalibrationPage::endsInTheMiddle()
{
    QFETCH(int, touches);
    QFETCH(bool, withdrawn);
    const QPoint before = landing({1000, 1000});
    const qsizetype open = openTouchscreens();
    startPage();
    QCOMPARE(openTouchscreens(), open + 1);
    QTRY_COMPARE(samplingThreads(), 1);
    if (touches == CalibrationRecord::PointCount) {
        touchCrosshairs();
        QVERIFY(root().read(CalibrationFile) != OldFile);
    }
    for (int i = 0; i < touches % CalibrationRecord::PointCount; ++i) {
        touch(crosshairTargets(Glass.picture())[std::size_t(i)]);
    }
    QTest::qWait(touches * 400); // somewhere on its way
    if (withdrawn) {
        pPage->hide();
        QVERIFY(!crosshairs()->isVisible());
        QVERIFY(!pPage->isRunning());
        QCOMPARE(timers(), 0);
    }
    pPage.reset();
    QCOMPARE(root().read(CalibrationFile), OldFile);
    QCOMPARE(landing({1000, 1000}), before);
    QCOMPARE(openTouchscreens(), open);
}

void TestCalibrationPage::runFails_data()
{
    QTest::addColumn<QString>("device"); ///< in the environment, empty: the built-in one
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<bool>("wordless"); ///< the thread ends, but says nothing
    QTest::addColumn<QList<QByteArray>>("messages");
    QTest::addColumn<QString>("box"); ///< how its text begins; one of two codes has none

    const QByteArray good = "module_raw waveshare len=8\nmodule linear\n";
    const QByteArray end = "CalibrationPanel CalThreadError\n";
    QTest::newRow("no device") << QStringLiteral("/nowhere") << good << false
                               << QList<QByteArray>{"ts_open error"}
                               << QStringLiteral("Error -207");
    QTest::newRow("broken configuration")
        << QString() << QByteArray("module_raw nosuch\n") << false
        << QList<QByteArray>{"ts_config error"} << QStringLiteral("Error -208");
    QTest::newRow("read error") << QStringLiteral("/dev/input/broken") << good << false
                                << QList<QByteArray>{"getxy: ts_read_raw error 2", end}
                                << QString();
    QTest::newRow("point without data")
        << QString() << good << true << QList<QByteArray>{end} << QString();
}

/// No next point behind the box, the touchscreen is closed, pointer and keys are as alive as
/// before.
void TestCalibrationPage::runFails()
{
    QFETCH(QString, device);
    QFETCH(QByteArray, configuration);
    QFETCH(bool, wordless);
    QFETCH(QList<QByteArray>, messages);
    QFETCH(QString, box);
    const QPoint before = landing({1000, 1000});
    root().write(QStringLiteral("/dev/input/broken"),
                 TouchscreenFifo::sample({1000, 1000}, 1) + TouchscreenFifo::sample({1000, 1000}, 0)
                     + TouchscreenFifo::sample({3000, 1000}, 1));
    if (!device.isEmpty()) {
        qputenv("TSLIB_TSDEVICE", QFile::encodeName(root().path(device)));
    }
    root().write(QStringLiteral("/etc/ts.conf"), configuration);
    const qsizetype open = openTouchscreens();
    BoxWatcher operatorsEyes;
    for (const QByteArray &message : messages) {
        QTest::ignoreMessage(QtDebugMsg, message.constData());
    }
    startPage();
    if (wordless) {
        QTRY_COMPARE(samplingThreads(), 1);
        crosshairs()->CalThreadControl(); // too early: it does not wait for the touch
        crosshairs()->findChild<VeltaCalibrationThread *>()->stop();
    }
    QTRY_COMPARE_WITH_TIMEOUT(operatorsEyes.texts().size(), 1, RunLimitMs);
    QVERIFY(operatorsEyes.texts().constFirst().startsWith(box));
    QTRY_COMPARE(QApplication::activeWindow(), pPage.get());
    QTRY_COMPARE(samplingThreads(), 0);
    QVERIFY(!crosshairs()->isVisible());
    QVERIFY(!inAcceptMode());
    QCOMPARE(timers(), 0);
    QCOMPARE(root().read(CalibrationFile), OldFile);
    QCOMPARE(landing({1000, 1000}), before);
    QCOMPARE(openTouchscreens(), open);
}

void TestCalibrationPage::countdownAndExit()
{
    pPage->startAutoCalibration();
    pPage->startAutoCalibration();
    QCOMPARE(timers(), 1);
    button("cancelCalibrationButton")->click();
    QVERIFY(!pPage->isRunning());
    QVERIFY(!root().exists(Request));
    QCOMPARE(timers(), 0);

    // A start by hand is a run, too: the main window must not resume the pointer in it.
    button("startCalibrationButton")->click();
    QVERIFY(pPage->isRunning());
    pPage->hide();

    // Start at once from the middle of a count-down.
    pPage->startAutoCalibration();
    pPage->updateStartCalibrationScreen();
    button("startCalibrationButton")->click();
    QCOMPARE(button("startCalibrationButton")->text(), QStringLiteral("Start Calibration"));
    QVERIFY(crosshairs()->isVisible());
    QCOMPARE(timers(), 0);
    // Exit in the middle of a run; the main window then hides the page.
    button("cancelCalibrationButton")->click();
    pPage->hide();
    QVERIFY(!crosshairs()->isVisible());
}

/// A start during a run begins it again, with one thread.
void TestCalibrationPage::startsAgainAndAgain()
{
    startPage();
    touch({50, 50});
    const qsizetype open = openTouchscreens();
    for (int i = 0; i < 20; ++i) {
        touch({50, 50});
        QTest::qWait(i);
        pPage->StartCalibration();
        QCOMPARE(openTouchscreens(), open);
        QTRY_COMPARE(samplingThreads(), 1);
    }
    touchCrosshairs();
    button("acceptCalibrationButton")->click();
    QCOMPARE(landing(Glass.touch({700, 100})), QPoint(700, 100));
}

void TestCalibrationPage::paints_data()
{
    QTest::addColumn<QColor>("asked");
    QTest::addColumn<QColor>("shown");
    QTest::newRow("black") << QColor(Qt::black) << QColor(Qt::white);
    for (const auto colour : {Qt::white, Qt::yellow, Qt::green, Qt::red}) {
        QTest::newRow(qPrintable(QColor(colour).name())) << QColor(colour) << QColor(colour);
    }
}

void TestCalibrationPage::paints()
{
    QFETCH(QColor, asked);
    QFETCH(QColor, shown);
    startPage();
    QCoreApplication::processEvents();
    crosshairs()->updateScreen(400, 240, asked);
    const QImage picture = crosshairs()->grab().toImage();
    QCOMPARE(picture.pixelColor(790, 470), shown);
    QCOMPARE(picture.pixelColor(400, 240), shown);
    for (const QPoint offset : {QPoint(-10, 0), {10, 0}, {0, -10}, {0, 10}, {-9, -9}, {9, 9}}) {
        QCOMPARE(picture.pixelColor(QPoint(400, 240) + offset), QColor(Qt::black));
    }
    QCOMPARE(picture.pixelColor(400 - 14, 240), shown);
}

void TestCalibrationPage::textsFit_data()
{
    QTest::addColumn<QSize>("screen");
    for (const QSize size : panelScreenSizes()) {
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
    }
}

/// The three lines neither leave the screen nor touch a crosshair.
void TestCalibrationPage::textsFit()
{
    QFETCH(QSize, screen);
    pPage.reset();
    setScreen(screen);
    pPage = std::make_unique<CalibrationPage>();
    startPage();
    QCoreApplication::processEvents();
    crosshairs()->updateScreen(screen.width() / 2, screen.height() / 2, Qt::white);
    const QImage picture = crosshairs()->grab().toImage();
    const auto isFree = [&](const QRect &rect) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            for (int y = rect.top(); y <= rect.bottom(); ++y) {
                if (picture.pixelColor(x, y) != QColor(Qt::white)) {
                    return false;
                }
            }
        }
        return true;
    };
    QVERIFY(isFree({0, 0, 1, screen.height()}));
    QVERIFY(isFree({screen.width() - 1, 0, 1, screen.height()}));
    QVERIFY(isFree({39, 39, 22, 22}));
    QVERIFY(isFree({screen.width() - 61, 39, 22, 22}));
    QVERIFY(!isFree({0, 0, screen.width(), 39}));
}

void TestCalibrationPage::fitsScreen_data()
{
    textsFit_data();
}

/// In both modes every widget is on the screen, with its text unclipped and a button high enough.
void TestCalibrationPage::fitsScreen()
{
    QFETCH(QSize, screen);
    pPage.reset();
    setScreen(screen);
    pPage = std::make_unique<CalibrationPage>();
    pPage->startAutoCalibration();
    for (const bool bAccept : {false, true}) {
        if (bAccept) {
            pPage->CancelStartTimer();
            pPage->CalibrationDone();
        }
        QCoreApplication::processEvents();
        const QRect page(QPoint(), screen);
        QCOMPARE(pPage->geometry(), page);
        for (const char *name :
             {"startCalibrationButton", "acceptCalibrationButton", "cancelCalibrationButton"}) {
            QPushButton *pButton = button(name);
            QVERIFY2(page.contains({pButton->mapTo(pPage.get(), QPoint()), pButton->size()}), name);
            QVERIFY2(pButton->fontMetrics().horizontalAdvance(pButton->text()) + 8
                         <= pButton->width(),
                     name);
            QVERIFY2(pButton->height() >= 30, name);
        }
        auto *pText = pPage->findChild<QPlainTextEdit *>();
        QVERIFY(page.contains({pText->mapTo(pPage.get(), QPoint()), pText->size()}));
        const QSizeF text = pText->document()->size(); // height in lines
        QVERIFY(text.height() * pText->fontMetrics().lineSpacing() <= pText->viewport()->height());
        if (bAccept) {
            auto *pCount = pPage->findChild<QLCDNumber *>();
            QVERIFY(page.contains({pCount->mapTo(pPage.get(), QPoint()), pCount->size()}));
        }
    }
}

PANEL_TEST_MAIN(TestCalibrationPage)
#include "tst_calibrationpage.moc"
