#include "platform/command.h"
#include "platform/devicepath.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

using namespace std::chrono_literals;

class CommandTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void results_data()
    {
        columns<QByteArray, int>("script", "result");
        row("0", QByteArray("exit 0"), 0);
        row("255", QByteArray("exit 255"), 255);
        row("crash", QByteArray("kill -ABRT $$"), CommandCrashed);
        row("missing", QByteArray(), CommandNotStarted);
        row("arguments with blanks", QByteArray("[ $# = 2 ] && [ \"$1\" = 'a b' ] && exit 7"), 7);
    }
    void results()
    {
        QFETCH(QByteArray, script);
        const QString command = "/bin/with blank/tool";
        if (!script.isEmpty()) {
            root().writeCommand(command, script);
        }
        const QStringList arguments{"a b", QString()};
        QTEST(runCommand(devicePath(command), arguments, 30s), "result");
    }

    // It ends together with what it has started, even when that does not care for signals.
    void limit()
    {
        root().writeCommand("/bin/tool", "sleep 600 & echo $! >\"$PANEL_ROOT/pid\"\nwait");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not end"));
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
};

PANEL_TEST_MAIN(CommandTest)
#include "tst_command.moc"
