#include "app/mainwindow.h"
#include "app/restartsequence.h"
#include "app/rowfit.h"
#include "app/startup.h"
#include "calibration/calibrationpage.h"
#include "infobox/veltainfobox.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "tests/platform/keyboardfifo.h"
#include "tests/support/devicetest.h"
#include "tests/support/openkeyboard.h"
#include "tests/support/ordinaryuser.h"
#include "wizard/veltawizard.h"

#include <QHBoxLayout>
#include <QLCDNumber>
#include <QProgressBar>

namespace {

/// Counts the paintings at which \a counts says so.
class PaintWatcher : public QObject
{
public:
    explicit PaintWatcher(std::function<bool()> counts) : isCounted(std::move(counts)) { }
    bool eventFilter(QObject *, QEvent *pEvent) override
    {
        nPaints += pEvent->type() == QEvent::Paint && isCounted() ? 1 : 0;
        return false;
    }
    int nPaints = 0;

private:
    std::function<bool()> isCounted;
};

} // namespace

class MainWindowTest : public DeviceTest
{
    Q_OBJECT

private:
    std::unique_ptr<WindowServer> pServer;
    std::unique_ptr<MainWindow> pWindow;

    void start()
    {
        pServer = std::make_unique<WindowServer>();
        pWindow = std::make_unique<MainWindow>();
    }
    void startLinked(int nState)
    {
        root().setFirmware("state", QString::number(nState));
        start();
        tick(); // opens the link
        tick();
    }
    /// A tick, after the \a firmware has changed.
    void tick(const QString &firmware = {})
    {
        root().setFirmware(firmware);
        pWindow->controlVisibility();
    }
    void changeLanguage()
    {
        QEvent change(QEvent::LanguageChange);
        QCoreApplication::sendEvent(pWindow.get(), &change);
    }
    /// Ticks; takes \a step again and again as long as that shows the wizard.
    void tickWithWizard(const std::function<void(QWizard &)> &step)
    {
        QTimer hand;
        connect(&hand, &QTimer::timeout, this, [&] {
            if (auto *pWizard = pWindow->findChild<QWizard *>()) {
                step(*pWizard);
            }
        });
        hand.start(5);
        tick();
    }
    void closeWindows() override
    {
        pWindow.reset();
        pServer.reset();
    }
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return pWindow->findChild<Widget *>(name);
    }
    QString text(const char *label) const { return find<QLabel>(label)->text(); }
    QString page() const { return pWindow->currentWidget()->objectName(); }
    CalibrationPage *calibrationPage() const
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget *pWidget : windows) {
            if (auto *pPage = qobject_cast<CalibrationPage *>(pWidget)) {
                return pPage;
            }
        }
        return nullptr;
    }

private Q_SLOTS:
    void states_data()
    {
        const QString none = "no codesys application";
        row("0", 0, true, "previewPage", false, "Conveyor");
        row("2", 2, true, "previewPage", true, "Conveyor");
        row("6", 6, true, "previewPage", false, none);
        row("1", 1, false, "startupPage", false, none);
        row("3", 3, false, "startupPage", false, none);
        row("-1", -1, false, "startupPage", false, none);
    }
    void states()
    {
        FETCH(int, state, bool, visible, QString, pageName, bool, startButton, QString, name);
        root().setFirmware("app.0=Conveyor");
        root().setFirmware("state", QString::number(state));
        start();
        QVERIFY(pWindow->isVisible());
        QCOMPARE(page(), "startupPage");
        tick();
        QCOMPARE(page(), "startupPage"); // only opens the link
        tick();
        QCOMPARE(pWindow->isVisible(), visible);
        QCOMPARE(page(), pageName);
        QCOMPARE(text("label_appname"), name);
        if (visible) {
            QVERIFY(pWindow->isFullScreen());
            QCOMPARE(find<QPushButton>("pushButtonStartApp")->isVisible(), startButton);
        }
    }

    void link()
    {
        root().setFirmware("link=no");
        start();
        auto *pBar = find<QProgressBar>("sp_progressBar01");
        const int nBefore = pBar->value();
        for (int i = 0; i < 3; ++i) {
            tick();
            pWindow->doProgressBar();
        }
        QCOMPARE(page(), "startupPage");
        QCOMPARE(pBar->value(), nBefore + 3);
        tick("link=yes state=1");
        tick();
        QVERIFY(!pWindow->isVisible());
        root().breakFirmware();
        tick();
        QVERIFY(pWindow->isVisible());
        QCOMPARE(page(), "startupPage"); // as it was
        root().setFirmware("link=yes state=2");
        pWindow->configButtonPressed(); // cleared when the link opens
        tick();
        tick();
        QCOMPARE(page(), "previewPage");
        tick("state=1");
        QVERIFY(!pWindow->isVisible());
    }

    void appNames_data()
    {
        const QString none = "no codesys application";
        row("none", "", none);
        row("second", "app.1=Second appCount=2", "Second");
        row("beyond the count", "app.0=First appCount=0", none);
        row("255 empty entries", "appCount=255", none);
        row("not ASCII", "app.0=Förderband", "Förderband");
        row("on one line, else as it is", "app.0=A\u00a0\u00a0B\u0085C", "A\u00a0\u00a0B C");
    }
    void appNames()
    {
        FETCH(QString, firmware, QString, name);
        root().setFirmware(firmware);
        startLinked(2);
        QCOMPARE(text("label_appname"), name);
        changeLanguage(); // brings the form's own text
        QCOMPARE(text("label_appname"), name);
    }

    void longAppName()
    {
        root().setFirmware("app.0", QString(500, u'W')); // no NUL in its entry
        root().setFirmware("appCount=255"); // more than the record holds
        startLinked(2);
        const QString shown = text("label_appname");
        const auto nWidth = find<QLabel>("label_appname")->fontMetrics().horizontalAdvance(shown);
        QVERIFY(shown.endsWith(QChar(0x2026)));
        QVERIFY2(nWidth <= 750 && nWidth > 700, qPrintable(QString::number(nWidth)));
    }

    void deviceInfo()
    {
        root().setFirmware("eth0.mode=off");
        start();
        QCOMPARE(text("label_ip"), "IP: 123.456.789.123 ");
        QCOMPARE(text("label_mask"), "Mask: 123.456.789.0");
        closeWindows();
        root().setFirmware("eth0.mode=dhcp");
        root().write("/sys/class/net/eth0/address", "02:fc:00:00:00:01\n");
        startLinked(2);
        QCOMPARE(text("label_ip"), "ETH0 IP: 0.0.0.0 (dhcp)");
        QCOMPARE(text("label_mask"), "ETH0 Mask: 0.0.0.0");
        QCOMPARE(text("label_mac"), "ETH0 MAC: 02:FC:00:00:00:01");
        QCOMPARE(text("label_fw"), "Firmware Version: ");
        QCOMPARE(text("label_rts"), "Codesys RTS Version: ");
        tick("eth0.ip=10.9.8.7"); // a late lease
        QCOMPARE(text("label_ip"), "ETH0 IP: 10.9.8.7 (dhcp)");
        // Another language brings the examples of the form, and nobody tells the address any more.
        root().breakFirmware();
        changeLanguage();
        QCOMPARE(text("label_ip"), "ETH0 IP: 10.9.8.7 (dhcp)");
        QCOMPARE(text("label_appname"), "no codesys application");
    }

    // The configuration stays closed, until the next press finds a file that can be read.
    void unreadableSettings()
    {
        startLinked(2);
        root().plant("/etc/settings.ini", "directory");
        expectWarning("settings.ini cannot be read: ");
        BoxWatcher watcher;
        pWindow->configButtonPressed();
        tick();
        QVERIFY(watcher.texts().join(u'|').startsWith("Error -202: "));
        QCOMPARE(page(), "previewPage");

        root().remove("/etc/settings.ini");
        int nOpened = 0;
        pWindow->configButtonPressed();
        tickWithWizard([&](QWizard &wizard) {
            ++nOpened;
            wizard.reject();
        });
        QCOMPARE(nOpened, 1);
        QCOMPARE(watcher.texts().size(), 1);
    }

    // What the environment says of the input devices stays as it is.
    void environment()
    {
        qputenv("QT_QPA_FB_DISABLE_INPUT", "0");
        qunsetenv("QT_QPA_EGLFS_DISABLE_INPUT");
        prepareEnvironment();
        QCOMPARE(qgetenv("QT_QPA_FB_DISABLE_INPUT"), "0");
        QCOMPARE(qgetenv("QT_QPA_EGLFS_DISABLE_INPUT"), "1");
    }

    void fontsThatAreNone()
    {
        root().plant("/usr/lib/fonts/Vera.ttf", "fifo");
        QVERIFY(!loadFonts());
    }

    // Texts that come later are measured as they are: none is cut, none is smaller than it must be.
    void fitsLaterTexts()
    {
        setScreen({480, 272}, 120);
        root().write("/etc/fwinfo.ini", "[firmware]\nversion=3.0.4.12345-release\n");
        root().setFirmware("eth0.mode=dhcp");
        startLinked(2);
        tick("eth0.ip=192.168.100.200 eth0.netmask=255.255.255.128");
        QCOMPARE(text("label_ip"), "ETH0 IP: 192.168.100.200 (dhcp)");
        QTest::qWait(1); // layouts that are posted
        for (const char *name : {"label_fw", "label_ip"}) {
            const auto *pLabel = find<QLabel>(name);
            const auto widthOf = [pLabel](const QFont &font) {
                return QFontMetrics(font).horizontalAdvance(pLabel->text());
            };
            QVERIFY2(widthOf(pLabel->font()) <= pLabel->width(), name);
            QVERIFY2(widthOf(pLabel->font()) > pLabel->width() * 3 / 4, name);
        }
    }

    void wrapsOnlyWhatMust()
    {
        QWidget page;
        QHBoxLayout layout(&page);
        QLabel label;
        layout.addWidget(&label);
        RowFit rows(&page);
        for (const bool bLong : {true, false, true}) {
            label.setText(QStringLiteral("word ").repeated(bLong ? 200 : 2));
            rows.fit({&label});
            QCOMPARE(label.wordWrap(), bLong);
        }
    }

    void startButton()
    {
        root().setFirmware("startedState=1");
        startLinked(2);
        auto *pButton = find<QPushButton>("pushButtonStartApp");
        root().setFirmware("result.rctrl_start_all_applications=-1");
        QTest::mouseClick(pButton, Qt::LeftButton);
        QVERIFY(!pButton->isEnabled());
        pButton->setEnabled(true);
        root().setFirmware("result.rctrl_start_all_applications", {});
        QTest::mouseClick(pButton, Qt::LeftButton);
        QVERIFY(pButton->isEnabled());
        tick();
        QVERIFY(!pWindow->isVisible());
        tick("state=2");
        QVERIFY(pWindow->isVisible());
        QCOMPARE(page(), "previewPage");
    }

    // Nothing is painted while nothing changes.
    void quietTick_data()
    {
        row("800x480", QSize(800, 480));
        row("texts that shrink", QSize(240, 320));
    }
    void quietTick()
    {
        FETCH(QSize, screen);
        setScreen(screen);
        root().setFirmware("eth0.mode=dhcp");
        startLinked(2);
        QVERIFY(QTest::qWaitForWindowExposed(pWindow.get()));
        QTest::qWait(20);
        PaintWatcher counter([] { return true; });
        qApp->installEventFilter(&counter);
        for (int i = 0; i < 5; ++i) {
            tick();
            QCoreApplication::processEvents();
        }
        QCOMPARE(counter.nPaints, 0);
    }

    // Nobody needs to come and press the button again.
    void restartFails_data()
    {
        const QString next = ", next attempt in";
        row("fails", "exit 3", false, false, "Restart failed" + next);
        row("does not happen", "exit 0", false, true, "Not restarted yet" + next);
        row("hangs, after the count-down", "exec sleep 1", true, true, "Not restarted yet" + next);
    }
    void restartFails()
    {
        FETCH(QByteArray, script, bool, countDown, bool, timeUp, QString, says);
        root().writeCommand("/sbin/reboot", "echo reboot >>\"$PANEL_ROOT/log\"\n" + script);
        start();
        auto *pLcd = find<QLCDNumber>("lcdRestart");
        auto *pSequence = pWindow->findChild<RestartSequence *>();
        QTimer clock;
        if (timeUp) {
            connect(&clock, &QTimer::timeout, this, [&] {
                if (root().exists("/log")) {
                    clock.stop();
                    if (pSequence->isCommandRunning()) { // one is enough
                        find<QPushButton>("buttonRestart")->click();
                    }
                    pSequence->handle(RestartSequence::Event::TimeUp);
                }
            });
            clock.start(10);
        }
        Q_EMIT pWindow->triggerLcd(10);
        for (int nLeft = 9; countDown && nLeft >= 0; --nLeft) {
            QVERIFY(!root().exists("/log"));
            pWindow->systemRestart_Timer();
            QVERIFY(nLeft == 0 || pLcd->intValue() == nLeft);
        }
        if (!countDown) {
            pWindow->systemRestart_Button();
        }
        QTRY_VERIFY(pSequence->isRetryDue());
        QCOMPARE(text("label_restartText"), says);
        QCOMPARE(pLcd->intValue(), 10);
        changeLanguage();
        QCOMPARE(text("label_restartText"), says);
        root().writeCommand("/sbin/reboot", "echo again >>\"$PANEL_ROOT/log\"; kill -9 $$");
        for (int nLeft = 9; nLeft >= 0; --nLeft) {
            QCOMPARE(root().read("/log"), "reboot\n");
            QMetaObject::invokeMethod(find<QTimer>("restartTimer"), "timeout");
        }
        QCOMPARE(root().read("/log"), "reboot\nagain\n");
        QCOMPARE(text("label_restartText"), "Restart failed, next attempt in");
        QCOMPARE(pLcd->intValue(), 10);
    }

    void calibrationRequest_data()
    {
        row("no touchscreen", false, "single", false);
        row("multi-touch", true, "capacitive-Multi x\0", false);
        row("single-touch", true, "single\0", true);
    }
    void calibrationRequest()
    {
        FETCH(bool, touchscreen, QByteArray, type, bool, honoured);
        const QString request = "/tmp/.system/TouchCalibration";
        if (touchscreen) {
            root().write("/dev/input/touchscreen", "");
        }
        root().write("/proc/device-tree/qrd-specific/qrd_touch_type", type);
        startLinked(2);
        CalibrationPage *pPage = calibrationPage();
        QVERIFY(!pPage);
        root().write(request, "");
        if (honoured) { // but not over a box
            QDialog blocker;
            blocker.setModal(true);
            blocker.show();
            tick();
            QVERIFY(!calibrationPage());
        }
        tick();
        QCOMPARE(root().exists(request), honoured);
        pPage = calibrationPage();
        QCOMPARE(pPage && pPage->isVisible(), honoured);
        if (honoured) {
            // The wizard waits until the page has gone: ticks rest around it.
            pWindow->configButtonPressed();
            tick();
            QVERIFY(!pWindow->findChild<QWizard *>());
            root().setFirmware("state=1");
        }
        root().remove(request);
        tick();
        QVERIFY(!pPage || !pPage->isVisible());
    }

    // The operator can leave it also where the request stays.
    void calibrationRequestStays()
    {
        root().write("/dev/input/touchscreen", "");
        root().write("/tmp/.system/TouchCalibration", "");
        startLinked(2);
        const OrdinaryUser user(root(), "/tmp/.system");
        calibrationPage()->findChild<QPushButton *>("cancelCalibrationButton")->click();
        expectWarning("cannot be removed");
        for (int i = 0; i < 3; ++i) {
            tick();
            QVERIFY(!calibrationPage()->isVisible());
        }
    }

    void calibrationMessage()
    {
        const QString message = "/flash/local/cal_message";
        root().write(message, "");
        bool bVisible = false;
        BoxWatcher watcher(800); // longer than a tick
        // The window's own tick goes on while the box is open and leaves the window on the screen.
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] {
            bVisible = bVisible || (QApplication::activeModalWidget() && pWindow->isFullScreen());
        });
        look.start(1);
        root().setFirmware("state=1");
        start();
        tick();
        find<QTimer>("visibilityTimer")->start(1);
        QTRY_VERIFY(!watcher.texts().isEmpty() && !pWindow->isVisible()); // the PLC runs
        QVERIFY(bVisible);
        QVERIFY(!root().exists(message));
        QVERIFY(
            watcher.texts().join(u'|').startsWith("Error -236: Automatic calibration timed out"));
        root().write(message, "");
        tick(); // once per start
        QVERIFY(root().exists(message));
    }

    /// Touch is off until a calibration, for which the panel is asked when the touchscreen comes.
    void calibrationMessageWithoutTouchscreen()
    {
        root().write("/flash/local/cal_message", "");
        const BoxWatcher watcher;
        startLinked(2);
        QCOMPARE(watcher.texts().size(), 1);
        QVERIFY(pServer->isPointerSuspended());
        root().write("/dev/input/touchscreen", "");
        root().write("/tmp/.system/TouchCalibration", "");
        tick();
        QVERIFY(calibrationPage() && calibrationPage()->isVisible());
        QVERIFY(!pServer->isPointerSuspended());
    }

    void configRequest_data()
    {
        row("Return, stopped", 2, int(Qt::Key_Return), true);
        row("Enter, no application", 6, int(Qt::Key_Enter), true);
        row("Return, running", 1, int(Qt::Key_Return), false);
        row("other key", 2, int(Qt::Key_Space), false);
    }
    void configRequest()
    {
        FETCH(int, state, int, key, bool, opens);
        startLinked(state);
        bool bOpened = false;
        QTest::keyClick(pWindow.get(), Qt::Key(key));
        tickWithWizard([&](QWizard &wizard) {
            bOpened = true;
            QCOMPARE(page(), "localConfigPage");
            wizard.reject();
        });
        QCOMPARE(bOpened, opens);
        if (state != 1) {
            QCOMPARE(page(), "previewPage");
        }
    }

    // A wish for the wizard that meets a PLC that has started is dropped: an invisible wizard would
    // hang the panel.
    void configRequestAndPlcStarts_data()
    {
        eitherWay("pressed while stopped", "pressed before the first status");
    }
    void configRequestAndPlcStarts()
    {
        FETCH(bool, beforeFirstStatus);
        root().setFirmware("state=2");
        start();
        tick();
        if (!beforeFirstStatus) {
            tick();
        }
        pWindow->configButtonPressed();
        tick("state=1");
        QVERIFY(!pWindow->isVisible());
        tick("state=2");
        QVERIFY(!pWindow->findChild<QDialog *>());
    }

    // What lies under the finger is the wizard, not the page behind it.
    void wizardUnderTheFinger()
    {
        setScreen({320, 240});
        startLinked(2);
        QStringList under;
        pWindow->configButtonPressed();
        tickWithWizard([&](QWizard &wizard) {
            for (const auto which : {QWizard::CancelButton, QWizard::NextButton}) {
                const QAbstractButton *pButton = wizard.button(which);
                const QPoint centre = pButton->mapTo(pWindow.get(), pButton->rect().center());
                under += pWindow->childAt(centre)->objectName();
            }
            wizard.reject();
        });
        QCOMPARE(under, QStringList({"qt_wizard_cancel", "__qt__passive_wizardbutton1"}));
    }

    // SAVE: restart page, ticks at rest, exactly one reboot.
    void saveAndRestart()
    {
        root().writeCommand("/bin/syscfg", "exit 0");
        root().writeCommand("/sbin/reboot", "echo reboot >>\"$PANEL_ROOT/log\"");
        startLinked(2);
        pWindow->configButtonPressed();
        tickWithWizard([&](QWizard &wizard) {
            if (wizard.currentId() == wizard.startId()) {
                find<QPushButton>("NetOpModeSelectButton")->click();
            }
            const bool bLast = wizard.button(QWizard::FinishButton)->isVisible();
            wizard.button(bLast ? QWizard::FinishButton : QWizard::NextButton)->click();
        });
        QCOMPARE(page(), "rebootPage");
        auto *pLcd = find<QLCDNumber>("lcdRestart");
        QCOMPARE(pLcd->intValue(), 10);
        // The operator sees the 0 before the command can end everything.
        PaintWatcher watcher([&] { return pLcd->intValue() == 0 && !root().exists("/log"); });
        pLcd->installEventFilter(&watcher);
        QTest::mouseClick(find<QPushButton>("buttonRestart"), Qt::LeftButton);
        QCOMPARE(root().read("/log"), "reboot\n");
        QVERIFY(watcher.nPaints > 0);
        QCOMPARE(page(), "rebootPage");
    }

    // Missing fonts and a calibration that timed out: one key after the other closes what is on
    // top.
    void twoBoxes()
    {
        root().write("/flash/local/cal_message", "");
        root().setFirmware("state=1");
        start();
        const auto pWarning = showFontWarning(*pWindow);
        const QList<QWidget *> atStart = visibleWindows();
        QCOMPARE(atStart.size(), 2);
        auto *pBox = qobject_cast<QDialog *>(atStart.constLast());
        QVERIFY(pBox && !pBox->isModal()); // the start goes on
        const auto *pBody = pBox->findChild<QMessageBox *>();
        QVERIFY(pBody->text().contains("Error Loading embedded Fonts"));
        QVERIFY(pBox->findChild<QLabel *>()->text().contains("Application"));
        QCOMPARE(pBody->button(QMessageBox::Ok)->text(), "OK (10)");
        QVERIFY(pBody->button(QMessageBox::Ok)->height() >= 30);
        tick();
        QTimer::singleShot(0, this, [&] {
            QDialog *pMessage = nullptr;
            QTRY_VERIFY((pMessage = qobject_cast<QDialog *>(QApplication::activeWindow()))
                        && pMessage->isModal());
            tick("state=2"); // comes up
            QCOMPARE(visibleWindows(), QList<QWidget *>({pWindow.get(), pBox, pMessage}));
            queueKey(Qt::Key_Return);
        });
        tick();
        QVERIFY(pBox->isVisible());
        QTRY_COMPARE(QApplication::activeWindow(), pBox);
        queueKey(Qt::Key_Return);
        QTRY_COMPARE(QApplication::activeWindow(), pWindow.get());
        QVERIFY(!pBox->isVisible());
    }

    // Also a warning of missing fonts leaves the screen to the visualisation.
    void runningWithWarning()
    {
        root().setFirmware("state=1");
        start();
        const auto pWarning = showFontWarning(*pWindow);
        QCOMPARE(visibleWindows().size(), 2);
        tick(); // opens the link
        tick();
        QCOMPARE(visibleWindows(), QList<QWidget *>());
    }

    // Back on the preview page no key starts the PLC, unless the button is seen to be marked.
    void focusOnTheWayBack_data()
    {
        using Step = std::function<void(MainWindowTest &)>;
        const auto run = [](const QByteArray &settings, int nToggles, int nButton) {
            return Step([=](MainWindowTest &test) {
                test.root().write("/etc/settings.ini", settings);
                test.root().writeCommand("/bin/syscfg", "exit 3");
                const BoxWatcher watcher;
                test.pWindow->configButtonPressed();
                test.tickWithWizard([&](QWizard &wizard) {
                    if (auto *pKeyboard = openKeyboard()) {
                        QMetaObject::invokeMethod(pKeyboard, "UpdateTimeout");
                        return;
                    }
                    if (wizard.currentId() == ProtectionPageId) {
                        return;
                    }
                    if (wizard.currentId() == NetModePageId && nToggles > 0) {
                        test.find<QPushButton>("NetOpModeSelectButton")->click();
                    }
                    const auto *pFinish = wizard.button(QWizard::FinishButton);
                    wizard
                        .button(pFinish->isVisible() ? QWizard::FinishButton
                                                     : QWizard::WizardButton(nButton))
                        ->click();
                });
            });
        };
        const int nNext = QWizard::NextButton;
        row("Cancel", run(StaticSettings, 0, QWizard::CancelButton));
        row("nothing changed", run(StaticSettings, 0, nNext));
        row("failed save", run(StaticSettings, 1, nNext));
        row("password timed out", run("[options]\nconfig_passwd=1\n" + StaticSettings, 0, nNext));
        row("box", Step([](MainWindowTest &) {
                const BoxWatcher watcher;
                VeltaInfoBox box("text", 0, nullptr, true, true);
            }));
        row("calibration page", Step([](MainWindowTest &) {
                CalibrationPage page;
                page.startAutoCalibration();
                QTRY_VERIFY(page.isActiveWindow());
            }));
        row("PLC ran", Step([](MainWindowTest &test) {
                for (const char *state : {"1", "2"}) {
                    test.root().setFirmware("state", QLatin1String(state));
                    test.tick();
                }
            }));
    }
    void focusOnTheWayBack()
    {
        FETCH(std::function<void(MainWindowTest &)>, away);
        startLinked(2);
        QTRY_VERIFY(pWindow->isActiveWindow());
        auto *pStart = find<QPushButton>("pushButtonStartApp");
        auto *pConfig = find<QPushButton>("pushButtonConfig");
        QSignalSpy starts(pStart, &QPushButton::clicked);
        const auto marked = [](const QWidget *pButton) {
            return pButton->findChild<QWidget *>("focusMark")->isVisible();
        };
        QVERIFY(pConfig->hasFocus() && !marked(pConfig));
        QTest::keyClick(pConfig, Qt::Key_Tab);
        QVERIFY(pStart->hasFocus() && marked(pStart));

        away(*this);
        QTest::qWait(20);
        QTRY_VERIFY(pWindow->isActiveWindow());
        QTRY_VERIFY(pConfig->hasFocus() && !marked(pConfig) && !marked(pStart));
        QTest::mousePress(pStart, Qt::LeftButton);
        QTest::mouseRelease(pStart, Qt::LeftButton, {}, {-5, -5}); // slid off
        pStart->setFocus();
        queueKey(Qt::Key_Space);
        deliverKeys();
        QCOMPARE(starts.size(), 0);
        QTest::keyClick(pStart, Qt::Key_Tab);
        QVERIFY(pConfig->hasFocus() && marked(pConfig));
        QTest::keyClick(pConfig, Qt::Key_Backtab);
        QVERIFY(marked(pStart));
        queueKey(Qt::Key_Space);
        deliverKeys();
        QCOMPARE(starts.size(), 1);
    }

    // Where the other button is hidden no key reaches the one that starts the PLC.
    void focusWithoutConfigButton()
    {
        setScreen({320, 480});
        qputenv("QT_QPA_PLATFORM", "offscreen:rotation=90");
        startLinked(2);
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QTRY_VERIFY(pWindow->isActiveWindow());
        auto *pStart = find<QPushButton>("pushButtonStartApp");
        QSignalSpy starts(pStart, &QPushButton::clicked);
        QVERIFY(!find<QPushButton>("pushButtonConfig")->isVisible() && pStart->isVisible());
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Tab, Qt::Key_Space, Qt::Key_Select}) {
            QVERIFY(!pStart->hasFocus());
            queueKey(key);
            deliverKeys();
        }
        QCOMPARE(starts.size(), 0);
    }

    void keyboards()
    {
        start();
        QVERIFY(!pServer->hasKeyboard());
        const KeyboardFifo keyboard(root(), "keyboard0");
        pWindow->inputEventDirChanged(root().path("/dev/input"));
        QVERIFY(pServer->hasKeyboard());
    }

    void screenshot()
    {
        root().write("/tmp/screenshot.png.panel-a1b2c3", "cut off"); // by a kill
        startLinked(2);
        QWidget above(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        above.setStyleSheet("background-color: rgb(255,0,0)");
        above.setGeometry(0, 0, 100, 100);
        above.show();
        QVERIFY(QTest::qWaitForWindowExposed(&above));
        pWindow->screenshotTimerEvent(); // nobody asked
        QVERIFY(!root().exists("/tmp/screenshot.png"));
        root().write("/tmp/makeScreenshot", "");
        pWindow->screenshotTimerEvent();
        QCOMPARE(QDir(root().path("/tmp")).entryList(QDir::Files), QStringList("screenshot.png"));
        const QImage picture(root().path("/tmp/screenshot.png"));
        QCOMPARE(picture.size(), QSize(800, 480));
        QCOMPARE(picture.pixelColor(50, 50), QColor(Qt::red));
    }

    // Whatever somebody has put where a request is expected, one look at it is enough.
    void plantedRequests_data()
    {
        for (const QString path : {"/tmp/.system/TouchCalibration", "/tmp/screenshot.png",
                                   "/tmp/makeScreenshot", "/flash/local/cal_message"}) {
            row(path.toLatin1() + ", link", path, "link");
            row(path.toLatin1() + ", FIFO", path, "fifo");
        }
    }
    void plantedRequests()
    {
        FETCH(QString, path, QByteArray, kind);
        root().write("/dev/input/touchscreen", "");
        root().write("/tmp/target", "important");
        root().plant(path, kind);
        expectWarning("is no file");
        if (path.endsWith("png")) {
            root().write("/tmp/makeScreenshot", "");
        }
        startLinked(2);
        pWindow->screenshotTimerEvent();
        pWindow->screenshotTimerEvent();
        QVERIFY(!calibrationPage() && !QApplication::activeModalWidget());
        QCOMPARE(root().read("/tmp/target"), "important");
        const QFileInfo picture(root().path("/tmp/screenshot.png"));
        QCOMPARE(picture.exists(), path.endsWith("png"));
        QCOMPARE(QFileInfo(root().path(path)).isFile(), path.endsWith("png"));
        if (picture.exists()) {
            QCOMPARE(picture.permissions() & 0xfff, QFile::Permissions(0x644));
        }
    }
};

PANEL_TEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
