#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/endinglimit.h"
#include "platform/terminationsignals.h"
#include "tests/support/devicetest.h"

using namespace std::chrono_literals;

class CommandTest : public DeviceTest
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
};

PANEL_TEST_MAIN(CommandTest)
#include "tst_command.moc"
