#include "app/keyboardwatcher.h"
#include "platform/tapguard.h"
#include "platform/windowserver.h"
#include "tests/support/devicetest.h"
#include "tests/support/ioctlhook.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <linux/input.h>
#include <pty.h>
#include <termios.h>

namespace {

constexpr QSize Screen(800, 480);

// Read in the driver's thread, too.
std::atomic<bool> bGrabbedElsewhere = false;

/// Answers for a multi-touch screen as large as the picture.
int answer(unsigned long request, void *pArgument)
{
    const unsigned long number = _IOC_NR(request);
    if (request == EVIOCGRAB && bGrabbedElsewhere && pArgument) {
        errno = EBUSY;
        return -1;
    }
    if (_IOC_DIR(request) != _IOC_READ) {
        return 0;
    }
    memset(pArgument, 0, _IOC_SIZE(request));
    if (number == _IOC_NR(EVIOCGBIT(0, 0)) || number == _IOC_NR(EVIOCGBIT(EV_ABS, 0))) {
        auto *pBits = static_cast<uchar *>(pArgument);
        const QList<int> bits = number == _IOC_NR(EVIOCGBIT(0, 0))
            ? QList<int>{EV_SYN, EV_ABS}
            : QList<int>{ABS_MT_SLOT, ABS_MT_POSITION_X, ABS_MT_POSITION_Y, ABS_MT_TRACKING_ID};
        for (const int bit : bits) {
            pBits[bit / 8] |= static_cast<uchar>(1 << bit % 8);
        }
    }
    if (number >= _IOC_NR(EVIOCGABS(0)) && number <= _IOC_NR(EVIOCGABS(ABS_MAX))) {
        const unsigned long axis = number - _IOC_NR(EVIOCGABS(0));
        auto *pInfo = static_cast<input_absinfo *>(pArgument);
        pInfo->maximum = axis == ABS_MT_POSITION_X ? Screen.width() - 1
            : axis == ABS_MT_POSITION_Y            ? Screen.height() - 1
                                                   : 9;
    }
    return 0;
}

/// A terminal that passes for the event device of a multi-touch screen.
class EventDevice
{
public:
    explicit EventDevice(const QString &link)
    {
        char name[64];
        if (openpty(&nMaster, &nSlave, name, nullptr, nullptr) != 0) {
            qFatal("no terminal");
        }
        termios mode{};
        tcgetattr(nSlave, &mode);
        cfmakeraw(&mode);
        tcsetattr(nSlave, TCSANOW, &mode);
        const QString beside = link + ".new";
        QFile::link(QString::fromLocal8Bit(name), beside);
        std::rename(qPrintable(beside), qPrintable(link));
    }
    ~EventDevice()
    {
        close(nMaster);
        close(nSlave);
    }
    EventDevice(const EventDevice &) = delete;
    EventDevice &operator=(const EventDevice &) = delete;

    void press(QPoint at) const
    {
        send({{ABS_MT_SLOT, 0},
              {ABS_MT_TRACKING_ID, 1},
              {ABS_MT_POSITION_X, at.x()},
              {ABS_MT_POSITION_Y, at.y()}});
    }
    void release() const { send({{ABS_MT_TRACKING_ID, -1}}); }
    /// How often this program has it open, this object aside.
    int readers() const
    {
        char name[64];
        if (ttyname_r(nSlave, name, sizeof name) != 0) {
            qFatal("no terminal");
        }
        int n = -1;
        const QDir descriptors("/proc/self/fd");
        for (const QFileInfo &entry : descriptors.entryInfoList(QDir::Files | QDir::System)) {
            n += entry.symLinkTarget() == QLatin1String(name) ? 1 : 0;
        }
        return n;
    }

private:
    void send(const QList<std::pair<int, int>> &axes) const
    {
        QByteArray bytes;
        for (const auto &[axis, value] : axes) {
            bytes += record(EV_ABS, axis, value);
        }
        bytes += record(EV_SYN, SYN_REPORT, 0);
        QCOMPARE(write(nMaster, bytes.constData(), std::size_t(bytes.size())), bytes.size());
    }
    static QByteArray record(int type, int code, int value)
    {
        input_event event{};
        event.type = quint16(type);
        event.code = quint16(code);
        event.value = value;
        return {reinterpret_cast<const char *>(&event), sizeof event};
    }

    int nMaster = -1;
    int nSlave = -1;
};

} // namespace

bool answerIoctl(int, unsigned long request, void *pArgument, int &result)
{
    const bool bAnswered = _IOC_TYPE(request) == 'E';
    result = bAnswered ? answer(request, pArgument) : 0;
    return bAnswered;
}

class TestMultiTouch : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void pluggedInAnew_data()
    {
        // a finger is on the screen that is unplugged
        row("nothing touched", false, false);
        row("finger on it", true, false);
        row("single touch is shut off", false, true);
    }
    void pluggedInAnew()
    {
        FETCH(bool, held, bool, suspended);
        const QString link = root().path("/dev/input/touchscreen");
        const EventDevice device(link);
        std::unique_ptr<EventDevice> next; // outlives the driver, too
        root().write("/proc/device-tree/qrd-specific/qrd_touch_type", "multi");
        QPushButton button;
        button.setGeometry(100, 100, 80, 40);
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QSignalSpy clicks(&button, &QPushButton::clicked);
        const QPoint onButton(140, 120);

        WindowServer server;
        QVERIFY(server.openPointer());
        QTRY_VERIFY(!QInputDevice::devices().isEmpty());
        device.press(onButton);
        QTRY_VERIFY(button.isDown());
        device.release();
        QTRY_COMPARE(clicks.size(), 1);
        if (held) {
            device.press(onButton);
            QTRY_VERIFY(button.isDown());
            QFile::remove(link);
            QTRY_VERIFY(!button.isDown());
        }

        if (suspended) {
            server.suspendPointer(); // until a calibration, which this screen never has
        }
        next = std::make_unique<EventDevice>(link);
        const auto tap = [&] {
            next->press(onButton);
            next->release();
            return clicks.size() > 1;
        };
        QTRY_VERIFY(tap());
    }

    void windowHidden()
    {
        const EventDevice device(root().path("/dev/input/touchscreen"));
        root().write("/proc/device-tree/qrd-specific/qrd_touch_type", "multi");
        QPushButton button;
        button.setGeometry(100, 100, 80, 40);
        button.show();
        QSignalSpy clicks(&button, &QPushButton::clicked);
        WindowServer server;
        QVERIFY(server.openPointer());
        QTRY_COMPARE(device.readers(), 1);
        QTest::qWait(int(TapGuard::Delay.count()) + 20);
        device.press({140, 120});
        QTRY_VERIFY(button.isDown());
        button.hide();
        QCOMPARE(device.readers(), 0);
        QTRY_VERIFY(!button.isDown());
        button.show();
        QTRY_COMPARE(device.readers(), 1);
        QTest::qWait(int(TapGuard::Delay.count()) + 20);
        device.release();
        device.press({140, 120});
        device.release();
        QTRY_COMPARE(clicks.size(), 1);
    }

    /// Another program has the keyboard for itself, and gives it back.
    void grabbedKeyboard()
    {
        const EventDevice device(root().path("/dev/input/keyboard0"));
        const WindowServer server;
        KeyboardWatcher watcher;
        bGrabbedElsewhere = true;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("has grabbed keyboard0"));
        watcher.start();
        watcher.rescan(root().path("/dev/input"));
        QVERIFY(!server.hasKeyboard());
        auto *pTimer = watcher.findChild<QTimer *>();
        QVERIFY(pTimer->isActive());
        pTimer->setInterval(1);
        bGrabbedElsewhere = false;
        QTRY_VERIFY(server.hasKeyboard());
        QVERIFY(!pTimer->isActive());
    }

private:
    void closeWindows() override { bGrabbedElsewhere = false; }
};

PANEL_TEST_MAIN(TestMultiTouch)
#include "tst_multitouch.moc"
