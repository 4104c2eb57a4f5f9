#include "infobox/veltainfobox.h"
#include "platform/command.h"
#include "settings/errorcatalogue.h"
#include "settings/veltasettings.h"
#include "tests/support/boxwatcher.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

namespace {

const QByteArray StaticFile = "[network]\neth0.mode=static\neth0.ip=192.168.0.10\n"
                              "eth0.netmask=255.255.255.0\ndefault_gateway=192.168.0.1\n"
                              "dnsserver1=192.168.0.2\ndnsserver2=0.0.0.0\n";
const QByteArray DhcpFile = QByteArray(StaticFile).replace("static", "dhcp");

QByteArray without(QByteArray file, const QByteArray &key)
{
    const qsizetype begin = file.indexOf(key);
    return file.remove(begin, file.indexOf('\n', begin) - begin + 1);
}

using Edit = std::function<void(VeltaSettings &)>;

} // namespace
Q_DECLARE_METATYPE(Edit)

class VeltaSettingsTest : public DeviceTest
{
    Q_OBJECT

private:
    std::unique_ptr<VeltaSettings> load()
    {
        auto pSettings = std::make_unique<VeltaSettings>(QStringLiteral("/etc/settings.ini"),
                                                         QStringLiteral("/tmp/newsettings.ini"),
                                                         QSettings::IniFormat);
        pSettings->init();
        return pSettings;
    }

    QStringList newKeys()
    {
        QFile copy(root().path(QStringLiteral("/tmp/newsettings.ini")));
        QStringList lines = copy.open(QIODevice::ReadOnly)
            ? QString::fromUtf8(copy.readAll()).split(u'\n', Qt::SkipEmptyParts)
            : QStringList();
        lines.sort();
        return lines;
    }

private Q_SLOTS:
    void protection_data()
    {
        QTest::addColumn<QByteArray>("options");
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("isProtected");
        QTest::newRow("nothing") << QByteArray() << QString() << false;
        QTest::newRow("password") << QByteArray("config_passwd=1234") << "1234" << true;
        QTest::newRow("empty password, on")
            << QByteArray("config_passwd=\nconfig_protection_enabled=1") << QString() << false;
        QTest::newRow("off") << QByteArray("config_passwd=1234\nconfig_protection_enabled=0")
                             << "1234" << false;
        QTest::newRow("only the switch, off")
            << QByteArray("config_protection_enabled=0") << QString() << false;
        QTest::newRow("switch neither 0 nor 1")
            << QByteArray("config_passwd=1234\nconfig_protection_enabled=yes") << "1234" << true;
        QTest::newRow("comma") << QByteArray("config_passwd=12,34") << "12,34" << true;
        QTest::newRow("last of two")
            << QByteArray("config_passwd=1\nconfig_passwd=2") << "2" << true;
        QTest::newRow("not ASCII")
            << QByteArray("config_passwd=gr\xc3\xbc\xc3\x9f") << QStringLiteral("grüß") << true;
        QTest::newRow("CR LF") << QByteArray("config_passwd=1234\r\nother=1\r\n") << "1234" << true;
    }
    void protection()
    {
        QFETCH(QByteArray, options);
        QFETCH(QString, password);
        QFETCH(bool, isProtected);
        root().write(QStringLiteral("/etc/settings.ini"), "[options]\n" + options + "\n");
        const auto pSettings = load();
        QCOMPARE(pSettings->working.configPassword, password);
        QCOMPARE(pSettings->bPageEnabled[ProtectionPageId], isProtected);
        QCOMPARE(pSettings->working.bUnlocked, !isProtected);
        QCOMPARE(pSettings->snapshot.bUnlocked, !isProtected);
    }

    void staticValues_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("entry");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("defaulted");
        const auto row = [](const char *line, IpEntryIndex entry, const char *value,
                            bool bDefault) {
            QTest::newRow(line) << QByteArray(line) << int(entry) << QString::fromLatin1(value)
                                << bDefault;
        };
        row("eth0.ip=10.1.2.3", AddressEntry, "10.1.2.3", false);
        row("eth0.ip=192.168.001.010", AddressEntry, "192.168.1.10", false);
        row("eth0.ip=10.0.0.300", AddressEntry, "10.0.0.255", false);
        row("eth0.ip=0.0.0.0", AddressEntry, "0.0.0.0", true);
        row("eth0.ip=printer", AddressEntry, "0.0.0.0", true);
        row("eth0.ip=", AddressEntry, "", false);
        row("eth0.netmask=255.0.255.0", NetmaskEntry, "255.255.255.0", true);
        row("eth0.netmask=255.255.254.0", NetmaskEntry, "255.255.254.0", false);
        row("default_gateway=0.0.0.0", GatewayEntry, "0.0.0.0", false);
        row("default_gateway=1.2.3.4.5", GatewayEntry, "0.0.0.0", true);
        row("dnsserver1=", Dns1Entry, "", false);
        row("dnsserver2=0.0.0.0", Dns2Entry, "0.0.0.0", false);
        row("eth0.mode=STATIC", AddressEntry, "0.0.0.0", true);
    }
    void staticValues()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, entry);
        QFETCH(QString, value);
        QFETCH(bool, defaulted);
        root().write(QStringLiteral("/etc/settings.ini"), "[network]\n" + line + "\n");
        const auto pSettings = load();
        QCOMPARE(pSettings->working.nNetMode, quint32(StaticMode));
        QCOMPARE(pSettings->working.ipEntries[entry].value, value);
        QCOMPARE(pSettings->working.ipEntries[entry].bDefaulted, defaulted);
        QCOMPARE(pSettings->working.ipEntries[entry].dhcpValue, QStringLiteral("0.0.0.0"));
        QCOMPARE(pSettings->snapshot.ipEntries[entry].value, value);
        QVERIFY(!pSettings->snapshot.ipEntries[entry].bDefaulted);
    }

    void dhcpValues_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("firmware");
        QTest::addColumn<int>("entry");
        QTest::addColumn<QString>("value");
        const QString full(80, u'7');
        QTest::newRow("address") << "eth0.ip"
                                 << "10.0.0.7" << int(AddressEntry) << "10.0.0.7";
        QTest::newRow("no address") << "result.sysif_GetInterfaceIp"
                                    << "-1" << int(AddressEntry) << "";
        QTest::newRow("netmask") << "eth0.netmask"
                                 << "255.0.0.0" << int(NetmaskEntry) << "255.0.0.0";
        QTest::newRow("gateway") << "gateway"
                                 << "10.0.0.1" << int(GatewayEntry) << "10.0.0.1";
        QTest::newRow("no route") << "gateway"
                                  << "" << int(GatewayEntry) << "0.0.0.0";
        QTest::newRow("no NUL") << "gateway" << full << int(GatewayEntry) << full.left(64);
        QTest::newRow("gateway fails") << "result.sysgw_GetDefaultGateway"
                                       << "-5" << int(GatewayEntry) << "";
        QTest::newRow("name server") << "dns1"
                                     << "9.9.9.9" << int(Dns1Entry) << "9.9.9.9";
        QTest::newRow("no name server") << "dns2"
                                        << "" << int(Dns2Entry) << "";
        QTest::newRow("name server -3") << "result.sysnm_GetDNS2"
                                        << "-3" << int(Dns2Entry) << "";
    }
    void dhcpValues()
    {
        QFETCH(QString, key);
        QFETCH(QString, firmware);
        QFETCH(int, entry);
        QFETCH(QString, value);
        root().setFirmware(key, firmware);
        // An address that static mode would refuse is left alone here.
        root().write(QStringLiteral("/etc/settings.ini"),
                     "[network]\neth0.mode=dhcp\neth0.ip=wrong\n");
        const auto pSettings = load();
        QCOMPARE(pSettings->working.nNetMode, quint32(DhcpMode));
        QCOMPARE(pSettings->working.ipEntries[entry].dhcpValue, value);
        QCOMPARE(pSettings->working.ipEntries[AddressEntry].value, QStringLiteral("wrong"));
        QVERIFY(!pSettings->working.ipEntries[AddressEntry].bDefaulted);
    }

    void badFiles_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << QByteArray("\0\x01\xff\xfe[[[]\n=\n\\x", 14).repeated(50);
        QTest::newRow("10 MB of text") << QByteArray(10 * 1024 * 1024, 'a');
        QTest::newRow("10 MB of lines") << "[x]\n" + QByteArray("k=1\n").repeated(2500 * 1024);
        QTest::newRow("folder") << QByteArray("folder");
    }
    void badFiles()
    {
        QFETCH(QByteArray, content);
        if (content == "folder") {
            QDir().mkpath(root().path(QStringLiteral("/etc/settings.ini")));
        } else {
            root().write(QStringLiteral("/etc/settings.ini"), content);
        }
        const auto pSettings = load();
        QCOMPARE(pSettings->working.nNetMode, quint32(StaticMode));
        QVERIFY(!pSettings->bPageEnabled[ProtectionPageId]);
        QCOMPARE(pSettings->working.ipEntries[NetmaskEntry].value, QStringLiteral("255.255.255.0"));
    }

    void screens_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("fixedWidth");
        const auto row = [](int nWidth, int nHeight, int nIndex, int nFixed) {
            QTest::addRow("%dx%d", nWidth, nHeight) << QSize(nWidth, nHeight) << nIndex << nFixed;
        };
        row(800, 480, 12, 640);
        row(800, 555, 12, 640);
        row(480, 272, 4, 400);
        row(480, 640, 5, 0);
        row(1024, 600, 15, 640);
        row(2560, 1440, 8, 640);
        row(640, 480, 8, 0);
        row(320, 240, 3, 0);
    }
    void screens()
    {
        QFETCH(QSize, size);
        setScreen(size);
        const auto pSettings = load();
        QTEST(pSettings->working.nResolutionIndex, "index");
        QTEST(int(pSettings->working.nFixedWidth), "fixedWidth");
        QCOMPARE(pSettings->working.bFixedWidth, pSettings->working.nFixedWidth > 0);
        QCOMPARE(pSettings->working.bLargeScreen, size.width() > 1920);
        setScreen({800, 480});
    }

    void staleNewSettings_data()
    {
        QTest::addColumn<QByteArray>("stale");
        QTest::newRow("other keys") << QByteArray("[network]\neth0.ip=6.6.6.6\nold=1\n");
        QTest::newRow("malformed") << QByteArray("[netw\n=");
    }
    void staleNewSettings()
    {
        QFETCH(QByteArray, stale);
        root().write(QStringLiteral("/etc/settings.ini"), StaticFile);
        root().write(QStringLiteral("/tmp/newsettings.ini"), stale);
        root().write(QStringLiteral("/tmp/newsettings.ini.lock"), "");
        const auto pSettings = load();
        QVERIFY(!root().exists(QStringLiteral("/tmp/newsettings.ini")));
        QVERIFY(!root().exists(QStringLiteral("/tmp/newsettings.ini.lock")));
        // What the stale file held must not come back with the next save.
        pSettings->working.nNetMode = DhcpMode;
        QCOMPARE(pSettings->saveSettings(false), 0);
        QCOMPARE(newKeys(), QStringList({"[network]", "eth0.mode=dhcp"}));
    }

    void staleNewSettingsThatStays()
    {
        root().write(QStringLiteral("/tmp/newsettings.ini/not-empty"), "");
        BoxWatcher watcher;
        const auto pSettings = load();
        QCOMPARE(watcher.texts().size(), 1);
        QVERIFY2(watcher.texts().constFirst().startsWith(
                     "Error -230: Could not erase file /tmp/newsettings.ini."),
                 qPrintable(watcher.texts().constFirst()));
        pSettings->working.nNetMode = DhcpMode;
        QCOMPARE(pSettings->saveSettings(false), int(ERR_INI_ACCESS));
    }

    void save_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Edit>("edit");
        QTest::addColumn<int>("result");
        QTest::addColumn<QStringList>("lines");
        const auto value = [](IpEntryIndex index, const char *text) {
            return Edit([=](VeltaSettings &settings) {
                settings.working.ipEntries[index].value = QString::fromLatin1(text);
            });
        };
        const Edit nothing = [](VeltaSettings &) {};
        const Edit toggleMode = [](VeltaSettings &settings) {
            settings.working.nNetMode =
                settings.working.nNetMode == StaticMode ? DhcpMode : StaticMode;
        };
        QTest::newRow("nothing changed") << StaticFile << nothing << 1 << QStringList();
        QTest::newRow("changed back")
            << StaticFile << value(AddressEntry, "192.168.0.10") << 1 << QStringList();
        QTest::newRow("missing key alone is no change")
            << without(StaticFile, "dnsserver2") << nothing << 1 << QStringList();
        QTest::newRow("mode to DHCP")
            << StaticFile << toggleMode << 0 << QStringList({"eth0.mode=dhcp"});
        QTest::newRow("mode to static")
            << DhcpFile << toggleMode << 0 << QStringList({"eth0.mode=static"});
        QTest::newRow("address") << StaticFile << value(AddressEntry, "10.0.0.1") << 0
                                 << QStringList({"eth0.ip=10.0.0.1"});
        QTest::newRow("name server emptied")
            << StaticFile << value(Dns1Entry, "") << 0 << QStringList({"dnsserver1="});
        QTest::newRow("missing keys come along")
            << without(without(StaticFile, "eth0.mode"), "dnsserver2")
            << value(GatewayEntry, "192.168.0.9") << 0
            << QStringList(
                   {"default_gateway=192.168.0.9", "dnsserver2=0.0.0.0", "eth0.mode=static"});
        QTest::newRow("defaulted netmask")
            << QByteArray(StaticFile).replace("255.255.255.0", "255.0.255.0") << nothing << 0
            << QStringList({"eth0.netmask=255.255.255.0"});
        QTest::newRow("defaulted, but now DHCP")
            << QByteArray(StaticFile).replace("255.255.255.0", "255.0.255.0") << toggleMode << 0
            << QStringList({"eth0.mode=dhcp", "eth0.netmask=255.255.255.0"});
        QTest::newRow("address does not count in DHCP mode")
            << DhcpFile << value(AddressEntry, "10.0.0.1") << 1 << QStringList();
        QTest::newRow("name server counts in DHCP mode")
            << DhcpFile << value(Dns2Entry, "8.8.8.8") << 0 << QStringList({"dnsserver2=8.8.8.8"});
        QTest::newRow("no name server page")
            << without(StaticFile, "dnsserver2") << Edit([](VeltaSettings &settings) {
                   settings.bPageEnabled[DnsPageId] = false;
                   settings.working.ipEntries[Dns1Entry].value = QStringLiteral("1.1.1.1");
               })
            << 0 << QStringList();
    }
    void save()
    {
        QFETCH(QByteArray, file);
        QFETCH(Edit, edit);
        QFETCH(int, result);
        QFETCH(QStringList, lines);
        root().write(QStringLiteral("/etc/settings.ini"), file);
        const auto pSettings = load();
        edit(*pSettings);
        QCOMPARE(pSettings->saveSettings(false), result);
        QCOMPARE(pSettings->working.bDataChanged, result == 0);
        if (!lines.isEmpty()) {
            lines.prepend(QStringLiteral("[network]"));
        }
        QCOMPARE(newKeys(), lines);
        QCOMPARE(root().read(QStringLiteral("/etc/settings.ini")), file);
    }

    void apply_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<int>("result");
        QTest::newRow("success") << QByteArray("exit 0") << 0;
        QTest::newRow("exit status") << QByteArray("exit 3") << 3;
        QTest::newRow("status 1") << QByteArray("exit 1") << 1;
        QTest::newRow("crash") << QByteArray("kill -SEGV $$") << CommandCrashed;
        QTest::newRow("missing") << QByteArray() << CommandNotStarted;
    }
    void apply()
    {
        QFETCH(QByteArray, script);
        QFETCH(int, result);
        root().write(QStringLiteral("/etc/settings.ini"), StaticFile);
        if (!script.isEmpty()) {
            root().writeCommand(QStringLiteral("/bin/syscfg"),
                                "printf '%s\\n' \"$@\" >>\"$PANEL_ROOT/arguments\"\n" + script);
        }
        BoxWatcher watcher;
        const auto pSettings = load();
        pSettings->working.nNetMode = DhcpMode;
        QCOMPARE(pSettings->saveSettings(true), result);
        if (!script.isEmpty()) {
            QCOMPARE(root().read(QStringLiteral("/arguments")),
                     "-i\n" + root().path(QStringLiteral("/tmp/newsettings.ini")).toUtf8()
                         + "\n-g\nall\n");
        }
        QCOMPARE(root().exists(QStringLiteral("/tmp/newsettings.ini")), result != 0);
        QCOMPARE(watcher.texts().size(), result == 0 ? 0 : 1);
        if (result != 0) {
            const QString text = QStringLiteral("Error -228: Starting syscfg process ended with "
                                                "resultcode %1. Severe error,")
                                     .arg(result);
            QVERIFY2(watcher.texts().constFirst().startsWith(text),
                     qPrintable(watcher.texts().constFirst()));
        }
    }
};

PANEL_TEST_MAIN(VeltaSettingsTest)
#include "tst_veltasettings.moc"
