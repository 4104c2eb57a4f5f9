// Memory of the program over many passes through the wizard. Each pass is an operator's: password,
// mode and back, an address and a name server edited on the on-screen keyboard, summary, Cancel.
//
// bench_memory [PASSES]: 200 unless told. Fails when the memory goes on growing after the tenth
// pass: what caches still gain by then is bounded, and in the last half of the passes it is
// nothing.

#include "app/keyrepeatfilter.h"
#include "app/mainwindow.h"
#include "input/veltainputpanel.h"
#include "platform/windowserver.h"
#include "tests/support/deviceroot.h"
#include "tests/support/openkeyboard.h"
#include "tests/support/testmain.h"
#include "wizard/veltawizard.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <malloc.h>
#include <set>

namespace {

constexpr int SettledAfter = 10; // passes
constexpr int LeastPasses = 100; // the caches have to be full halfway
// Until about pass 50 the caches of letters and of buttons meet what only some passes show, such as
// a button that is painted while it is pressed.
constexpr qint64 MostHeapForCaches = 128 * 1024;
constexpr qint64 MostResidentForCaches = 2 * 1024 * 1024;
// In the last half: a leak of 200 bytes a pass would be more, of 100 passes.
constexpr qint64 MostHeapNoise = 16 * 1024;
// One page more or less in use per arena and stack is no leak, either.
constexpr qint64 MostResidentNoise = 256 * 1024;
constexpr std::chrono::milliseconds PassLimit(30000);

struct Memory
{
    qint64 nHeap; ///< bytes that malloc has given away
    qint64 nResident; ///< bytes, RSS
    qint64 nProportional; ///< bytes, PSS
};

Memory memoryNow()
{
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
        const QString &key = keys.at(nKeys);
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

bool isGrown(const char *what, int nSince, qint64 nGrowth, qint64 nAllowed)
{
    const bool bGrown = nGrowth > nAllowed;
    printf("%-4s %+8.1f kB since pass %3d (at most %4.0f kB): %s\n", what, double(nGrowth) / 1024,
           nSince, double(nAllowed) / 1024, bGrown ? "GROWN" : "no growth");
    return bGrown;
}

bool reportGrowth(int nSince, const Memory &before, const Memory &now, qint64 nHeap,
                  qint64 nResident)
{
    const bool bHeap = isGrown("heap", nSince, now.nHeap - before.nHeap, nHeap);
    const bool bResident = isGrown("RSS", nSince, now.nResident - before.nResident, nResident);
    return bHeap || bResident;
}

int measure(int nPasses)
{
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
    Memory halfway{};
    Memory now{};
    printf("%6s %14s %14s %14s\n", "pass", "heap in use", "RSS", "PSS");
    for (int i = 1; i <= nPasses; ++i) {
        hand.pass();
        now = memoryNow();
        if (i == SettledAfter) {
            settled = now;
        }
        if (i == nPasses / 2) {
            halfway = now;
        }
        if (i == 1 || i == SettledAfter || i % 50 == 0 || i == nPasses) {
            printf("%6d %11.1f kB %11.1f kB %11.1f kB\n", i, double(now.nHeap) / 1024,
                   double(now.nResident) / 1024, double(now.nProportional) / 1024);
            fflush(stdout);
        }
    }
    const bool bEarly =
        reportGrowth(SettledAfter, settled, now, MostHeapForCaches, MostResidentForCaches);
    const bool bLate = reportGrowth(nPasses / 2, halfway, now, MostHeapNoise, MostResidentNoise);
    return bEarly || bLate ? 1 : 0;
}

} // namespace

int main(int argc, char **argv)
{
    const int nPasses = argc > 1 ? atoi(argv[1]) : 200;
    if (nPasses < LeastPasses) {
        qFatal("at least %d passes are needed", LeastPasses);
    }
    return runPanelTest(argc, argv, "bench_memory", [nPasses](int, char **) { //
        return measure(nPasses);
    });
}
