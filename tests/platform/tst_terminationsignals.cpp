#include "platform/terminationsignals.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <QDialog>
#include <QTimer>

#include <csignal>
#include <functional>

class TestTerminationSignals : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void signalEndsTheEventLoop_data()
    {
        // Modal dialogs, each opened from within the one before.
        columns<int, int, bool>("number", "dialogs", "beforeMainLoop");
        row("SIGTERM", SIGTERM, 0, false);
        row("SIGINT, box over the wizard", SIGINT, 2, false);
        row("SIGTERM, box before the main loop", SIGTERM, 1, true);
    }
    void signalEndsTheEventLoop()
    {
        QFETCH(int, number);
        QFETCH(int, dialogs);
        QFETCH(bool, beforeMainLoop);
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

    void ignoredSignalStaysIgnored()
    {
        const auto before = std::signal(SIGHUP, SIG_IGN);
        {
            const TerminationSignals terminationSignals;
            std::raise(SIGHUP);
            QCoreApplication::processEvents();
            QVERIFY(std::signal(SIGHUP, SIG_IGN) == SIG_IGN);
        }
        std::signal(SIGHUP, before);
    }
};

PANEL_TEST_MAIN(TestTerminationSignals)
#include "tst_terminationsignals.moc"
