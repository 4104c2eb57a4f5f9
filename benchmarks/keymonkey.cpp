// A monkey at the keyboard of a protected panel: seeded random keys, digits and the combinations
// that are known to open or end programs go as the kernel's records through a pipe into the
// program's own keyboard driver. Meanwhile the PLC starts, stops and loses its link, and now and
// then nobody types until whatever is open has closed itself.
//
// keymonkey SEED KEYS: one run of KEYS strokes, with digits where SEED is even. Prints a line of
// figures; the exit status is 1 when there was a fault (see LockWatch), when the program ended or
// when the keys no longer open anything. After a fault it goes on with a new panel.

#include "app/keyrepeatfilter.h"
#include "app/mainwindow.h"
#include "benchmarks/evdevkeyboard.h"
#include "benchmarks/lockwatch.h"
#include "benchmarks/strokechoice.h"
#include "platform/windowserver.h"
#include "tests/support/deviceroot.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <optional>
#include <random>

namespace {

using namespace std::chrono_literals;

constexpr int MostFaults = 50; // after which a run gives up
constexpr int TickEvery = 3; // bursts; the program's own timer has its half second besides
constexpr int WorldEvery = 100; // bursts
constexpr int WorldBursts = 6; // at most, until the PLC is stopped again
constexpr int RestEvery = 300; // bursts
constexpr int DeadAfter = 5000; // keys that open nothing
constexpr qsizetype StrokesToTell = 40;
constexpr auto ReadLimit = 10s; // until the program takes what was typed
constexpr auto RestLimit = 20s;
constexpr auto SlowStep = 1000ms; // of a count-down
constexpr auto HurriedStep = 5ms;

constexpr auto Stopped = "state=2 link=yes";
constexpr const char *Worlds[] = {"state=1", "state=0", "state=6", "link=no"};

/// One panel, from its start until its first fault.
struct Panel
{
    Panel()
    {
        root.write(QStringLiteral("/etc/settings.ini"),
                   "[options]\nconfig_passwd=83915027\n"
                   "[network]\neth0.mode=static\neth0.ip=192.168.0.10\n"
                   "eth0.netmask=255.255.255.0\ndefault_gateway=192.168.0.1\n");
        root.setFirmware(QStringLiteral("startedState=1 eth0.mode=static eth0.ip=192.168.0.10 "
                                        "app.0=Conveyor"));
        root.setFirmware(QLatin1String(Stopped));
        keyboard.emplace(root);
        pWindow = std::make_unique<MainWindow>();
        pWindow->controlVisibility(); // opens the link
        pWindow->controlVisibility();
        QCoreApplication::processEvents();
        watch.emplace(pWindow.get(), &root);
    }

    ~Panel()
    {
        watch.reset();
        pWindow.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    DeviceRoot root;
    const WindowServer server;
    std::optional<EvdevKeyboard> keyboard;
    std::unique_ptr<MainWindow> pWindow;
    std::optional<LockWatch> watch;
};

class KeyMonkey : public QObject
{
public:
    KeyMonkey(quint32 nSeed, int nKeysToType)
        : random(nSeed), choice(random, nSeed % 2 == 0), nWanted(nKeysToType)
    {
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        connect(&timer, &QTimer::timeout, this, &KeyMonkey::step);
        qApp->installEventFilter(this);
    }

    /// Types the keys; number of faults.
    int run()
    {
        while (nKeys < nWanted && nFaults < MostFaults) {
            startPanel();
            bFinished = false;
            timer.start(0);
            QApplication::exec();
            timer.stop();
            if (!bFinished) {
                report("the program ended");
            }
            const LockWatch::Counts &counts = pPanel->watch->counts();
            total.nOpenings += counts.nOpenings;
            total.nBoxes += counts.nBoxes;
            total.nStarts += counts.nStarts;
            pPanel.reset();
        }
        return nFaults;
    }

    QByteArray figures() const
    {
        return QByteArray::number(nKeys) + " keys, " + QByteArray::number(total.nOpenings)
            + " openings, " + QByteArray::number(total.nBoxes) + " boxes, "
            + QByteArray::number(nRests) + " rests, " + QByteArray::number(total.nStarts)
            + " PLC starts, " + QByteArray::number(nFaults) + " faults";
    }

    /// While the monkey rests a second lasts a few milliseconds.
    bool eventFilter(QObject *pReceiver, QEvent *pEvent) override
    {
        if (bResting && pEvent->type() == QEvent::Timer) {
            auto *pTimer = qobject_cast<QTimer *>(pReceiver);
            if (pTimer && pTimer->intervalAsDuration() == SlowStep) {
                pTimer->setInterval(HurriedStep);
            }
        }
        return false;
    }

private:
    int number(int nBelow) { return int(random() % quint32(nBelow)); }

    void startPanel()
    {
        pPanel.emplace();
        nLastOpening = nKeys;
        nOpeningsSeen = nWorldBursts = 0;
        bResting = false;
        lastStrokes.clear();
        unreadSince = QDeadlineTimer(ReadLimit);
    }

    void report(const QByteArray &fault)
    {
        ++nFaults;
        fprintf(stderr, "after %d keys: %s\n    last strokes: %s\n", nKeys, fault.constData(),
                lastStrokes.join(' ').constData());
    }

    // Ends every event loop, also those of dialogs.
    void finish()
    {
        bFinished = true;
        QCoreApplication::exit();
    }

    void step()
    {
        // Then the keyboard is not the panel's: it reads none, and nobody types for it.
        const bool bHidden = !pPanel->pWindow->isVisible() && !QApplication::activeModalWidget();
        if (findFaults() || nKeys >= nWanted) {
            finish();
        } else if ((!bHidden && !pPanel->keyboard->isRead()) || isResting()) {
            timer.start(1);
        } else {
            unreadSince = QDeadlineTimer(ReadLimit);
            changeWorld();
            if (number(TickEvery) == 0) {
                tick();
            }
            if (!bHidden) {
                type();
            }
            timer.start(choice.pause());
        }
    }

    // Whether one of them leaves no panel to go on with.
    bool findFaults()
    {
        LockWatch &watch = *pPanel->watch;
        watch.look(nWorldBursts == 0);
        for (QByteArray fault; !(fault = watch.takeFault()).isEmpty();) {
            report(fault);
        }
        if (watch.counts().nOpenings != nOpeningsSeen) {
            nOpeningsSeen = watch.counts().nOpenings;
            nLastOpening = nKeys;
        }
        const bool bDead = nKeys - nLastOpening > DeadAfter;
        const bool bUnread = unreadSince.hasExpired() && !bResting;
        if (bDead || bUnread) {
            report(bDead ? "the keys no longer open the configuration"
                         : "the program does not read its keyboard");
        }
        return watch.isPassed() || bDead || bUnread;
    }

    // Nobody types until everything has closed itself.
    bool isResting()
    {
        const bool bOpen = QApplication::activeModalWidget();
        if (!bResting && bOpen && number(RestEvery) == 0) {
            bResting = true;
            ++nRests;
            restEnd = QDeadlineTimer(RestLimit);
        } else if (bResting && (!bOpen || restEnd.hasExpired())) {
            bResting = false;
        }
        return bResting;
    }

    void changeWorld()
    {
        if (pPanel->watch->takeStart()) {
            nWorldBursts = 1 + number(WorldBursts); // it runs
        } else if (nWorldBursts > 0) {
            if (--nWorldBursts == 0) {
                pPanel->root.setFirmware(QLatin1String(Stopped));
            }
        } else if (!QApplication::activeModalWidget() && number(WorldEvery) == 0) {
            nWorldBursts = 1 + number(WorldBursts);
            pPanel->root.setFirmware(QLatin1String(Worlds[number(int(std::size(Worlds)))]));
        }
    }

    void tick()
    {
        // Posted: it may open what waits for the operator. Ticks rest around the wizard.
        if (!QApplication::activeModalWidget()) {
            MainWindow *pWindow = pPanel->pWindow.get();
            QMetaObject::invokeMethod(
                pWindow,
                [pWindow] {
                    if (!QApplication::activeModalWidget()) {
                        pWindow->controlVisibility();
                    }
                },
                Qt::QueuedConnection);
        }
    }

    void type()
    {
        for (int i = choice.burst(); i > 0 && nKeys < nWanted; --i) {
            const Stroke stroke = choice.next();
            pPanel->keyboard->add(stroke.codes, stroke.nRepeats);
            lastStrokes.append(StrokeChoice::name(stroke));
            ++nKeys;
        }
        while (lastStrokes.size() > StrokesToTell) {
            lastStrokes.removeFirst();
        }
        pPanel->keyboard->send();
    }

    std::mt19937 random;
    StrokeChoice choice;
    const int nWanted;
    std::optional<Panel> pPanel;
    QTimer timer;
    QByteArrayList lastStrokes;
    QDeadlineTimer unreadSince;
    QDeadlineTimer restEnd;
    LockWatch::Counts total;
    int nKeys = 0;
    int nFaults = 0;
    int nRests = 0;
    int nOpeningsSeen = 0;
    int nLastOpening = 0; ///< key
    int nWorldBursts = 0; ///< until the PLC is stopped again; 0: it is
    bool bResting = false;
    bool bFinished = false;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: keymonkey SEED KEYS\n");
        return 2;
    }
    const auto nSeed = quint32(strtoul(argv[1], nullptr, 10));
    const int nKeys = atoi(argv[2]);
    return runPanelTest(argc, argv, "keymonkey", [nSeed, nKeys](int, char **) {
        KeyRepeatFilter filter;
        qApp->installEventFilter(&filter);
        const QList<QSize> &sizes = panelScreenSizes();
        const QSize screen = sizes.at(qsizetype(nSeed % quint32(sizes.size())));
        setScreen(screen);
        QElapsedTimer clock;
        clock.start();
        KeyMonkey monkey(nSeed, nKeys);
        const int nFaults = monkey.run();
        printf("seed %u, %dx%d: %s, %lld s\n", nSeed, screen.width(), screen.height(),
               monkey.figures().constData(), clock.elapsed() / 1000);
        return nFaults > 0 ? 1 : 0;
    });
}
