#include "infobox/veltainfobox.h"
#include "platform/command.h"
#include "settings/errorcatalogue.h"
#include "settings/inifile.h"
#include "settings/veltasettings.h"
#include "tests/support/devicetest.h"

namespace {

QByteArray without(QByteArray file, const QByteArray &key)
{
    const qsizetype begin = file.indexOf(key);
    return file.remove(begin, file.indexOf('\n', begin) - begin + 1);
}

const QString NewSettings = "/tmp/newsettings.ini";

using Edit = std::function<void(VeltaSettings &)>;

} // namespace
class VeltaSettingsTest : public DeviceTest
{
    Q_OBJECT

private:
    std::unique_ptr<VeltaSettings> load()
    {
        auto pSettings =
            std::make_unique<VeltaSettings>(SettingsPath, NewSettings, QSettings::IniFormat);
        pSettings->init();
        return pSettings;
    }

    void plant(const QString &devicePath, const QByteArray &kind)
    {
        if (kind == "keys") {
            root().write(devicePath, "[network]\neth0.ip=6.6.6.6\n[options]\nconfig_passwd=\n");
        } else if (kind == "malformed") {
            root().write(devicePath, "[netw\n=");
        } else if (kind == "eio") { // regular, unreadable at its start
            QVERIFY(QFile::link("/proc/self/mem", root().path(devicePath)));
        } else if (kind == "locked") {
            root().write(devicePath + ".lock/not-empty", "");
        } else {
            root().plant(devicePath, kind);
        }
    }
    QStringList folder(const QString &devicePath) const
    {
        return QDir(root().path(devicePath))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QStringList newKeys()
    {
        QStringList lines =
            QString::fromUtf8(root().read(NewSettings)).split(u'\n', Qt::SkipEmptyParts);
        lines.sort();
        return lines;
    }

private Q_SLOTS:
    void fileStates_data()
    {
        // of the key "b" in "a"
        const QByteArray whole = "[a]\nb=1\n";
        row("comments and blank lines first", "\n \n; text\n\t# \"text\n#\n" + whole,
            IniFile::Sound, "1");
        row("CR LF", "; text\r\n\r\n[a]\r\nb=1\r\n", IniFile::Sound, "1");
        row("byte order mark", "\xef\xbb\xbf" + whole, IniFile::Sound, "1");
        row("UTF-8", "[a]\n; \xc3\xbc\nb=gr\xc3\xbc\xc3\x9f\n", IniFile::Sound, "grüß");
        row("Latin 1 comment", "; gr\xfc\xdf\n" + whole, IniFile::Sound, "1");
        row("marks in a value", "[a]\nb=\"1=2;3\"\nc==;\nd=a=b;c\n", IniFile::Sound, "1=2;3");
        row("continued line", "[a]\nb=1\\\n2\n", IniFile::Sound, "12");
        row("blanks, tabs, no line end", "[ a ]\n\tb = 1", IniFile::Sound, "1");
        row("key before the first group", "c=1\n" + whole, IniFile::Sound, "1");
        row("line break by an escape", whole + "c=\"1\\n2\\x0d\"\n[options]\nd=2\n", IniFile::Sound,
            "1");
        row("escape and open quote", whole + "c=1\\n2\nd=\"3\n[options]\ne=4\n", IniFile::Damaged,
            "1");
        row("empty group", "[options]\n", IniFile::Sound, "");
        row("empty", QByteArray(), IniFile::Damaged, "");
        row("blank", "\n\n", IniFile::Damaged, "");
        row("comment alone", "; settings\n", IniFile::Damaged, "");
        row("torn before its first group", "; settings\n[net", IniFile::Damaged, "");
        row("keys alone", "b=1\n", IniFile::Damaged, "");
        row("torn in a group", whole + "[c", IniFile::Damaged, "1");
        row("torn in a key", whole + "[options]\nconfig_pass", IniFile::Damaged, "1");
        row("NUL bytes alone", QByteArray(4096, '\0'), IniFile::Damaged, "");
        row("NUL bytes at the end", whole + QByteArray(100, '\0'), IniFile::Damaged, "1");
        row("UTF-16", QByteArray("[\0a\0]\0\n\0", 8), IniFile::Damaged, "");
        row("control characters", whole + "c=\x01\x7f\n", IniFile::Damaged, "1");
        row("quote that is never closed", whole + "c=\"1\n[options]\nd=2\n", IniFile::Damaged, "1");
        row("quote inside a value", whole + "c=it\"s\n[options]\nd=2\n", IniFile::Damaged, "1");
        row("line that goes on in a group", whole + "c=1\\\n[options]\nd=2\n", IniFile::Damaged,
            "1");
        row("too large", whole + QByteArray(ConfigurationLimit, '\n'), IniFile::Unreadable, "");
    }
    void fileStates()
    {
        FETCH(QByteArray, content, int, state, QString, value);
        root().write("/etc/file.ini", content);
        const IniFile file("/etc/file.ini");
        QCOMPARE(int(file.state()), state);
        QCOMPARE(file.problem().isEmpty(), file.state() == IniFile::Sound);
        QCOMPARE(file.value("a/b").toString(), value);
        QVERIFY(file.state() != IniFile::Unreadable || file.keys().isEmpty());
    }

    // A copy that cannot be read must not be taken for a file without keys.
    void noMemoryForFile()
    {
        rlimit before = {};
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
        const rlimit none = {0, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
        const IniFile file(FileContent{FileContent::Readable, "[a]\nb=1\n", {}});
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &before), 0);
        QCOMPARE(file.state(), IniFile::Unreadable);
    }

    // Every file by itself, whatever QSettings has read under the same name before.
    void oneFileAfterTheOther()
    {
        for (const QByteArray value : {"1", "2", "3"}) {
            const IniFile file(FileContent{FileContent::Readable, "[a]\nb=" + value + "\n", {}});
            const IniFile other(FileContent{FileContent::Readable, "[a]\nb=9\n", {}});
            QCOMPARE(file.value("a/b").toByteArray(), value);
        }
    }

    // To the byte what QSettings writes, and what it reads.
    void fileText()
    {
        const QStringList values{"dhcp", "",      "10.0.0.1", "a b", " a ",
                                 "a,b",  "a;b=c", "\"a\\n\"", "@a",  "@Invalid()",
                                 "%20",  "[a]",   "grüß",     "#",   "\\"};
        QList<IniEntry> entries;
        const QString path = root().path("/tmp/file.ini");
        {
            QSettings settings(path, QSettings::IniFormat);
            for (qsizetype i = values.size() - 1; i >= 0; --i) {
                entries.append({QStringLiteral("key%1.b_c").arg(i), values[i]});
                settings.setValue("group/" + entries.last().sKey, values[i]);
            }
        }
        const QByteArray text = iniText("group", entries);
        QCOMPARE(text, root().read("/tmp/file.ini"));
        const IniFile file(FileContent{FileContent::Readable, text, {}});
        for (const IniEntry &entry : entries) {
            QCOMPARE(file.value("group/" + entry.sKey).toString(), entry.sValue);
        }
        QCOMPARE(file.keys().size(), entries.size());
        QCOMPARE(iniText("group", {}), QByteArray());
    }

    void protection_data()
    {
        row("nothing", "", "", false);
        row("password", "config_passwd=1234", "1234", true);
        row("empty password, on", "config_passwd=\nconfig_protection_enabled=1", "", false);
        row("off", "config_passwd=1234\nconfig_protection_enabled=0", "1234", false);
        row("only the switch, off", "config_protection_enabled=0", "", false);
        row("switch neither 0 nor 1", "config_passwd=1234\nconfig_protection_enabled=yes", "1234",
            true);
        row("comma", "config_passwd=12,34", "12,34", true);
        row("last of two", "config_passwd=1\nconfig_passwd=2", "2", true);
        row("not ASCII", "config_passwd=grüß", "grüß", true);
        row("CR LF", "config_passwd=1234\r\nother=1\r\n", "1234", true);
    }
    void protection()
    {
        FETCH(QString, options, QString, password, bool, isProtected);
        writeSettings("[options]\n" + options.toUtf8() + "\n");
        const auto pSettings = load();
        QCOMPARE(pSettings->working.configPassword, password);
        QCOMPARE(pSettings->bPageEnabled[ProtectionPageId], isProtected);
        QCOMPARE(pSettings->working.bUnlocked, !isProtected);
        QCOMPARE(pSettings->snapshot.bUnlocked, !isProtected);
    }

    void staticValues_data()
    {
        // by the line
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
        FETCH(IpEntryIndex, entry, QString, value, bool, defaulted);
        const QByteArray line = QTest::currentDataTag();
        writeSettings("[network]\n" + line + "\n");
        const auto pSettings = load();
        QCOMPARE(pSettings->working.nNetMode, quint32(StaticMode));
        QCOMPARE(pSettings->working.ipEntries[entry].value, value);
        QCOMPARE(pSettings->working.ipEntries[entry].bDefaulted, defaulted);
        QCOMPARE(pSettings->working.ipEntries[entry].dhcpValue, "0.0.0.0");
        QCOMPARE(pSettings->snapshot.ipEntries[entry].value, value);
        QVERIFY(!pSettings->snapshot.ipEntries[entry].bDefaulted);
    }

    void dhcpValues_data()
    {
        const QString full(80, u'7');
        row("address", "eth0.ip", "10.0.0.7", AddressEntry, "10.0.0.7");
        row("no address", "result.sysif_GetInterfaceIp", "-1", AddressEntry, "");
        row("netmask", "eth0.netmask", "255.0.0.0", NetmaskEntry, "255.0.0.0");
        row("gateway", "gateway", "10.0.0.1", GatewayEntry, "10.0.0.1");
        row("no route", "gateway", "", GatewayEntry, "0.0.0.0");
        row("no NUL", "gateway", full, GatewayEntry, full.left(64));
        row("gateway fails", "result.sysgw_GetDefaultGateway", "-5", GatewayEntry, "");
        row("name server", "dns1", "9.9.9.9", Dns1Entry, "9.9.9.9");
        row("no name server", "dns2", "", Dns2Entry, "");
        row("name server -3", "result.sysnm_GetDNS2", "-3", Dns2Entry, "");
    }
    void dhcpValues()
    {
        FETCH(QString, key, QString, firmware, IpEntryIndex, entry, QString, value);
        root().setFirmware(key, firmware);
        // An address that static mode would refuse is left alone here.
        writeSettings("[network]\neth0.mode=dhcp\neth0.ip=wrong\n");
        const auto pSettings = load();
        QCOMPARE(pSettings->working.nNetMode, quint32(DhcpMode));
        QCOMPARE(pSettings->working.ipEntries[entry].dhcpValue, value);
        QCOMPARE(pSettings->working.ipEntries[AddressEntry].value, "wrong");
        QVERIFY(!pSettings->working.ipEntries[AddressEntry].bDefaulted);
    }

    void badFiles_data()
    {
        row("missing", "nothing", 0, "", "");
        row("empty", "", 0, "Error -203", "");
        row("binary", QByteArray("\0\x01\xff\xfe[[[]\n=\n\\x", 14).repeated(50), 0, "Error -203",
            "");
        row("torn after the password", "[options]\nconfig_passwd=1\n[netw", 0, "Error -203", "1");
        row("10 MB of lines", "[x]\n" + QByteArray("k=1\n").repeated(2500 * 1024), -202,
            "Error -202", "");
        row("directory", "directory", -202, "Error -202", "");
        row("FIFO", "fifo", -202, "Error -202", "");
        row("read error", "eio", -202, "Error -202", "");
        row("link that leads nowhere", "dangling", -202, "Error -202", "");
    }
    void badFiles()
    {
        FETCH(QByteArray, content, int, result, QString, box, QString, password);
        plant(SettingsPath, content);
        if (!box.isEmpty()) {
            expectWarning("^/etc/settings.ini (is|has|cannot) ");
        }
        BoxWatcher watcher;
        VeltaSettings settings(SettingsPath, NewSettings, QSettings::IniFormat);
        QCOMPARE(settings.init(), result);
        QCOMPARE(watcher.texts().join(u'|').left(10), box);
        QCOMPARE(watcher.texts().size(), box.isEmpty() ? 0 : 1);
        QCOMPARE(settings.working.configPassword, password);
        QCOMPARE(settings.bPageEnabled[ProtectionPageId], result != 0 || !password.isEmpty());
        if (result == 0) {
            QCOMPARE(settings.working.nNetMode, quint32(StaticMode));
            QCOMPARE(settings.working.ipEntries[NetmaskEntry].value, "255.255.255.0");
        }
    }

    // Of the two ways to see a height that is not listed the settings take the lower screen.
    void unlistedScreen()
    {
        setScreen({800, 555});
        const auto pSettings = load();
        QCOMPARE(pSettings->working.nResolutionIndex, 12);
        QCOMPARE(int(pSettings->working.nFixedWidth), 640);
    }

    // What others put at the name of the new settings, before the wizard opens or while it is open,
    // is neither handed on nor followed nor waited for.
    void plantedNewSettings_data()
    {
        for (const char *kind :
             {"keys", "malformed", "link", "dangling", "fifo", "directory", "locked"}) {
            row(kind, QByteArray(kind));
        }
    }
    void plantedNewSettings()
    {
        FETCH(QByteArray, kind);
        for (const bool bBefore : {true, false}) {
            writeSettings(StaticSettings);
            root().write("/tmp/target", "target");
            std::unique_ptr<VeltaSettings> pSettings;
            if (bBefore) {
                plant(NewSettings, kind);
                pSettings = load();
                QCOMPARE(folder("/tmp").filter("newsettings.ini"),
                         kind == "locked" ? QStringList("newsettings.ini.lock") : QStringList());
            } else {
                pSettings = load();
                plant(NewSettings, kind);
            }
            pSettings->working.nNetMode = DhcpMode;
            QCOMPARE(pSettings->saveSettings(false), 0);
            QCOMPARE(newKeys(), QStringList({"[network]", "eth0.mode=dhcp"}));
            struct stat status = {};
            QCOMPARE(lstat(qPrintable(root().path(NewSettings)), &status), 0);
            QCOMPARE(int(status.st_mode), S_IFREG | 0600);
            pSettings.reset();
            QCOMPARE(newKeys(), QStringList({"[network]", "eth0.mode=dhcp"}));
            QCOMPARE(root().read("/tmp/target"), "target");
            QVERIFY(!root().exists("/tmp/none"));
            root().remove("/tmp");
        }
    }

    void staleNewSettingsThatStay_data()
    {
        row("full directory", NewSettings,
            "Error -230: Could not erase file /tmp/newsettings.ini.");
        row("write-protected", "/proc/sys/kernel/ostype",
            "Error -229: File /proc/sys/kernel/ostype is not writeable.");
    }
    void staleNewSettingsThatStay()
    {
        FETCH(QString, path, QString, box);
        root().write("/tmp/newsettings.ini/not-empty", "");
        QVERIFY(QFile::link("/proc/sys", root().path("/proc/sys")));
        writeSettings(StaticSettings);
        BoxWatcher watcher;
        VeltaSettings settings(SettingsPath, path, QSettings::IniFormat);
        QCOMPARE(settings.init(), 0);
        QCOMPARE(watcher.texts().size(), 1);
        QVERIFY2(watcher.texts().constFirst().startsWith(box),
                 qPrintable(watcher.texts().constFirst()));
        settings.working.nNetMode = DhcpMode;
        expectWarning("cannot be written: ");
        expectWarning("nothing is applied");
        QCOMPARE(settings.saveSettings(false), int(ERR_INI_ACCESS));
    }

    void save_data()
    {
        const QByteArray badNetmask =
            QByteArray(StaticSettings).replace("255.255.255.0", "255.0.255.0");
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
        row("nothing changed", StaticSettings, nothing, 1, "");
        row("changed back", StaticSettings, value(AddressEntry, "192.168.0.10"), 1, "");
        row("missing key alone is no change", without(StaticSettings, "dnsserver2"), nothing, 1,
            "");
        row("mode to DHCP", StaticSettings, toggleMode, 0, "eth0.mode=dhcp");
        row("mode to static", DhcpSettings, toggleMode, 0, "eth0.mode=static");
        row("address", StaticSettings, value(AddressEntry, "10.0.0.1"), 0, "eth0.ip=10.0.0.1");
        row("name server emptied", StaticSettings, value(Dns1Entry, ""), 0, "dnsserver1=");
        row("missing keys come along", without(without(StaticSettings, "eth0.mode"), "dnsserver2"),
            value(GatewayEntry, "192.168.0.9"), 0,
            "default_gateway=192.168.0.9 dnsserver2=0.0.0.0 eth0.mode=static");
        row("defaulted netmask", badNetmask, nothing, 0, "eth0.netmask=255.255.255.0");
        row("defaulted, but now DHCP", badNetmask, toggleMode, 0,
            "eth0.mode=dhcp eth0.netmask=255.255.255.0");
        row("address does not count in DHCP mode", DhcpSettings, value(AddressEntry, "10.0.0.1"), 1,
            "");
        row("name server counts in DHCP mode", DhcpSettings, value(Dns2Entry, "8.8.8.8"), 0,
            "dnsserver2=8.8.8.8");
        row("no name server page", without(StaticSettings, "dnsserver2"),
            Edit([](VeltaSettings &settings) {
                settings.bPageEnabled[DnsPageId] = false;
                settings.working.ipEntries[Dns1Entry].value = "1.1.1.1";
            }),
            0, "");
    }
    void save()
    {
        FETCH(QByteArray, file, Edit, edit, int, result, QString, written);
        writeSettings(file);
        const auto pSettings = load();
        edit(*pSettings);
        if (result == 0) {
            QTest::ignoreMessage(QtDebugMsg, "Data changed !!!");
        }
        QCOMPARE(pSettings->saveSettings(false), result);
        QCOMPARE(pSettings->working.bDataChanged, result == 0);
        QCOMPARE(newKeys().join(u' '), written.isEmpty() ? "" : "[network] " + written);
        QCOMPARE(root().read("/etc/settings.ini"), file);
    }

    void apply_data()
    {
        row("success", "exit 0", 0);
        row("tool removes the file", "rm \"$2\"", 0);
        row("exit status", "exit 3", 3);
        row("status 1", "exit 1", 1);
        row("crash", "kill -SEGV $$", CommandCrashed);
        row("missing", QByteArray(), CommandNotStarted);
    }
    void apply()
    {
        FETCH(QByteArray, script, int, result);
        writeSettings(StaticSettings);
        if (!script.isEmpty()) {
            root().writeCommand("/bin/syscfg",
                                "printf '%s\\n' \"$@\" >>\"$PANEL_ROOT/arguments\"\n" + script);
        }
        BoxWatcher watcher;
        const auto pSettings = load();
        pSettings->working.nNetMode = DhcpMode;
        QLineEdit edit("1");
        edit.show();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        queueKey(Qt::Key_Backspace); // while the tool runs
        const SaveResult saved = pSettings->save(true);
        QCOMPARE(edit.text(), "1");
        QCOMPARE(saved.outcome, result == 0 ? SaveResult::Saved : SaveResult::ToolFailed);
        QCOMPARE(saved.described(), result);
        if (!script.isEmpty()) {
            QCOMPARE(root().read("/arguments"),
                     "-i\n" + root().path(NewSettings).toUtf8() + "\n-g\nall\n");
        }
        QCOMPARE(root().exists(NewSettings), result != 0);
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
