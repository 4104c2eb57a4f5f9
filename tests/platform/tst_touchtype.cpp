#include "platform/firmwaretext.h"
#include "platform/touchtype.h"
#include "tests/support/devicetest.h"

#include <array>

namespace {
const QString Device = "/dev/input/touchscreen";
const QString Property = "/proc/device-tree/qrd-specific/qrd_touch_type";
} // namespace

class TestTouchType : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void property_data()
    {
        row("single", QByteArray("single\0", 7), false);
        row("multi", QByteArray("multi\0", 6), true);
        row("capital", "Multi\n", true);
        row("inside, without NUL", "capMULTItouch", true);
        row("blanks in front", " \t multi-touch", true);
        row("second word", "single multi", false);
        row("second string", QByteArray("single\0multi\0", 13), false);
        row("empty", QByteArray(), false);
        row("blanks only", " \n", false);
        row("1 MB", QByteArray(1 << 20, 'x') + "multi", false);
        row("binary", "\xff\xfe\x80", false);
    }
    void property()
    {
        FETCH(QByteArray, content, bool, multi);
        root().write(Device, {});
        root().write(Property, content);
        QCOMPARE(readTouchType(), multi ? TouchType::Multi : TouchType::Single);
    }

    void withoutDeviceOrProperty()
    {
        root().write(Property, "multi");
        QCOMPARE(readTouchType(), TouchType::None);
        root().write(Device, {});
        root().remove(Property);
        QCOMPARE(readTouchType(), TouchType::Single);
        root().write(Property + "/is-a-folder", {});
        QCOMPARE(readTouchType(), TouchType::Single);
        root().plant(Property, "fifo");
        QCOMPARE(readTouchType(), TouchType::Single);
    }

    void deviceOfTheEnvironment()
    {
        root().write("/tmp/touch", {});
        qputenv("TSLIB_TSDEVICE", QFile::encodeName(root().path("/tmp/touch")));
        QCOMPARE(readTouchType(), TouchType::Single);
        qputenv("TSLIB_TSDEVICE", "/nonexistent/touchscreen");
        root().write(Device, {});
        QCOMPARE(readTouchType(), TouchType::None);
        qunsetenv("TSLIB_TSDEVICE");
    }

    void textEndsInsideItsBuffer()
    {
        const std::array<char, 8> memory{'1', '9', '2', '\0', 'x', 'y', 'z', 'z'};
        QCOMPARE(firmwareText(memory), "192");
        QCOMPARE(firmwareText(std::span(memory).first(2)), "19");
        QCOMPARE(firmwareText(std::span(memory).last(4)), "xyzz");
        QCOMPARE(firmwareText({}), QString());
    }
};

PANEL_TEST_MAIN(TestTouchType)
#include "tst_touchtype.moc"
