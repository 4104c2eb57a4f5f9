#include "platform/firmwaretext.h"
#include "platform/touchtype.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <array>

namespace {
const QString Device = QStringLiteral("/dev/input/touchscreen");
const QString Property = QStringLiteral("/proc/device-tree/qrd-specific/qrd_touch_type");
} // namespace

class TestTouchType : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void property_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("multi");

        QTest::newRow("single") << QByteArray("single\0", 7) << false;
        QTest::newRow("multi") << QByteArray("multi\0", 6) << true;
        QTest::newRow("capital") << QByteArray("Multi\n") << true;
        QTest::newRow("inside, without NUL") << QByteArray("capMULTItouch") << true;
        QTest::newRow("blanks in front") << QByteArray(" \t multi-touch") << true;
        QTest::newRow("second word") << QByteArray("single multi") << false;
        QTest::newRow("second string") << QByteArray("single\0multi\0", 13) << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("blanks only") << QByteArray(" \n") << false;
        QTest::newRow("1 MB") << QByteArray(1 << 20, 'x') + "multi" << false;
        QTest::newRow("binary") << QByteArray("\xff\xfe\x80") << false;
    }
    void property()
    {
        QFETCH(QByteArray, content);
        root().write(Device, {});
        root().write(Property, content);
        QFETCH(bool, multi);
        QCOMPARE(readTouchType(), multi ? TouchType::Multi : TouchType::Single);
    }

    void withoutProperty()
    {
        root().write(Device, {});
        QCOMPARE(readTouchType(), TouchType::Single);
    }

    void unreadableProperty()
    {
        root().write(Device, {});
        root().write(Property + QStringLiteral("/is-a-folder"), {});
        QCOMPARE(readTouchType(), TouchType::Single);
    }

    void withoutDevice()
    {
        root().write(Property, "multi");
        QCOMPARE(readTouchType(), TouchType::None);
    }

    void textEndsInsideItsBuffer()
    {
        const std::array<char, 8> memory{'1', '9', '2', '\0', 'x', 'y', 'z', 'z'};
        QCOMPARE(firmwareText(memory), QStringLiteral("192"));
        QCOMPARE(firmwareText(std::span(memory).first(2)), QStringLiteral("19"));
        QCOMPARE(firmwareText(std::span(memory).last(4)), QStringLiteral("xyzz"));
        QCOMPARE(firmwareText({}), QString());
    }
};

PANEL_TEST_MAIN(TestTouchType)
#include "tst_touchtype.moc"
