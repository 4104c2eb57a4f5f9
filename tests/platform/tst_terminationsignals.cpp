#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/endinglimit.h"
#include "platform/terminationsignals.h"
#include "tests/support/devicetest.h"

#include <optional>

using namespace std::chrono_literals;

/// How commands end, and the program while one runs.
class TestTerminationSignals : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void results_data()
    {
        row("0", "exit 0", 0);
        row("255", "exit 255", 255);
        row("crash", "kill -ABRT $$", CommandCrashed);
        row("missing", QByteArray(), CommandNotStarted);
        row("arguments with blanks", "[ $# = 2 ] && [ \"$1\" = 'a b' ] && exit 7", 7);
    }
    void results()
    {
        FETCH(QByteArray, script, int, result);
        const QString command = "/bin/with blank/tool";
        if (!script.isEmpty()) {
            root().writeCommand(command, script);
        }
        const QStringList arguments{"a b", QString()};
        QCOMPARE(runCommand(devicePath(command), arguments, 30s), result);
    }

    // It ends together with what it has started, even when that does not care for signals.
    void limit()
    {
        root().writeCommand("/bin/tool", "sleep 600 & echo $! >\"$PANEL_ROOT/pid\"\nwait");
        expectWarning("does not end");
        QCOMPARE(runCommand(devicePath("/bin/tool"), {}, 500ms), CommandCrashed);
        const QByteArray pid = root().read("/pid").trimmed();
        QVERIFY(!pid.isEmpty());
        const QString status = QStringLiteral("/proc/%1/stat").arg(QString::fromLatin1(pid));
        const auto bGone = [&status] {
            QFile file(status);
            return !file.open(QIODevice::ReadOnly) || file.readAll().contains(") Z ");
        };
        QTRY_VERIFY(bGone());
    }

    // The program that waits ends, what it waits for does not.
    void outlivesTheWait()
    {
        root().writeCommand("/bin/tool",
                            "kill -TERM $PPID\nsleep 0.3\necho done >\"$PANEL_ROOT/end\"");
        const EndingLimit limit;
        {
            const TerminationSignals terminationSignals;
            expectWarning("left running");
            QCOMPARE(runCommand(devicePath("/bin/tool"), {}, 30s), CommandCrashed);
            QVERIFY(!root().exists("/end"));
        }
        QTRY_COMPARE(root().read("/end"), QByteArray("done\n"));
        root().writeCommand("/bin/tool", "exit 7"); // the end's own work is still done
        QCOMPARE(runCommand(devicePath("/bin/tool"), {}, 30s), 7);
    }

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
