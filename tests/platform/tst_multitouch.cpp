#include "app/keyboardwatcher.h"
#include "platform/windowserver.h"
#include "tests/platform/keyboardfifo.h"
#include "tests/support/devicetest.h"
#include "tests/support/ioctlhook.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <pty.h>
#include <termios.h>

namespace {

constexpr QSize Screen(800, 480);

// Read in the driver's thread, too.
std::atomic<bool> bGrabbedElsewhere = false;
std::atomic<bool> bGrabbed = false; // by whoever came last

/// Answers for a multi-touch screen as large as the picture.
int answer(unsigned long request, void *pArgument)
{
    const unsigned long number = _IOC_NR(request);
    if (request == EVIOCGRAB && bGrabbedElsewhere && pArgument) {
        errno = EBUSY;
        return -1;
    }
    if (request == EVIOCGRAB) {
        bGrabbed = pArgument != nullptr;
    }
    if (_IOC_DIR(request) != _IOC_READ) {
        return 0;
    }
    memset(pArgument, 0, _IOC_SIZE(request));
    const QList<int> bits = number == _IOC_NR(EVIOCGBIT(0, 0)) ? QList<int>{EV_SYN, EV_ABS}
        : number == _IOC_NR(EVIOCGBIT(EV_ABS, 0))
        ? QList<int>{ABS_MT_SLOT, ABS_MT_POSITION_X, ABS_MT_POSITION_Y, ABS_MT_TRACKING_ID}
        : QList<int>();
    for (const int bit : bits) {
        static_cast<uchar *>(pArgument)[bit / 8] |= static_cast<uchar>(1 << bit % 8);
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
        need(openpty(&nMaster, &nSlave, name, nullptr, nullptr) == 0, "a terminal");
        termios mode{};
        tcgetattr(nSlave, &mode);
        cfmakeraw(&mode);
        tcsetattr(nSlave, TCSANOW, &mode);
        sName = QString::fromLocal8Bit(name);
        const QString beside = link + ".new";
        QFile::link(sName, beside);
        std::rename(qPrintable(beside), qPrintable(link));
    }
    ~EventDevice()
    {
        close(nMaster);
        close(nSlave);
    }
    Q_DISABLE_COPY(EventDevice)

    void press(QPoint at) const
    {
        send({{ABS_MT_SLOT, 0},
              {ABS_MT_TRACKING_ID, 1},
              {ABS_MT_POSITION_X, at.x()},
              {ABS_MT_POSITION_Y, at.y()}});
    }
    void release() const { send({{ABS_MT_TRACKING_ID, -1}}); }
    /// How often this program has it open, this object aside.
    qsizetype readers() const { return openDescriptors('^' + sName + '$') - 1; }

private:
    void send(const QList<std::pair<int, int>> &axes) const
    {
        QByteArray bytes;
        for (const auto &[axis, value] : axes) {
            bytes += eventRecord(EV_ABS, axis, value);
        }
        bytes += eventRecord(EV_SYN, SYN_REPORT, 0);
        QCOMPARE(write(nMaster, bytes.constData(), std::size_t(bytes.size())), bytes.size());
    }

    int nMaster = -1;
    int nSlave = -1;
    QString sName;
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
    void init()
    {
        DeviceTest::init();
        link = root().path("/dev/input/touchscreen");
        root().write("/proc/device-tree/qrd-specific/qrd_touch_type", "multi");
        pButton = std::make_unique<QPushButton>();
        pButton->setGeometry(100, 100, 80, 40);
        pButton->show();
        QVERIFY(QTest::qWaitForWindowExposed(pButton.get()));
        pClicks = std::make_unique<QSignalSpy>(pButton.get(), &QPushButton::clicked);
    }

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
        const EventDevice device(link);
        std::unique_ptr<EventDevice> next; // outlives the driver, too
        WindowServer server;
        const QSignalSpy opened(&server, &WindowServer::touchscreenOpened);
        QVERIFY(server.openPointer());
        QCOMPARE(opened.size(), 1);
        QTRY_VERIFY(!QInputDevice::devices().isEmpty());
        device.press(OnButton);
        QTRY_VERIFY(pButton->isDown());
        device.release();
        QTRY_COMPARE(pClicks->size(), 1);
        if (held) {
            device.press(OnButton);
            QTRY_VERIFY(pButton->isDown());
            QFile::remove(link);
            QTRY_VERIFY(!pButton->isDown());
        }

        if (suspended) {
            server.suspendPointer(); // until a calibration, which this screen never has
        }
        next = std::make_unique<EventDevice>(link);
        const auto tap = [&] {
            next->press(OnButton);
            next->release();
            return pClicks->size() > 1;
        };
        QTRY_VERIFY(tap());
    }

    void windowHidden()
    {
        const EventDevice device(link);
        WindowServer server;
        QVERIFY(server.openPointer());
        QTRY_COMPARE(device.readers(), 1);
        waitOutDoubleTap();
        device.press(OnButton);
        QTRY_VERIFY(pButton->isDown());
        pButton->hide();
        QCOMPARE(device.readers(), 0);
        QTRY_VERIFY(!pButton->isDown());
        pButton->show();
        QTRY_COMPARE(device.readers(), 1);
        waitOutDoubleTap();
        device.release();
        device.press(OnButton);
        device.release();
        QTRY_COMPARE(pClicks->size(), 1);
    }

    /// Another program has the keyboard for itself, and gives it back.
    void grabbedKeyboard()
    {
        const EventDevice device(root().path("/dev/input/keyboard0"));
        const WindowServer server;
        KeyboardWatcher watcher;
        bGrabbedElsewhere = true;
        expectWarning("has grabbed keyboard0");
        watcher.start();
        watcher.rescan(root().path("/dev/input"));
        QVERIFY(!server.hasKeyboard());
        auto *pTimer = watcher.findChild<QTimer *>();
        QVERIFY(pTimer->isActive());
        pTimer->setInterval(1);
        bGrabbedElsewhere = false;
        QTRY_VERIFY(server.hasKeyboard());
        QVERIFY(bGrabbed);
        QVERIFY(!pTimer->isActive());
    }

private:
    static constexpr QPoint OnButton{140, 120};
    QString link; // to the device
    std::unique_ptr<QPushButton> pButton;
    std::unique_ptr<QSignalSpy> pClicks;

    void closeWindows() override
    {
        pClicks.reset();
        pButton.reset();
        bGrabbedElsewhere = false;
    }
};

PANEL_TEST_MAIN(TestMultiTouch)
#include "tst_multitouch.moc"
