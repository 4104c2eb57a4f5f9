#include "app/language.h"
#include "app/mainwindow.h"
#include "infobox/infotext.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"
#include "tests/support/testmain.h"
#include "tests/wizard/wizardtest.h"

#include <QDir>
#include <QResource>
#include <QTranslator>
#include <QXmlStreamReader>

#include <cstdio>

namespace {

/// Argument with which this program only says what the Next button is called.
constexpr auto SayNext = "say-next";

} // namespace

class LanguageTest : public DeviceTest
{
    Q_OBJECT

private:
    static void speakGerman()
    {
        qputenv("LC_ALL", "de"); // the first time that this process asks
        installLanguage();
        QCOMPARE(VeltaWizard::tr("Next"), QStringLiteral("Weiter"));
    }
    void closeWindows() override
    {
        qDeleteAll(qApp->findChildren<QTranslator *>(Qt::FindDirectChildrenOnly));
    }

    /// Changes the mode and, where there is one to change, the address; saves and restarts.
    /// \returns what the configuration tool was given.
    QByteArray saveAndRestart(const QByteArray &settings)
    {
        writeSettings(settings);
        root().writeCommand("/bin/syscfg", "cp \"$2\" \"$PANEL_ROOT/given\"");
        root().writeCommand("/sbin/reboot", "touch \"$PANEL_ROOT/rebooted\"");
        root().setFirmware("state=2 eth0.mode=static eth0.ip=192.168.0.10");
        MainWindow window;
        window.controlVisibility();
        window.controlVisibility();
        window.findChild<QPushButton *>("pushButtonConfig")->click();
        QTimer::singleShot(0, this, [&window] { configure(*window.findChild<VeltaWizard *>()); });
        window.controlVisibility();
        for (int i = 0; i < 11 && !root().exists("/rebooted"); ++i) {
            window.systemRestart_Timer();
        }
        return root().exists("/rebooted") ? root().read("/given") : QByteArray("no restart");
    }
    static void configure(VeltaWizard &wizard)
    {
        wizard.findChild<QPushButton *>("NetOpModeSelectButton")->click();
        wizard.button(QWizard::NextButton)->click();
        auto *pAddress = wizard.findChild<QPushButton *>("FirstIPButton");
        if (pAddress->isEnabled()) {
            pAddress->click();
            openKeyboard()->findChild<QVeltaLineEdit *>()->setText("192.168.0.77");
            openKeyboard()->findChild<QPushButton *>("panelButton_ok")->click();
        }
        wizard.button(QWizard::NextButton)->click();
        wizard.button(QWizard::NextButton)->click();
        wizard.button(QWizard::FinishButton)->click();
    }

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

    void letters_data()
    {
        row("German", QStringLiteral("ÄÖÜäöüß"), true);
        row("none", QString(), true);
        row("of nobody", QStringLiteral("a\uE4A7"), false);
    }
    void letters()
    {
        FETCH(QString, text, bool, there);
        QCOMPARE(hasLetters(QGuiApplication::font(), text), there);
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
            QXmlStreamReader reader(&file);
            QString source;
            QString listed;
            QSet<QChar> used;
            while (!reader.atEnd()) {
                reader.readNext();
                if (reader.isStartElement() && reader.name() == u"source") {
                    source = reader.readElementText();
                } else if (reader.isStartElement() && reader.name() == u"translation") {
                    const QString text = reader.readElementText();
                    listed = source == "-" ? text : listed;
                    for (const QChar c : text) {
                        c.unicode() > 127 ? void(used.insert(c)) : void();
                    }
                }
            }
            for (const QChar c : std::as_const(used)) {
                QVERIFY2(listed.contains(c), qPrintable(name + ": " + c));
            }
        }
    }

    /// The argument of a box has rules of its own about what stands beside its place.
    void everyMessage()
    {
        speakGerman();
        const QString argument = QStringLiteral("eth9");
        for (const ErrorEntry *pEntry = errorCatalogue; pEntry->nCode != ERR_END; ++pEntry) {
            const QString text = InfoText::compose(errorText(*pEntry), argument);
            const bool bTakes = errorText(*pEntry).contains("%1");
            QVERIFY2(!text.contains("%1") && text.contains(argument) == bTakes, qPrintable(text));
        }
    }

    void saves_data()
    {
        row("480x272, static", QSize(480, 272), StaticSettings);
        row("480x272, DHCP", QSize(480, 272), DhcpSettings);
        row("1280x800, static", QSize(1280, 800), StaticSettings);
        row("1280x800, DHCP", QSize(1280, 800), DhcpSettings);
    }
    /// To the byte what English hands over.
    void saves()
    {
        FETCH(QSize, screen, QByteArray, settings);
        setScreen(screen);
        const WindowServer server;
        const QByteArray english = saveAndRestart(settings);
        root().remove("/rebooted");
        root().remove("/given");
        speakGerman();
        QCOMPARE(saveAndRestart(settings), english);
        QVERIFY(english.startsWith("[network]\n"));
        QCOMPARE(english.contains("192.168.0.77"), settings == DhcpSettings);
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
