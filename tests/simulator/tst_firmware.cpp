#include "platform/libfirmware.h"
#include "tests/support/devicetest.h"

#include <array>
#include <cstring>

namespace {

constexpr char Untouched = '\x5a';
constexpr std::size_t NamesOffset = 88;
constexpr std::size_t NameSize = 440;

/// A receive buffer with a guard behind it.
template <std::size_t Size>
struct Buffer
{
    std::array<char, Size + 64> bytes;

    Buffer() { bytes.fill(Untouched); }
    char *data() { return bytes.data(); }
    QByteArray text() const { return {bytes.data(), qsizetype(qstrnlen(bytes.data(), Size))}; }
    bool isUntouched(std::size_t from = 0) const
    {
        return std::all_of(bytes.begin() + from, bytes.end(),
                           [](char c) { return c == Untouched; });
    }
    bool isGuardIntact() const { return isUntouched(Size); }
};

using Status = Buffer<RCTRL_STATUS_SIZE>;

} // namespace

class TestFirmware : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void status()
    {
        Status record;
        root().setFirmware("link=no");
        QCOMPARE(rctrl_init_communication(), -1);
        QVERIFY(rctrl_get_status(1, record.data()) != 0);
        QVERIFY(record.isUntouched());

        root().setFirmware("link=yes state=-7");
        root().setFirmware("app.1", "\\xff\\x41\\xe4 \\q");
        const int handle = rctrl_init_communication();
        QCOMPARE(handle, 1);
        QVERIFY(rctrl_get_status(0, record.data()) != 0);
        QCOMPARE(rctrl_get_status(handle, record.data()), 0);
        QCOMPARE(record.bytes[0], char(2));
        qint32 state = 0;
        std::memcpy(&state, record.data() + 4, sizeof state);
        QCOMPARE(state, -7);
        QCOMPARE(record.bytes[NamesOffset], '\0');
        QCOMPARE(QByteArray(record.data() + NamesOffset + NameSize), "\377A\344 \\q");
    }

    void statusNeverLeavesItsRecord()
    {
        for (int i = 0; i < 6; ++i) {
            root().setFirmware(QStringLiteral("app.%1").arg(i), QString(500, QLatin1Char('n')));
        }
        root().setFirmware("appCount", "255");
        Status record;
        QCOMPARE(rctrl_get_status(1, record.data()), 0);
        QCOMPARE(uchar(record.bytes[0]), uchar(255));
        QCOMPARE(QByteArray(record.data() + NamesOffset, 4 * NameSize),
                 QByteArray(4 * NameSize, 'n'));
        QVERIFY(record.isGuardIntact());
    }

    void start()
    {
        root().setFirmware("app.0=one=two state=2");
        QVERIFY(rctrl_start_all_applications(0) != 0);
        QCOMPARE(rctrl_start_all_applications(1), 0);
        Status record;
        QCOMPARE(rctrl_get_status(1, record.data()), 0);
        QCOMPARE(record.bytes[4], char(1));
        QCOMPARE(QByteArray(record.data() + NamesOffset), QByteArray("one=two"));
    }

    void texts_data()
    {
        row("no escape", "\\x", "\\x");
        row("fits with its NUL", QString(19, '1'), QString(19, '1'));
        row("fills the buffer", QString(20, '1'), QString(20, '1'));
        row("too long", QString(90, '1'), QString(20, '1'));
    }
    void texts()
    {
        FETCH(QString, value, QString, expected);
        Buffer<20> ip;
        QVERIFY(sysif_GetInterfaceIp(ip.data(), "eth2") != 0);
        QVERIFY(ip.isUntouched());
        root().setFirmware("eth2.ip", value);
        QCOMPARE(sysif_GetInterfaceIp(ip.data(), "eth2"), 0);
        QCOMPARE(QString(ip.text()), expected);
        QVERIFY(ip.isGuardIntact());

        Buffer<84> mode;
        root().setFirmware("eth1.mode", QString(85, 'm'));
        QCOMPARE(sysdb_GetEth1Mode(mode.data()), 0);
        QCOMPARE(mode.text(), QByteArray(84, 'm'));
        QVERIFY(mode.isGuardIntact());
    }

    void route()
    {
        Buffer<8> gateway;
        QCOMPARE(sysgw_GetDefaultGateway(gateway.data(), 8), 0);
        root().setFirmware("gateway=192.168.0.1");
        QCOMPARE(sysgw_GetDefaultGateway(gateway.data(), 8), 1);
        QCOMPARE(gateway.text(), QByteArray("192.168."));
        QVERIFY(gateway.isGuardIntact());
    }

    void brokenStateFailsEverything_data()
    {
        row("missing", true);
        row("garbage", false);
    }
    void brokenStateFailsEverything()
    {
        FETCH(bool, missing);
        root().breakFirmware();
        if (missing) {
            root().remove("/simulator/firmware.state");
        }
        Status buffer;
        QVERIFY(rctrl_init_communication() < 1);
        QVERIFY(rctrl_get_status(1, buffer.data()) != 0);
        QVERIFY(rctrl_start_all_applications(1) != 0);
        QVERIFY(sysif_GetInterfaceIp(buffer.data(), "eth0") != 0);
        QVERIFY(sysdb_GetEth0Mode(buffer.data()) != 0);
        QVERIFY(sysif_IsEth1Present() == 0 && sysif_IsEth2Present() == 0);
        QVERIFY(sysgw_GetDefaultGateway(buffer.data(), 64) < 0);
        const int nameServer = sysnm_GetDNS1(buffer.data());
        QVERIFY(nameServer != 0 && nameServer != -3);
        QVERIFY(buffer.isUntouched());
    }
};

PANEL_TEST_MAIN(TestFirmware)
#include "tst_firmware.moc"
