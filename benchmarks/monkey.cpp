// A monkey at the panel: seeded random touches and keys on every page of the program, 1,000 on
// each. The events take the way of a real touchscreen and keypad, through the window system's
// queue, so that whatever they open runs inside the program's own event loops. What would leave
// the program (syscfg, reboot, mount) is a harmless script of a temporary device root.
//
// monkey SEED [PAGE]: one run, 0 when the program still answered after each page.

#include "app/keyrepeatfilter.h"
#include "app/mainwindow.h"
#include "calibration/calibrationpage.h"
#include "infobox/veltainfobox.h"
#include "input/veltainputpanel.h"
#include "input/veltainputpanelcontext.h"
#include "platform/requestfiles.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "settings/errorcatalogue.h"
#include "tests/support/deviceroot.h"
#include "tests/support/openkeyboard.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"
#include "wizard/veltawizard.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <QWindow>
#include <qpa/qwindowsysteminterface.h>

#include <cstdio>
#include <random>

namespace {

constexpr int EventsPerPage = 1000;
constexpr int TickEvery = 25; // events; the program's own timer has its half second besides
constexpr int KeysUntilClosed = 5000; // steps that bring the program back to its first page
constexpr std::chrono::milliseconds PageLimit(300000);

/// Where the monkey is put again whenever it has got away.
struct Place
{
    const char *name;
    int nWizardPage; ///< NoWizard: not in the wizard
    const char *button; ///< that opens a keyboard on the wizard's page
    const char *pad; ///< mode of a keyboard on its own
};
constexpr int NoWizard = -1;
constexpr Place Places[] = {
    {"start", NoWizard, nullptr, nullptr},
    {"preview", NoWizard, nullptr, nullptr},
    {"password", ProtectionPageId, nullptr, nullptr},
    {"mode", NetModePageId, nullptr, nullptr},
    {"addresses", IpPageId, nullptr, nullptr},
    {"address-keyboard", IpPageId, "SecondIPButton", nullptr},
    {"servers", DnsPageId, nullptr, nullptr},
    {"server-keyboard", DnsPageId, "dns2_ip_Button", nullptr},
    {"summary", SummaryPageId, nullptr, nullptr},
    {"restart", NoWizard, nullptr, nullptr},
    {"pad-num", NoWizard, nullptr, "NumInput"},
    {"pad-hex", NoWizard, nullptr, "HexInput"},
    {"pad-alpha", NoWizard, nullptr, "AlphaNumInput"},
    {"pad-password", NoWizard, nullptr, "AlphaNumInputPW"},
    {"box", NoWizard, nullptr, nullptr},
    {"calibration", NoWizard, nullptr, nullptr},
};

constexpr int Keys[] = {
    Qt::Key_0,       Qt::Key_1,         Qt::Key_2,      Qt::Key_3,      Qt::Key_4,
    Qt::Key_5,       Qt::Key_6,         Qt::Key_7,      Qt::Key_8,      Qt::Key_9,
    Qt::Key_Period,  Qt::Key_Space,     Qt::Key_Return, Qt::Key_Return, Qt::Key_Enter,
    Qt::Key_Escape,  Qt::Key_Backspace, Qt::Key_R,      Qt::Key_S,      Qt::Key_T,
    Qt::Key_Left,    Qt::Key_Right,     Qt::Key_Up,     Qt::Key_Down,   Qt::Key_Tab,
    Qt::Key_Backtab, Qt::Key_Delete,    Qt::Key_Home,   Qt::Key_End,    Qt::Key_F1,
    Qt::Key_Menu,
};

class Monkey : public QObject
{
public:
    Monkey(const Place &thePlace, quint32 nSeed, DeviceRoot *root)
        : place(thePlace), random(nSeed), pRoot(root)
    {
        connect(&timer, &QTimer::timeout, this, &Monkey::step);
    }

    /// Acts on the place, then looks whether the program still answers.
    void run()
    {
        elapsed.start();
        while (nEvents < EventsPerPage) {
            pWindow = std::make_unique<MainWindow>();
            bClosing = bRestarted = bTickPosted = false; // posted calls went with the window
            nClosingSteps = 0;
            if (!isAt("start")) {
                pWindow->controlVisibility(); // opens the link
                pWindow->controlVisibility();
            }
            if (isAt("restart")) {
                pWindow->setCurrentWidget(page("rebootPage"));
            }
            if (place.pad) {
                openPad();
            }
            timer.start();
            QApplication::exec();
            timer.stop();
            checkAnswers();
            pContext.reset();
            pPadWindow.reset();
            pWindow.reset();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
        }
    }

private:
    bool isAt(const char *name) const { return qstrcmp(place.name, name) == 0; }
    QWidget *page(const char *name) const
    {
        return pWindow->findChild<QWidget *>(QLatin1String(name));
    }
    VeltaWizard *wizard() const
    {
        auto *pWizard = pWindow->findChild<VeltaWizard *>();
        return pWizard && pWizard->isVisible() ? pWizard : nullptr;
    }
    int number(int nBelow) { return int(random() % quint32(qMax(1, nBelow))); }

    // Whatever may open something that waits for the operator runs from the event loop, not from
    // the monkey's own timer, which would rest until it is closed.
    template <typename Function>
    void post(Function function)
    {
        QMetaObject::invokeMethod(pWindow.get(), function, Qt::QueuedConnection);
    }

    void openPad()
    {
        pPadWindow = std::make_unique<QWidget>();
        auto *pLabel = new QLabel(QStringLiteral("Address: "), pPadWindow.get());
        auto *pTarget = new QLineEdit(pPadWindow.get());
        pTarget->setWhatsThis(QLatin1String(place.pad));
        pPadWindow->showFullScreen();
        const QSize screen = QGuiApplication::primaryScreen()->size();
        pContext = std::make_unique<VeltaInputPanelContext>(
            pTarget, pLabel, false, quint8(20), quint16(screen.width()), quint16(screen.height()));
    }

    void step()
    {
        if (elapsed.hasExpired(PageLimit.count())) {
            qFatal("page %s takes too long, event %d", place.name, nEvents);
        }
        if (bClosing) {
            closeOne();
            return;
        }
        if (nEvents >= EventsPerPage || bRestarted) {
            bClosing = true;
            releaseAll();
            return;
        }
        bringBack();
        act();
        ++nEvents;
    }

    void bringBack()
    {
        if (!pWindow->isVisible()) {
            stopPlc(); // it was started by the page's button
        }
        const bool bRestarting = pWindow->currentWidget() == page("rebootPage");
        if (bRestarting && !isAt("restart")) {
            // SAVE was hit: the panel would restart now. Some events more, and it does.
            bRestarted = number(40) == 0;
            return;
        }
        if (QApplication::activeModalWidget() && !wizard()) {
            return;
        }
        if (place.nWizardPage != NoWizard) {
            toWizardPage();
        } else if (place.pad) {
            if (!openKeyboard()) {
                post([this] { pContext->showPanel(); });
            }
        } else if (isAt("box") && nEvents % TickEvery == 0) {
            const quint8 nCountdown = number(2) ? 10 : 0;
            post([nCountdown] {
                if (!QApplication::activeModalWidget()) {
                    VeltaInfoBox box(ERR_IP_DATA_INVALID, QStringLiteral("netmask"), nCountdown,
                                     nullptr, true, true);
                }
            });
        } else if (isAt("calibration") && nEvents % TickEvery == 0) {
            pRoot->write(CalibrationRequestFile, "");
            tick();
        } else if (nEvents % TickEvery == 0) {
            if (number(10) == 0) {
                pRoot->write(ScreenshotRequestFile, "");
                post([this] { pWindow->screenshotTimerEvent(); });
            }
            if (!isAt("restart")) {
                tick();
            }
        }
    }

    void stopPlc() { pRoot->setFirmware(QStringLiteral("state"), QStringLiteral("2")); }

    void tick()
    {
        if (!wizard() && !bTickPosted) { // ticks rest around the wizard
            bTickPosted = true;
            post([this] {
                bTickPosted = false;
                if (!wizard()) {
                    pWindow->controlVisibility();
                }
            });
        }
    }

    void toWizardPage()
    {
        VeltaWizard *pWizard = wizard();
        if (!pWizard) {
            pWindow->configButtonPressed();
            tick();
        } else if (pWizard->currentId() < place.nWizardPage && number(4) == 0) {
            if (pWizard->currentId() != ProtectionPageId) {
                post([pWizard = QPointer(pWizard)] {
                    if (pWizard && pWizard->currentId() != ProtectionPageId) {
                        pWizard->next();
                    }
                });
            }
        } else if (place.button && pWizard->currentId() == place.nWizardPage && !openKeyboard()) {
            auto *pButton = pWizard->findChild<QPushButton *>(QLatin1String(place.button));
            post([pButton = QPointer(pButton)] {
                if (pButton) {
                    pButton->click();
                }
            });
        }
    }

    // One random event

    void act()
    {
        if (bTouching) {
            if (number(3) == 0) {
                position = randomPosition();
                touch(QEvent::MouseMove);
            } else {
                bTouching = false;
                touch(QEvent::MouseButtonRelease);
            }
        } else if (nHeldKey) {
            if (number(2) == 0) {
                key(QEvent::KeyRelease, true);
                key(QEvent::KeyPress, true);
            } else {
                key(QEvent::KeyRelease, false);
                nHeldKey = 0;
            }
        } else if (number(3) > 0) {
            bTouching = true;
            position = randomPosition();
            touch(QEvent::MouseButtonPress);
        } else {
            const int nChoice = number(int(std::size(Keys)) + 6);
            nHeldKey = nChoice < int(std::size(Keys)) ? Keys[nChoice] : Qt::Key_A + number(26);
            key(QEvent::KeyPress, false);
        }
    }

    void releaseAll()
    {
        if (bTouching) {
            bTouching = false;
            touch(QEvent::MouseButtonRelease);
        }
        if (nHeldKey) {
            key(QEvent::KeyRelease, false);
            nHeldKey = 0;
        }
    }

    /// Anywhere, or on a button: a screen is mostly background.
    QPoint randomPosition()
    {
        const QSize screen = QGuiApplication::primaryScreen()->size();
        const QPoint anywhere(number(screen.width()), number(screen.height()));
        const QWidgetList windows = visibleWindows();
        if (number(3) == 0 || windows.isEmpty()) {
            return anywhere;
        }
        QList<QAbstractButton *> buttons = windows.constLast()->findChildren<QAbstractButton *>();
        buttons.removeIf([](const QAbstractButton *pButton) { return !pButton->isVisible(); });
        if (buttons.isEmpty()) {
            return anywhere;
        }
        const QAbstractButton *pButton = buttons.at(number(int(buttons.size())));
        return pButton->mapToGlobal(QPoint(number(pButton->width()), number(pButton->height())));
    }

    void touch(QEvent::Type type)
    {
        QWindow *pTouched = nullptr;
        const QWidgetList windows = visibleWindows();
        for (const QWidget *pCandidate : windows) {
            if (pCandidate->windowHandle() && pCandidate->geometry().contains(position)) {
                pTouched = pCandidate->windowHandle(); // the last one is the topmost
            }
        }
        if (pTouched) {
            QWindowSystemInterface::handleMouseEvent(
                pTouched, pTouched->mapFromGlobal(position), position,
                bTouching ? Qt::LeftButton : Qt::NoButton,
                type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, type);
        }
    }

    void key(QEvent::Type type, bool bRepeated) const
    {
        const bool bText = nHeldKey < 0x80;
        QWindowSystemInterface::handleKeyEvent(
            nullptr, type, nHeldKey, Qt::NoModifier,
            bText ? QString(QChar(nHeldKey)).toLower() : QString(), bRepeated);
    }

    // Back to the first page, as an operator who gives up

    void closeOne()
    {
        if (++nClosingSteps > KeysUntilClosed) {
            const QWidget *pModal = QApplication::activeModalWidget();
            qFatal("page %s cannot be left: modal is %s, tick posted %d, wizard %d, Cancel enabled "
                   "%d, "
                   "loop level %d",
                   place.name, pModal ? pModal->metaObject()->className() : "nothing",
                   int(bTickPosted), wizard() ? wizard()->currentId() : NoWizard,
                   int(wizard() && wizard()->button(QWizard::CancelButton)->isEnabled()),
                   QThread::currentThread()->loopLevel());
        }
        QWidget *pModal = QApplication::activeModalWidget();
        auto *pBox = qobject_cast<QMessageBox *>(pModal);
        if (pModal && !pBox) {
            pBox = pModal->findChild<QMessageBox *>();
        }
        if (pBox && pBox->isVisible() && !pBox->buttons().isEmpty()) {
            post([pButton = QPointer(pBox->buttons().constFirst())] {
                if (pButton) {
                    pButton->click();
                }
            });
        } else if (VeltaInputPanel *pKeyboard = openKeyboard()) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QCoreApplication::sendEvent(pKeyboard, &press);
            if (openKeyboard()) {
                pKeyboard->window()->hide();
            }
        } else if (VeltaWizard *pWizard = wizard()) {
            pWizard->RestoreButtons();
            // A summary without changes can only be saved or left backwards.
            QAbstractButton *pCancel = pWizard->button(QWizard::CancelButton);
            (pCancel->isEnabled() ? pCancel : pWizard->button(QWizard::BackButton))->click();
        } else if (!pModal && !bTickPosted && nClosingSteps > 3) {
            QApplication::quit();
        }
    }

    /// With nothing open, one tick more must show the page that belongs to the PLC's state.
    void checkAnswers()
    {
        if (QApplication::activeModalWidget() || wizard()) {
            qFatal("page %s: something is still open", place.name);
        }
        if (bRestarted || isAt("start")) {
            return; // about to restart; or no runtime, no page
        }
        pRoot->remove(CalibrationRequestFile);
        // A lost link forgets that the wizard was asked for, which would wait for an operator here.
        pRoot->breakFirmware();
        pWindow->controlVisibility();
        pRoot->setFirmware(QStringLiteral("link"), QStringLiteral("yes"));
        stopPlc();
        pWindow->setCurrentWidget(page("startupPage"));
        pWindow->controlVisibility();
        pWindow->controlVisibility();
        if (pWindow->currentWidget() != page("previewPage") || !pWindow->isVisible()) {
            qFatal("page %s: the tick does not show the preview page", place.name);
        }
    }

    const Place &place;
    std::mt19937 random;
    DeviceRoot *pRoot;
    QTimer timer;
    QElapsedTimer elapsed;
    std::unique_ptr<MainWindow> pWindow;
    std::unique_ptr<QWidget> pPadWindow;
    std::unique_ptr<VeltaInputPanelContext> pContext;
    QPoint position;
    int nEvents = 0;
    int nHeldKey = 0; ///< Qt::Key, 0: none
    int nClosingSteps = 0;
    bool bTouching = false;
    bool bTickPosted = false;
    bool bRestarted = false; ///< the wizard has saved: the panel starts again
    bool bClosing = false;
};

void runPlace(const Place &place, quint32 nSeed)
{
    std::mt19937 random(nSeed);
    const QList<QSize> &sizes = panelScreenSizes();
    const QSize screen = sizes.at(qsizetype(random() % quint32(sizes.size())));
    fprintf(stderr, "monkey: %s on %dx%d\n", place.name, screen.width(), screen.height());
    setScreen(screen);
    DeviceRoot root;
    const bool bPassword = place.nWizardPage == ProtectionPageId;
    root.write(QStringLiteral("/etc/settings.ini"),
               QByteArray(bPassword ? "[options]\nconfig_passwd=1\n" : "")
                   + "[network]\neth0.mode=static\neth0.ip=192.168.0.10\n"
                     "eth0.netmask=255.255.255.0\ndefault_gateway=192.168.0.1\n"
                     "dnsserver1=192.168.0.2\ndnsserver2=0.0.0.0\n");
    root.writeCommand(QStringLiteral("/bin/syscfg"),
                      random() % 4 ? QByteArray("exit 0") : QByteArray("exit 1"));
    root.writeCommand(QStringLiteral("/sbin/reboot"), "exit 0");
    root.writeCommand(QStringLiteral("/bin/mount"), "exit 0");
    root.setFirmware(QStringLiteral("state"), QStringLiteral("2"));
    root.setFirmware(QStringLiteral("eth0.mode"), QStringLiteral("dhcp"));
    root.setFirmware(QStringLiteral("eth0.ip"), QStringLiteral("192.168.0.20"));
    if (qstrcmp(place.name, "start") == 0) {
        root.setFirmware(QStringLiteral("link"), QStringLiteral("no"));
    } else if (qstrcmp(place.name, "calibration") == 0) {
        root.write(QStringLiteral("/dev/input/touchscreen"), ""); // a file, but no device
    }
    const WindowServer server;
    Monkey(place, nSeed, &root).run();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: monkey SEED [PAGE]\n");
        return 2;
    }
    const auto nSeed = quint32(strtoul(argv[1], nullptr, 10));
    const QByteArray only = argc > 2 ? argv[2] : "";
    return runPanelTest(argc, argv, "monkey", [nSeed, only](int, char **) {
        KeyRepeatFilter filter;
        qApp->installEventFilter(&filter);
        for (const Place &place : Places) {
            if (only.isEmpty() || only == place.name) {
                runPlace(place, nSeed);
            }
        }
        return 0;
    });
}
