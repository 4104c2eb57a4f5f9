#include "app/language.h"
#include "infobox/infotext.h"
#include "settings/errorcatalogue.h"
#include "tests/support/devicetest.h"
#include "wizard/veltawizard.h"

#include <QResource>

#include <cstdio>

namespace {

/// Argument with which this program only says what the Next button is called.
constexpr auto SayNext = "say-next";

} // namespace

class LanguageTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void environment_data()
    {
        row("none", "", "Next");
        row("C", "LANG=C", "Next");
        row("C over all", "LC_ALL=C.UTF-8 LANG=de_DE", "Next");
        row("C, but a language", "LANG=C LANGUAGE=de", "Next");
        row("POSIX", "LC_MESSAGES=POSIX LANG=de", "Next");
        row("German", "LANG=de_DE.UTF-8", "Weiter");
        row("of Austria", "LC_MESSAGES=de_AT LANG=fr_FR", "Weiter");
        row("language alone", "LANG=de", "Weiter");
        row("the last that is there", "LANG=fr_FR LANGUAGE=fr:tlh:de", "Weiter");
        row("English before it", "LANG=fr_FR LANGUAGE=fr:en_GB:de", "Next");
        row("unknown", "LANG=xx_YY", "Next");
        row("not there", "LANG=fr_FR.UTF-8", "Next");
        row("none at all", "LANG=../../etc/passwd", "Next");
        row("letters that no font has", "LANG=is_IS", "Next");
    }
    void environment()
    {
        FETCH(QString, environment, QString, next);
        // Qt reads the environment once in the life of a process.
        QProcess other;
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        for (const char *pVariable : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            variables.remove(pVariable);
        }
        const QStringList settings = environment.split(u' ', Qt::SkipEmptyParts);
        for (const QString &setting : settings) {
            variables.insert(setting.section(u'=', 0, 0), setting.section(u'=', 1));
        }
        other.setProcessEnvironment(variables);
        other.start(QCoreApplication::applicationFilePath(), {SayNext});
        QVERIFY(other.waitForFinished());
        QCOMPARE(QString::fromUtf8(other.readAllStandardOutput()), next);
        QCOMPARE(
            other.readAllStandardError().count("The fonts lack letters of the language \"is\""),
            environment.contains("is_IS") ? 1 : 0);
    }

    /// What is asked of the fonts are the letters that the translation has.
    void everyLetter()
    {
        const QDir folder(TRANSLATIONS);
        const QStringList files = folder.entryList({"operator-panel_*.ts"});
        QVERIFY(!files.isEmpty());
        for (const QString &name : files) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QFile::ReadOnly));
            const QString all = QString::fromUtf8(file.readAll());
            static const QRegularExpression list("<source>-</source>.*?<translation>([^<]*)",
                                                 QRegularExpression::DotMatchesEverythingOption);
            const QString listed = list.match(all).captured(1);
            QVERIFY(!listed.isEmpty());
            static const QRegularExpression translation("<translation>([^<]*)");
            for (auto it = translation.globalMatch(all); it.hasNext();) {
                for (const QChar c : it.next().captured(1)) {
                    QVERIFY2(c.unicode() < 128 || listed.contains(c), qPrintable(name + ": " + c));
                }
            }
        }
    }

    /// The argument of a box has rules of its own about what stands beside its place.
    void everyMessage()
    {
        qputenv("LC_ALL", "de"); // the first time that this process asks
        installLanguage();
        QCOMPARE(VeltaWizard::tr("Next"), QStringLiteral("Weiter"));
        const QString argument = QStringLiteral("eth9");
        for (const ErrorEntry *pEntry = errorCatalogue; pEntry->nCode != ERR_END; ++pEntry) {
            const QString text = InfoText::compose(errorText(*pEntry), argument);
            const bool bTakes = errorText(*pEntry).contains("%1");
            QVERIFY2(!text.contains("%1") && text.contains(argument) == bTakes, qPrintable(text));
        }
    }
};

int main(int argc, char **argv)
{
    return runPanelTest(argc, argv, "LanguageTest", [](int count, char **arguments) {
        if (count == 2 && qstrcmp(arguments[1], SayNext) == 0) {
            QResource::registerResource(UNKNOWN_LETTERS);
            installLanguage();
            std::fputs(VeltaWizard::tr("Next").toUtf8().constData(), stdout);
            return 0;
        }
        LanguageTest test;
        return QTest::qExec(&test, count, arguments);
    });
}
#include "tst_language.moc"
