#include "infobox/infotext.h"

namespace {
constexpr QLatin1Char Blank(' ');
constexpr QLatin1Char Slash('/');
constexpr QLatin1String Break("<br/>");
} // namespace

QString InfoText::compose(const QString &message, const QString &argument)
{
    const QString placeholder = QStringLiteral("%1");
    QString text = argument;
    if (text.size() >= 2) {
        if (text.startsWith(Blank)) {
            text.remove(0, 1);
        }
        if (text.endsWith(Blank)) {
            text.chop(1);
        }
    }
    const bool bShort = text.size() < 2;
    const bool bGiven = !text.isEmpty() && text != Blank;

    QString result = message;
    if (!message.contains(QLatin1String(" %1")) && !message.contains(QLatin1String("%1 "))
        && !message.contains(QLatin1String("%1.")) && !message.contains(QLatin1String(".%1"))) {
        return message;
    }
    if (message.contains(QLatin1String(" %1 "))) {
        return bGiven ? result.replace(placeholder, text)
                      : result.replace(QLatin1String(" %1 "), QLatin1String(" "));
    }
    if (!bGiven) {
        return result.remove(placeholder);
    }
    if (message.contains(QLatin1String(" %1"))) {
        const bool bEndsSentence = message.contains(QLatin1String(" %1."));
        return result.replace(placeholder, bEndsSentence ? text : text + Blank);
    }
    if (message.contains(QLatin1String("%1 ")) || message.contains(QLatin1String("%1."))) {
        return result.replace(placeholder, text);
    }
    if (message.contains(QLatin1String(".%1"))) {
        // A single character is no sentence of its own.
        if (bShort) {
            return result.remove(placeholder);
        }
        return result.replace(placeholder, text.startsWith(Blank) ? text : Blank + text);
    }
    return result;
}

QString InfoText::wrap(const QString &text, int lineLength)
{
    QString lines;
    qsizetype start = 0;
    while (text.size() - start > lineLength) {
        const QStringView line = QStringView(text).mid(start, lineLength);
        qsizetype length = lineLength; // shown on this line
        qsizetype next = lineLength; // where the next line begins
        if (const auto blank = line.lastIndexOf(Blank); blank >= 0) {
            length = blank;
            next = blank + 1;
        } else if (const auto slash = line.lastIndexOf(Slash); slash >= 0) {
            length = next = slash + 1;
        } else if (lineLength > 1 && line.back().isHighSurrogate()) {
            length = next = lineLength - 1; // one character is not broken into two
        }
        lines += line.first(length).toString().toHtmlEscaped() + Break;
        start += next;
    }
    lines += text.mid(start).toHtmlEscaped();
    return QStringLiteral("<nobr>") + lines + QStringLiteral("</nobr>");
}
