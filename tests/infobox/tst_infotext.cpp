#include "infobox/infotext.h"
#include "tests/support/devicetest.h"

class TestInfoText : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void composes_data()
    {
        const auto add = [](const QByteArray &message, const char *argument, const char *composed) {
            row(message + '|' + argument, message, argument, composed);
        };
        // With the arguments "eth0", "x" and none, each with and without blanks.
        for (const auto &[message, word, one, none] : QList<std::array<const char *, 4>>{
                 {"in %1 now.", "in eth0 now.", "in x now.", "in now."},
                 {"in %1. Now.", "in eth0. Now.", "in x. Now.", "in . Now."},
                 {"code %1", "code eth0 ", "code x ", "code "},
                 {"code %1, now", "code eth0 , now", "code x , now", "code , now"},
                 {"%1 data", "eth0 data", "x data", " data"},
                 {"%1. Severe", "eth0. Severe", "x. Severe", ". Severe"},
                 {"Wrong.%1", "Wrong. eth0", "Wrong.", "Wrong."},
                 {"(%1)", "(%1)", "(%1)", "(%1)"},
                 {"Nothing", "Nothing", "Nothing", "Nothing"},
                 {"%1 ", "eth0 ", "x ", " "}}) {
            for (const auto &[argument, composed] : {std::pair("eth0", word),
                                                     {" eth0 ", word},
                                                     {"x", one},
                                                     {" x", one},
                                                     {"", none},
                                                     {" ", none},
                                                     {"  ", none}}) {
                add(message, argument, composed);
            }
        }
        add("Wrong.%1", "  ab", "Wrong. ab");
        add("in %1.", "%1 %2", "in %1 %2.");
    }
    void composes()
    {
        FETCH(QString, message, QString, argument, QString, composed);
        QCOMPARE(InfoText::compose(message, argument), composed);
    }

    void wraps_data()
    {
        // of at most 10 characters, from the text
        row("", "");
        row("0123456789", "0123456789");
        row("0123456789A", "0123456789<br/>A");
        row("one two three", "one two<br/>three");
        row("one two 78 0", "one two<br/>78 0"); // the blank after a full line is not in it
        row("012345678 9", "012345678<br/>9");
        row("0123456789 A", "0123456789<br/> A");
        row(" 0123456789", "<br/>0123456789");
        row("/tmp/a/newfile", "/tmp/a/<br/>newfile");
        row("a/b c/defghij", "a/b<br/>c/defghij"); // a blank before a slash
        row("/tmp/file/0123", "/tmp/file/<br/>0123");
        row("01234567890123456789A", "0123456789<br/>0123456789<br/>A");
        row("<b>a&b</b>cd", "&lt;b&gt;a&amp;b&lt;/<br/>b&gt;cd");
        row("50% %1 %2 done", "50% %1 %2<br/>done");
    }
    void wraps()
    {
        FETCH(QString, lines);
        QCOMPARE(InfoText::wrap(QTest::currentDataTag(), 10),
                 QStringLiteral("<nobr>") + lines + "</nobr>");
    }
};

PANEL_TEST_MAIN(TestInfoText)
#include "tst_infotext.moc"
