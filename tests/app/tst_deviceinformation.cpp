#include "app/deviceinformation.h"
#include "tests/support/devicetest.h"

class DeviceInformationTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void interfaces_data()
    {
        row("eth0 static", "eth0.mode=static eth0.ip=192.168.0.10 eth0.netmask=255.255.255.0",
            "0 static 192.168.0.10 255.255.255.0");
        row("eth0 dhcp", "eth0.mode=my-dhcp-client eth0.ip=10.0.0.20 eth0.netmask=255.255.0.0",
            "0 dhcp 10.0.0.20 255.255.0.0");
        row("both words", "eth0.mode=static-dhcp", "0 dhcp 0.0.0.0 0.0.0.0");
        row("case matters", "eth0.mode=DHCP", "none");
        row("mode fails", "eth0.mode=static result.sysdb_GetEth0Mode=-1", "none");
        row("eth1",
            "eth0.mode=off eth1.present=yes eth1.mode=static eth1.ip=10.0.0.1 "
            "eth1.netmask=255.0.0.0",
            "1 static 10.0.0.1 255.0.0.0");
        row("eth1 absent, eth2",
            "eth1.mode=static eth2.present=yes eth2.mode=dhcp eth2.ip=10.0.0.2 "
            "eth2.netmask=255.0.0.0",
            "2 dhcp 10.0.0.2 255.0.0.0");
        row("eth2 absent", "eth2.mode=dhcp", "none");
        row("word behind the buffer", "eth0.mode=" + QString(100, u'x') + "dhcp", "none");
        row("address without NUL", "eth0.mode=static eth0.ip=" + QString(90, u'1'),
            "0 static " + QString(20, u'1') + " 0.0.0.0");
    }
    void interfaces()
    {
        FETCH(QString, firmware, QString, expected);
        root().setFirmware(firmware);
        const auto shown = readInterfaceInformation();
        QCOMPARE(shown ? QStringLiteral("%1 %2 %3 %4")
                             .arg(shown->nInterface)
                             .arg(shown->bStatic ? QStringLiteral("static") : "dhcp", shown->sIp,
                                  shown->sNetmask)
                       : "none",
                 expected);
    }

    void macAddress_data()
    {
        row("none", QByteArray(), "00:00:00:00:00:00");
        row("unset", "00:00:00:00:00:00\n", "00:00:00:00:00:00");
        row("set", "00:00:5e:00:53:1f\n", "00:00:5E:00:53:1F");
    }
    void macAddress()
    {
        FETCH(QByteArray, file, QString, expected);
        root().setFirmware("eth0.mode=static");
        root().write("/sys/class/net/eth1/address", "02:00:00:00:00:01\n"); // another interface
        root().plant("/sys/class/net/eth0/address", file);
        QCOMPARE(readInterfaceInformation()->sMac, expected);
    }

    void versions_data()
    {
        row("empty", "", "|");
        row("FIFO", "fifo", "|");
        row("both", "[firmware]\nversion=3.1.2\n[codesys]\nversion=3.5\n", "3.1.2|3.5");
        row("binary", QByteArray("\0\xff\xfe[firmware\nversion", 20), "|");
    }
    void versions()
    {
        FETCH(QByteArray, file, QString, expected);
        root().plant("/etc/fwinfo.ini", file);
        if (expected == "|") {
            expectWarning("^/etc/fwinfo.ini (is|cannot) ");
        }
        for (int i = 0; i < 2; ++i) { // the second time without a word
            const FirmwareVersions versions = readFirmwareVersions();
            QCOMPARE(versions.sFirmware + '|' + versions.sRuntime, expected);
        }
        root().remove("/etc/fwinfo.ini");
        readFirmwareVersions(); // nothing is there, and nothing said
    }
};

PANEL_TEST_MAIN(DeviceInformationTest)
#include "tst_deviceinformation.moc"
