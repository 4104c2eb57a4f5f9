#include "platform/terminationsignals.h"
#include "tests/support/devicetest.h"

#include <optional>

class TestTerminationSignals : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void signalEndsTheEventLoop_data()
    {
        // Modal dialogs, each opened from within the one before.
        row("SIGTERM", SIGTERM, 0, false);
        row("SIGINT, box over the wizard", SIGINT, 2, false);
        row("SIGTERM, box before the main loop", SIGTERM, 1, true);
    }
    void signalEndsTheEventLoop()
    {
        FETCH(int, number, int, dialogs, bool, beforeMainLoop);
        constexpr int Hung = 1;
        struct sigaction before = {};
        sigaction(number, nullptr, &before);

        int nEnded = 0;
        std::function<void(int)> open = [&](int nLeft) {
            if (nLeft == 0) {
                std::raise(number);
                std::raise(number); // impatience does no harm
                return;
            }
            QDialog dialog;
            QTimer::singleShot(0, &dialog, [&] { open(nLeft - 1); });
            dialog.exec();
            QDialog().exec(); // what a caller may say about it comes too late
            ++nEnded;
        };
        QTimer watchdog;
        connect(&watchdog, &QTimer::timeout, qApp, [] { QCoreApplication::exit(Hung); });
        watchdog.start(std::chrono::seconds(30));
        {
            const TerminationSignals terminationSignals;
            if (beforeMainLoop) {
                open(dialogs);
            } else {
                QTimer::singleShot(0, qApp, [&] { open(dialogs); });
            }
            QCOMPARE(QCoreApplication::exec(), 0);
            QCOMPARE(nEnded, dialogs);
        }
        struct sigaction after = {};
        sigaction(number, nullptr, &after);
        QVERIFY(after.sa_handler == before.sa_handler);
    }

    void inheritedIgnorance_data()
    {
        row("SIGHUP, nohup", SIGHUP, true);
        row("SIGINT, a shell's background", SIGINT, false);
        row("SIGTERM", SIGTERM, false);
    }
    void inheritedIgnorance()
    {
        FETCH(int, number, bool, stays);
        const auto before = std::signal(number, SIG_IGN);
        sigset_t mask;
        sigemptyset(&mask);
        sigaddset(&mask, number);
        for (const bool bEarly : {true, false}) {
            pthread_sigmask(SIG_BLOCK, &mask, nullptr);
            std::optional<TerminationSignals> terminationSignals;
            bEarly ? TerminationSignals::letThrough() : void(terminationSignals.emplace());
            sigset_t inForce;
            pthread_sigmask(SIG_BLOCK, nullptr, &inForce);
            QCOMPARE(sigismember(&inForce, number), 0);
            struct sigaction action = {};
            sigaction(number, nullptr, &action);
            QCOMPARE(action.sa_handler == SIG_IGN, stays);
        }
        std::signal(number, before);
    }
};

PANEL_TEST_MAIN(TestTerminationSignals)
#include "tst_terminationsignals.moc"
