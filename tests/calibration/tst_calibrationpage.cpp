#include "calibration/calibrationpage.h"
#include "calibration/calibrationrun.h"
#include "calibration/veltacalibrationpanel.h"
#include "platform/requestfiles.h"
#include "tests/calibration/calibrationtest.h"
#include "tests/calibration/touchsheet.h"

#include <QLCDNumber>

namespace {

const QString Request = CalibrationRequestFile;
constexpr CalibrationPace Fast{std::chrono::milliseconds(0), std::chrono::milliseconds(0)};

qsizetype samplingThreads()
{
    qsizetype count = 0;
    const QDir tasks("/proc/self/task");
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + "/comm"));
        count += name.open(QIODevice::ReadOnly) && name.readAll().startsWith("VeltaCalib") ? 1 : 0;
    }
    return count;
}

/// How often this process has a touchscreen open.
qsizetype openTouchscreens()
{
    return openDescriptors("/dev/input/");
}

} // namespace

/// The page, its controller and its crosshair screen on a touchscreen that real tslib reads.
class TestCalibrationPage : public CalibrationTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        DeviceTest::init();
        openPointer();
        root().write(Request, {});
        pPage = std::make_unique<CalibrationPage>(Fast);
    }

    /// The whole road: count-down, five crosses, Accept touched through the new calibration, Exit.
    void acceptedByTouch()
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
        QCOMPARE(button("startCalibrationButton")->text(), "Start Calibration");
        QVERIFY(crosshairs()->isVisible());
        QCOMPARE(crosshairs()->size(), Glass.picture());
        touchCrosshairs();

        QVERIFY(!crosshairs()->isVisible());
        QTRY_COMPARE(QApplication::activeWindow(), pPage.get());
        QVERIFY(!button("startCalibrationButton")->isEnabled()
                && !button("cancelCalibrationButton")->isEnabled());
        auto *pCount = pPage->findChild<QLCDNumber *>();
        QVERIFY(pCount->isVisible());
        QCOMPARE(pCount->intValue(), 10);
        QVERIFY(pServer->isCursorVisible());
        pPage->updateLCD();
        QCOMPARE(pCount->intValue(), 9);

        QPushButton *pAccept = button("acceptCalibrationButton");
        waitOutDoubleTap();
        touch(pAccept->mapToGlobal(pAccept->rect().center()));
        QTRY_VERIFY(!inAcceptMode());
        QVERIFY(!pCount->isVisible() && !pServer->isCursorVisible() && !isCounting());
        QVERIFY(!WindowServer::isCalibrationUnaccepted());
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

    /// 10 to 0, the old calibration, and a count-down to the next run.
    void nobodyAccepts()
    {
        const QPoint before = landing({1000, 1000});
        startPage();
        touchCrosshairs();
        for (int i = 0; i < 10; ++i) {
            pPage->updateLCD();
        }
        QVERIFY(inAcceptMode());
        QCOMPARE(pPage->findChild<QLCDNumber *>()->intValue(), 0);
        {
            BoxWatcher operatorsEyes;
            pPage->updateLCD();
            QCOMPARE(operatorsEyes.texts().size(), 1);
            QVERIFY(operatorsEyes.texts().constFirst().startsWith("old calibration data restored"));
            QCOMPARE(operatorsEyes.buttons().constFirst(), "OK (5)");
        }
        QTRY_COMPARE(QApplication::activeWindow(), pPage.get());
        QVERIFY(!inAcceptMode());
        QCOMPARE(button("startCalibrationButton")->text(), "Start Calibration (5)");
        QCOMPARE(landing({1000, 1000}), before);
        QVERIFY(isCounting());
        QCOMPARE(root().read(CalibrationFile), OldFile);
    }

    /// The program is told to end while the end of a run shows a box.
    void endsBehindBox()
    {
        const QPoint before = landing({1000, 1000});
        const qsizetype open = openTouchscreens();
        startPage();
        qputenv("POINTERCAL_FILE", "/nonexistent/pointercal");
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] {
            if (QApplication::activeModalWidget() || inAcceptMode()) {
                QCoreApplication::exit(); // as a signal has it
            }
        });
        look.start(5);
        touchTargets();
        expectWarning(CannotWrite);
        QCoreApplication::exec();
        look.stop();
        QVERIFY(inAcceptMode()); // nobody has accepted it
        pPage.reset();
        QCOMPARE(landing({1000, 1000}), before);
        QCOMPARE(openTouchscreens(), open);
    }

    void runFails_data()
    {
        // "device" in the environment, empty: the built-in one. "wordless": the thread ends, but
        // says nothing. "box" is how its text begins.
        using Messages = QList<QByteArray>;
        const QByteArray good = "module_raw waveshare len=8\nmodule linear\n";
        const QByteArray end = "CalibrationPanel CalThreadError\n";
        const Messages config{"ts_config error"};
        row("no device", "/nowhere", good, false, Messages{"ts_open error"}, "Error -207");
        row("broken configuration", "", "module_raw nosuch\n", false, config, "Error -208");
        row("empty configuration", "", QByteArray(), false, config, "Error -208");
        row("read error", "/dev/input/broken", good, false,
            Messages{"getxy: ts_read_raw error 2", end}, "Error -218: could not read touch");
        row("point without data", "", good, true, Messages{end},
            "Error -217: could not read touch");
    }
    /// No next point behind the box, the touchscreen is closed, pointer and keys are as alive as
    /// before.
    void runFails()
    {
        FETCH(QString, device, QByteArray, configuration, bool, wordless, QList<QByteArray>,
              messages, QString, box);
        const QPoint before = landing({1000, 1000});
        root().write("/dev/input/broken",
                     TouchscreenFifo::sample({1000, 1000}, 1)
                         + TouchscreenFifo::sample({1000, 1000}, 0)
                         + TouchscreenFifo::sample({3000, 1000}, 1));
        if (!device.isEmpty()) {
            qputenv("TSLIB_TSDEVICE", QFile::encodeName(root().path(device)));
        }
        root().write("/etc/ts.conf", configuration);
        const qsizetype open = openTouchscreens();
        BoxWatcher operatorsEyes;
        for (const QByteArray &message : messages) {
            QTest::ignoreMessage(QtDebugMsg, message.constData());
        }
        startPage();
        if (wordless) {
            QTRY_COMPARE(samplingThreads(), 1);
            crosshairs()->CalThreadControl(); // too early: it does not wait for the touch
            pPage->findChild<VeltaCalibrationThread *>()->stop();
        }
        QTRY_COMPARE_WITH_TIMEOUT(operatorsEyes.texts().size(), 1, RunLimitMs);
        const QString &text = operatorsEyes.texts().constFirst();
        QVERIFY2(text.startsWith(box), qPrintable(text));
        QVERIFY(operatorsEyes.buttons().constFirst().contains("(10)"));
        QTRY_COMPARE(QApplication::activeWindow(), pPage.get());
        QTRY_COMPARE(samplingThreads(), 0);
        QVERIFY(!crosshairs()->isVisible() && !inAcceptMode() && !isCounting());
        QCOMPARE(root().read(CalibrationFile), OldFile);
        QCOMPARE(landing({1000, 1000}), before);
        QCOMPARE(openTouchscreens(), open);
    }

    void countdownAndExit()
    {
        pPage->startAutoCalibration();
        pPage->startAutoCalibration();
        QVERIFY(isCounting());
        button("cancelCalibrationButton")->click();
        QVERIFY(!pPage->isRunning() && !root().exists(Request) && !isCounting());

        // What can be no request goes by its name, too.
        QVERIFY(QDir().mkpath(root().path(Request)));
        button("cancelCalibrationButton")->click();
        QVERIFY(!root().exists(Request));

        // A start by hand is a run, too: the main window must not resume the pointer in it.
        button("startCalibrationButton")->click();
        QVERIFY(pPage->isRunning());
        pPage->hide();

        // Start at once from the middle of a count-down.
        pPage->startAutoCalibration();
        pPage->updateStartCalibrationScreen();
        button("startCalibrationButton")->click();
        QCOMPARE(button("startCalibrationButton")->text(), "Start Calibration");
        QVERIFY(crosshairs()->isVisible() && !isCounting());
        // Exit in the middle of a run; the main window then hides the page.
        button("cancelCalibrationButton")->click();
        pPage->hide();
        QVERIFY(!crosshairs()->isVisible());
    }

    /// A start during a run begins it again, with one thread.
    void startsAgainAndAgain()
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

    void paints_data()
    {
        for (const PanelScreen &screen : panelScreens()) {
            row(nameOf(screen.size), screen.size);
        }
    }
    /// The cross in its colour on white; the three lines neither leave the screen nor touch one.
    void paints()
    {
        FETCH(QSize, screen);
        pPage.reset();
        setScreen(screen);
        pPage = std::make_unique<CalibrationPage>(Fast);
        startPage();
        QCoreApplication::processEvents();
        const QPoint centre(screen.width() / 2, screen.height() / 2);
        const auto pictureIn = [&](const QColor &colour) {
            crosshairs()->updateScreen(centre.x(), centre.y(), colour);
            return crosshairs()->grab().toImage();
        };
        for (const auto *pName : {"black", "yellow", "lime", "red", "white"}) {
            const QImage picture = pictureIn(pName);
            const QColor ground = picture.pixelColor(centre);
            QCOMPARE(ground, QColor(*pName == 'b' ? "white" : pName));
            QCOMPARE(picture.pixelColor(screen.width() - 1, screen.height() - 1), ground);
            for (const QPoint arm :
                 {QPoint(-10, 0), {10, 0}, {0, -10}, {0, 10}, {-9, -9}, {9, 9}}) {
                QCOMPARE(picture.pixelColor(centre + arm), QColor(Qt::black));
            }
            QCOMPARE(picture.pixelColor(centre - QPoint(14, 0)), ground);
        }
        const QImage picture = pictureIn(Qt::white);
        const QImage cross = picture.copy({centre - QPoint(12, 12), QSize(24, 24)});
        QCOMPARE(cross.mirrored(true, false), cross);
        QCOMPARE(cross.mirrored(false, true), cross);
        const auto isFree = [&](const QRect &rect) {
            const QImage part = picture.copy(rect);
            QImage white(part.size(), part.format());
            white.fill(Qt::white);
            return part == white;
        };
        QVERIFY(isFree({0, 0, 1, screen.height()}));
        QVERIFY(isFree({screen.width() - 1, 0, 1, screen.height()}));
        QVERIFY(isFree({39, 39, 22, 22}) && isFree({screen.width() - 61, 39, 22, 22}));
        QVERIFY(!isFree({0, 0, screen.width(), 39}));
    }

private:
    void closeWindows() override
    {
        pPage.reset();
        CalibrationTest::closeWindows();
    }

    QPushButton *button(const char *name) const { return pPage->findChild<QPushButton *>(name); }

    bool inAcceptMode() const { return button("acceptCalibrationButton")->isEnabled(); }
    VeltaCalibrationPanel *crosshairs() const
    {
        return pPage->findChild<VeltaCalibrationPanel *>();
    }

    void startPage()
    {
        pPage->startAutoCalibration();
        pPage->StartCalibration();
    }

    void touchCrosshairs()
    {
        touchTargets();
        QVERIFY(QTest::qWaitFor([this] { return inAcceptMode(); }, RunLimitMs));
    }

    QPoint landing(RawPoint raw)
    {
        TouchSheet sheet;
        sheet.raise();
        return sheet.landing([&] { pFifo->tap(raw); });
    }

    bool isCounting() const
    {
        return pPage->findChild<CalibrationRun *>()->findChild<QTimer *>()->isActive();
    }

    std::unique_ptr<CalibrationPage> pPage;
};

PANEL_TEST_MAIN(TestCalibrationPage)
#include "tst_calibrationpage.moc"
