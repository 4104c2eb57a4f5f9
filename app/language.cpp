#include "app/language.h"

#include <QCoreApplication>
#include <QFile>
#include <QFont>
#include <QFontMetrics>
#include <QGlyphRun>
#include <QGuiApplication>
#include <QLocale>
#include <QTextLayout>
#include <QTranslator>

#include <algorithm>
#include <memory>

// Resources of a static library are registered by whoever needs them.
static void registerTranslations()
{
    Q_INIT_RESOURCE(translations);
}

namespace {

constexpr auto TranslationFile = QLatin1String(":/translations/operator-panel_%1.qm");
constexpr auto Source = QLatin1String("en");

/// Said by Qt itself, and seen.
[[maybe_unused]] constexpr const char *QtTexts[] = {QT_TRANSLATE_NOOP("QPlatformTheme", "OK"),
                                                    QT_TRANSLATE_NOOP("QPlatformTheme", "Abort")};

/// Every letter that a translation has besides those of English.
//: All letters, signs and accented characters of this language that English does not have. Without
//: fonts that have them the panel speaks English.
constexpr const char *Letters = QT_TRANSLATE_NOOP("Language", "-");

/// Whether the locale for messages is one of a language. LANGUAGE counts only then, as everywhere.
bool isLocaleSet()
{
    for (const char *pVariable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QByteArray locale = qgetenv(pVariable);
        if (!locale.isEmpty()) {
            return locale != "C" && locale != "POSIX" && !locale.startsWith("C.");
        }
    }
    return false;
}

/// "de_AT" and then "de", for each wanted language.
QStringList wantedLanguages()
{
    QStringList names;
    if (isLocaleSet()) {
        const QStringList wanted = QLocale::system().uiLanguages();
        for (QString name : wanted) {
            name.replace(u'-', u'_');
            names << name << name.section(u'_', 0, 0);
        }
    }
    names.removeDuplicates();
    return names;
}

} // namespace

bool hasLetters(const QFont &font, const QString &text)
{
    const QFontMetrics metrics(font);
    const auto letters = text.toUcs4();
    if (std::all_of(letters.cbegin(), letters.cend(),
                    [&metrics](uint letter) { return metrics.inFontUcs4(letter); })) {
        return true;
    }
    QTextLayout layout(text, font); // looks for fonts that stand in
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    return std::none_of(runs.cbegin(), runs.cend(),
                        [](const QGlyphRun &run) { return run.glyphIndexes().contains(0); });
}

void installLanguage()
{
    registerTranslations();
    const QStringList wanted = wantedLanguages();
    for (const QString &name : wanted) {
        if (name == Source) {
            return;
        }
        const QString file = QString(TranslationFile).arg(name);
        auto pTranslator = std::make_unique<QTranslator>();
        if (!QFile::exists(file) || !pTranslator->load(file)) {
            continue;
        }
        const QString letters = pTranslator->translate("Language", Letters);
        QFont font = QGuiApplication::font();
        font.setBold(true); // as nearly all texts: it is opened anyway
        if (!hasLetters(font, letters)) {
            qWarning("The fonts lack letters of the language \"%s\": the panel speaks English",
                     qPrintable(name));
            return;
        }
        pTranslator->setParent(QCoreApplication::instance());
        QCoreApplication::installTranslator(pTranslator.release());
        return;
    }
}
