// For the tests. pseudolanguage IN.ts OUT.ts PERCENT: translates every text of IN.ts into a
// language that nobody speaks, but that everybody can read: in brackets, with accents, and PERCENT
// longer. A text on the screen without brackets is one that cannot be translated.

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <cstdio>

namespace {

QString accented(const QString &text)
{
    static const QString plain = QStringLiteral("aceinouyACEINOU");
    static const QString accents = QStringLiteral("àçéîñöüÿÀÇÉÎÑÖÜ");
    QString result = text;
    for (QChar &c : result) {
        const auto nPlace = plain.indexOf(c);
        c = nPlace >= 0 ? accents[nPlace] : c;
    }
    return result;
}

/// Letters that make a text of \a nLength longer by \a nPercent, in words where it has words.
QString padding(qsizetype nLength, bool bWords, int nPercent)
{
    QString result;
    for (qsizetype nLeft = (nLength * nPercent + 99) / 100; nLeft > 0; --nLeft) {
        constexpr int Word = 7;
        result += bWords && result.size() % Word == 0 ? u' ' : u'ø';
    }
    return result;
}

/// A piece without markup. Blanks around it, a colon behind it and what holds no letters stay.
QString pseudo(const QString &piece, int nPercent)
{
    static const QRegularExpression parts(QStringLiteral("^(\\s*)(.*?)(:?\\s*)$"));
    static const QRegularExpression letters(QStringLiteral("[A-Za-z]{2}"));
    const QRegularExpressionMatch match = parts.match(piece);
    const QString text = match.captured(2);
    if (!letters.match(text).hasMatch()) {
        return piece;
    }
    return match.captured(1) + u'[' + accented(text)
        + padding(text.size(), text.contains(u' '), nPercent) + u']' + match.captured(3);
}

/// The pieces of \a source between tags, and on both sides of a title's colon, each for itself.
QString translation(const QString &source, int nPercent)
{
    static const QRegularExpression border(QStringLiteral("<[^>]*>|: (?=[A-Z])"));
    QString result;
    qsizetype nStart = 0;
    for (auto it = border.globalMatch(source); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        result +=
            pseudo(source.mid(nStart, match.capturedStart() - nStart), nPercent) + match.captured();
        nStart = match.capturedEnd();
    }
    return result + pseudo(source.mid(nStart), nPercent);
}

bool translate(QFile &in, QFile &out, int nPercent)
{
    QXmlStreamReader reader(&in);
    QXmlStreamWriter writer(&out);
    QString source;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == u"source") {
            source = reader.readElementText();
            writer.writeTextElement("source", source);
        } else if (reader.isStartElement() && reader.name() == u"translation") {
            reader.readElementText();
            writer.writeTextElement("translation", translation(source, nPercent));
        } else if (!reader.atEnd()) {
            writer.writeCurrentToken(reader);
        }
    }
    return !reader.hasError() && !writer.hasError();
}

} // namespace

int main(int argc, char **argv)
{
    const int nPercent = argc == 4 ? atoi(argv[3]) : 0;
    if (nPercent <= 0) {
        std::fprintf(stderr, "usage: pseudolanguage IN.ts OUT.ts PERCENT\n");
        return 2;
    }
    QFile in(QFile::decodeName(argv[1]));
    QFile out(QFile::decodeName(argv[2]));
    if (!in.open(QFile::ReadOnly) || !out.open(QFile::WriteOnly) || !translate(in, out, nPercent)) {
        std::fprintf(stderr, "pseudolanguage: cannot translate %s to %s\n", argv[1], argv[2]);
        return 1;
    }
    return 0;
}
