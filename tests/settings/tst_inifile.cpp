#include "settings/inifile.h"
#include "tests/support/devicetest.h"

class IniFileTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void states_data()
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
    void states()
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
    void noMemory()
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
    void oneAfterTheOther()
    {
        for (const QByteArray value : {"1", "2", "3"}) {
            const IniFile file(FileContent{FileContent::Readable, "[a]\nb=" + value + "\n", {}});
            const IniFile other(FileContent{FileContent::Readable, "[a]\nb=9\n", {}});
            QCOMPARE(file.value("a/b").toByteArray(), value);
        }
    }

    // To the byte what QSettings writes, and what it reads.
    void text()
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
};

PANEL_TEST_MAIN(IniFileTest)
#include "tst_inifile.moc"
