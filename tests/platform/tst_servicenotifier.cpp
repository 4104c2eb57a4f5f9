#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/firmware.h"
#include "platform/servicenotifier.h"
#include "tests/platform/notifysocket.h"
#include "tests/support/devicetest.h"

#include <QEventLoop>

using namespace std::chrono_literals;

namespace {

constexpr auto Limit = 400ms; // of the watchdog
constexpr auto Long = 2 * Limit; // as many messages as fit into the socket

void runLoop()
{
    QEventLoop loop;
    QTimer::singleShot(Long, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

class ServiceNotifierTest : public DeviceTest
{
    Q_OBJECT

private:
    QByteArray path() const { return QFile::encodeName(root().path("/tmp/notify")); }

private Q_SLOTS:
    void messages_data() { eitherWay("path", "name without a file"); }
    void messages()
    {
        FETCH(bool, abstract);
        const QByteArray name = abstract ? "@panel-test-" + QByteArray::number(getpid()) : path();
        NotifySocket manager(name);
        qputenv("NOTIFY_SOCKET", name);
        {
            ServiceNotifier notifier;
            ServiceNotifier::setStatus("PLC stopped:\n2 °C");
            notifier.ready();
            ServiceNotifier::setStatus("PLC stopped:\n2 °C");
            notifier.stopping();
        }
        ServiceNotifier::setStatus("nobody is told");
        ServiceNotifier::feedWatchdog();
        QCOMPARE(manager.texts(),
                 QByteArrayList({"STATUS=PLC stopped: 2 °C", "READY=1", "STOPPING=1"}));
    }

    void nobodyListens_data()
    {
        row("nobody", "/nowhere/notify");
        row("too long", "/" + QByteArray(200, 'x'));
        row("nobody reads", QByteArray());
    }
    void nobodyListens()
    {
        FETCH(QByteArray, name);
        const NotifySocket busy(path());
        qputenv("NOTIFY_SOCKET", name.isEmpty() ? path() : name);
        ServiceNotifier notifier;
        expectWarning("cannot be told");
        for (int i = 0; i < 10000; ++i) {
            ServiceNotifier::setStatus(QString::number(i));
        }
    }

    // Nobody but the program itself is told of the manager.
    void environment()
    {
        root().writeCommand("/bin/tool", "env >\"$PANEL_ROOT/env\"");
        for (const char *name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"}) {
            qputenv(name, "1");
        }
        const ServiceNotifier notifier;
        QCOMPARE(runCommand(devicePath("/bin/tool"), {}, 30s), 0);
        const QByteArray inherited = root().read("/env");
        QVERIFY(inherited.contains("PANEL_ROOT="));
        QVERIFY(!inherited.contains("NOTIFY_SOCKET") && !inherited.contains("WATCHDOG"));
    }

    void watchdog_data()
    {
        const QByteArray usec = QByteArray::number(std::chrono::microseconds(Limit).count());
        const QByteArray own = QByteArray::number(getpid());
        using Work = std::function<void()>;
        row("event loop", usec, own, Work(runLoop), true);
        row("for another process", usec, "1", Work(runLoop), false);
        row("no number", "soon", own, Work(runLoop), false);
        row("command, for whoever", usec, QByteArray(),
            Work([] { QCOMPARE(runCommand(devicePath("/bin/tool"), {}, 30s), 7); }), true);
        row("slow firmware calls", usec, own, Work([this] {
                root().setFirmware("delayMs", QString::number((Limit / 4).count()));
                for (int i = 0; i < 8; ++i) {
                    Firmware::interfaceAddress(0);
                }
            }),
            true);
        row("firmware call hangs", usec, own, Work([] { QVERIFY(!RuntimeLink::open().isOpen()); }),
            false);
    }
    void watchdog()
    {
        FETCH(QByteArray, usec, QByteArray, process, std::function<void()>, work, bool, fed);
        const double dSeconds = std::chrono::duration<double>(Long).count();
        root().writeCommand("/bin/tool", "sleep " + QByteArray::number(dSeconds) + "; exit 7");
        root().setFirmware("delayMs", QString::number(Long.count()));
        root().setFirmware("link", "no");
        NotifySocket manager(path());
        qputenv("NOTIFY_SOCKET", path());
        qputenv("WATCHDOG_USEC", usec);
        qputenv("WATCHDOG_PID", process);
        ServiceNotifier notifier;
        notifier.ready();
        work();
        notifier.stopping();
        const QList<NotifySocket::Message> &messages = manager.messages();
        QCOMPARE(messages.first().text, "READY=1");
        QCOMPARE(messages.last().text, "STOPPING=1");
        auto longest = 0ns;
        for (qsizetype i = 1; i < messages.size(); ++i) {
            longest = std::max(longest, messages[i].time - messages[i - 1].time);
        }
        QCOMPARE(longest < Limit, fed);
    }
};

PANEL_TEST_MAIN(ServiceNotifierTest)
#include "tst_servicenotifier.moc"
