// Memory of the program over many passes through the wizard. Each pass is an operator's: password,
// mode and back, an address and a name server edited on the on-screen keyboard, summary, Cancel.
//
// bench_memory [PASSES]: 200 unless told. Fails when the memory grows after the tenth pass.

#include "app/keyrepeatfilter.h"
#include "app/mainwindow.h"
#include "app/startup.h"
#include "input/veltainputpanel.h"
#include "platform/windowserver.h"
#include "tests/support/deviceroot.h"
#include "tests/support/testmain.h"
#include "wizard/veltawizard.h"

#include <QApplication>
#include <QPixmapCache>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <cstdio>
#include <malloc.h>
#include <set>

namespace {

constexpr int SettledAfter = 10; // passes
// What a list or a cache that happens to be longer at one look than at the other may take; a leak
// of 100 bytes a pass would be more.
constexpr qint64 LeastHeapGrowth = 16 * 1024;
// One page more or less in use per arena and stack is no leak, either.
constexpr qint64 LeastResidentGrowth = 256 * 1024;
constexpr std::chrono::milliseconds PassLimit(30000);

struct Memory
{
    qint64 nHeap; ///< bytes that malloc has given away
    qint64 nResident; ///< bytes, RSS
    qint64 nProportional; ///< bytes, PSS
};

Memory memoryNow()
{
    // The style draws for palettes that are each wizard's own: its pictures fill Qt's cache, which
    // takes 10 MB at most and empties itself only half a minute after a picture's last use.
    QPixmapCache::clear();
    const struct mallinfo2 info = mallinfo2();
    Memory memory{qint64(info.uordblks + info.hblkhd), 0, 0};
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(file.fileName()));
    }
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QByteArrayList words = line.simplified().split(' ');
        if (words.constFirst() == "Rss:") {
            memory.nResident = words.at(1).toLongLong() * 1024;
        } else if (words.constFirst() == "Pss:") {
            memory.nProportional = words.at(1).toLongLong() * 1024;
        }
    }
    return memory;
}

VeltaInputPanel *openKeyboard()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget *pWindow : windows) {
        auto *pPanel = pWindow->findChild<VeltaInputPanel *>();
        if (pPanel && pPanel->isVisible()) {
            return pPanel;
        }
    }
    return nullptr;
}

/// Who goes through the wizard: one touch each time that the program has nothing else to do.
class Operator : public QObject
{
public:
    explicit Operator(MainWindow *window) : pWindow(window)
    {
        connect(&timer, &QTimer::timeout, this, &Operator::act);
    }

    /// One pass. The pages seen have to be all that there are.
    void pass()
    {
        pages.clear();
        nKeyboards = nKeys = 0;
        bAddressDone = bServerDone = false;
        modeTouches = 0;
        started.start();
        timer.start();
        pWindow->configButtonPressed();
        pWindow->controlVisibility();
        timer.stop();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        if (pages.size() != WizardPageCount || nKeyboards != 3) {
            qFatal("%zu pages and %d keyboards in a pass", pages.size(), nKeyboards);
        }
    }

private:
    static void touch(QWidget *pWidget)
    {
        if (!pWidget || !pWidget->isVisible() || !pWidget->isEnabled()) {
            qFatal("nothing to touch: %s",
                   pWidget ? qPrintable(pWidget->objectName()) : "no such widget");
        }
        QTest::mouseClick(pWidget, Qt::LeftButton);
    }

    void act()
    {
        if (started.hasExpired(PassLimit.count())) {
            qFatal("a pass does not end");
        }
        if (VeltaInputPanel *pKeyboard = openKeyboard()) {
            typeInto(pKeyboard);
            return;
        }
        auto *pWizard = pWindow->findChild<VeltaWizard *>();
        if (!pWizard || !pWizard->isVisible()) {
            return;
        }
        const int nPage = pWizard->currentId();
        pages.insert(nPage);
        const auto button = [pWizard](const char *name) {
            return pWizard->findChild<QPushButton *>(QLatin1String(name));
        };
        switch (WizardPageIndex(nPage)) {
        case ProtectionPageId:
            return; // opens its keyboard itself
        case NetModePageId:
            if (modeTouches < 2) {
                ++modeTouches;
                touch(button("NetOpModeSelectButton"));
                return;
            }
            break;
        case IpPageId:
            if (!bAddressDone) {
                bAddressDone = true;
                touch(button("FirstIPButton"));
                return;
            }
            break;
        case DnsPageId:
            if (!bServerDone) {
                bServerDone = true;
                touch(button("dns1_ip_Button"));
                return;
            }
            break;
        case SummaryPageId:
            touch(pWizard->button(QWizard::CancelButton));
            return;
        }
        touch(pWizard->button(QWizard::NextButton));
    }

    /// The password, or another last digit of an address.
    void typeInto(VeltaInputPanel *pKeyboard)
    {
        const bool bPassword = pKeyboard->mode() == NumInputPW;
        const QStringList keys = bPassword ? QStringList{"1", "2", "3", "4", "ok"}
                                           : QStringList{"right", "backspace", "7", "ok"};
        const QString key = keys.at(nKeys);
        nKeys = (nKeys + 1) % int(keys.size());
        nKeyboards += nKeys == 0 ? 1 : 0;
        touch(pKeyboard->findChild<QPushButton *>(QLatin1String("panelButton_") + key));
    }

    MainWindow *pWindow;
    QTimer timer;
    QElapsedTimer started;
    std::set<int> pages;
    int nKeyboards = 0; ///< finished in this pass
    int nKeys = 0; ///< pressed on the keyboard that is open
    int modeTouches = 0;
    bool bAddressDone = false;
    bool bServerDone = false;
};

bool isGrown(const char *what, qint64 nBefore, qint64 nAfter, qint64 nAllowed)
{
    const bool bGrown = nAfter - nBefore > nAllowed;
    printf("%-8s %+8.1f kB since pass %d (at most %.0f kB): %s\n", what,
           double(nAfter - nBefore) / 1024, SettledAfter, double(nAllowed) / 1024,
           bGrown ? "GROWN" : "no growth");
    return bGrown;
}

int measure(int nPasses)
{
    setUpLook(*qApp);
    KeyRepeatFilter filter;
    qApp->installEventFilter(&filter);
    DeviceRoot root;
    root.write(QStringLiteral("/etc/settings.ini"),
               "[options]\nconfig_passwd=1234\n[network]\neth0.mode=static\neth0.ip=192.168.0.10\n"
               "eth0.netmask=255.255.255.0\ndefault_gateway=192.168.0.1\n"
               "dnsserver1=192.168.0.2\ndnsserver2=0.0.0.0\n");
    root.setFirmware(QStringLiteral("state"), QStringLiteral("2"));
    const WindowServer server;
    MainWindow window;
    window.controlVisibility(); // opens the link
    window.controlVisibility();
    Operator hand(&window);
    Memory settled{};
    Memory now{};
    printf("%6s %14s %14s %14s\n", "pass", "heap in use", "RSS", "PSS");
    for (int i = 1; i <= nPasses; ++i) {
        hand.pass();
        now = memoryNow();
        if (i == SettledAfter) {
            settled = now;
        }
        if (i == 1 || i == SettledAfter || i % 50 == 0 || i == nPasses) {
            printf("%6d %11.1f kB %11.1f kB %11.1f kB\n", i, double(now.nHeap) / 1024,
                   double(now.nResident) / 1024, double(now.nProportional) / 1024);
            fflush(stdout);
        }
    }
    const bool bHeap = isGrown("heap", settled.nHeap, now.nHeap, LeastHeapGrowth);
    const bool bRss = isGrown("RSS", settled.nResident, now.nResident, LeastResidentGrowth);
    return bHeap || bRss ? 1 : 0;
}

} // namespace

int main(int argc, char **argv)
{
    const int nPasses = argc > 1 ? atoi(argv[1]) : 200;
    if (nPasses <= SettledAfter) {
        qFatal("more than %d passes are needed", SettledAfter);
    }
    return runPanelTest(argc, argv, "bench_memory", [nPasses](int, char **) { //
        return measure(nPasses);
    });
}
