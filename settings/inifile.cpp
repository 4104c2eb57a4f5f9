#include "settings/inifile.h"

#include "platform/devicepath.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr char ByteOrderMark[] = "\xef\xbb\xbf";
/// Stands in front of every copy. QSettings says nothing about a read that fails: then it is gone.
constexpr char Proof[] = "[panel.copy]\nread=1\n";
constexpr auto ProofKey = QLatin1String("panel.copy/read");

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

/// NUL and the other bytes that no text has. Bytes above 127 are text of whatever encoding.
bool isBinary(char c)
{
    constexpr unsigned char Delete = 0x7f;
    const auto byte = static_cast<unsigned char>(c); // a char has a sign on some machines only
    return (byte < ' ' && !isBlank(c)) || byte == Delete;
}

/// Calls \a visit with the first and the end of each line's text, blanks in front skipped.
template <typename Visitor>
void forEachLine(QByteArray &text, Visitor visit)
{
    char *const pEnd = text.data() + text.size();
    for (char *pLine = text.data(); pLine != pEnd;) {
        char *const pText = std::find_if_not(pLine, pEnd, isBlank);
        pLine = std::find_if(pText, pEnd, isLineEnd);
        visit(pText, pLine);
    }
}

/// QSettings knows the comments that begin with ';' and takes others for keys without a value.
void unifyComments(QByteArray &text)
{
    forEachLine(text, [](char *line, const char *end) {
        if (line != end && *line == '#') {
            *line = ';';
        }
    });
}

bool hasGroup(QByteArray &text)
{
    bool bFound = false;
    forEachLine(text, [&](const char *line, const char *end) {
        bFound = bFound || (line != end && *line == '[' && std::find(line, end, ']') != end);
    });
    return bFound;
}

/// The text of \a file without the marks that QSettings takes for something else.
QByteArray plainText(const FileContent &file)
{
    QByteArray text = file.content;
    if (text.startsWith(ByteOrderMark)) {
        text.remove(0, qsizetype(sizeof(ByteOrderMark)) - 1);
    }
    unifyComments(text);
    return text;
}

/// What an accident has left of \a text, in words; empty when there is nothing to be seen.
QString damageOf(QByteArray text)
{
    if (text.isEmpty()) {
        return QStringLiteral("is empty");
    }
    if (std::any_of(text.cbegin(), text.cend(), isBinary)) {
        return QStringLiteral("is not a text");
    }
    // No file that the device makes is without groups: such a one is the beginning of another.
    if (!hasGroup(text)) {
        return QStringLiteral("has no group");
    }
    return {};
}

bool needsQuotes(const QString &value)
{
    const bool bBlankAtEnd = value.startsWith(u' ') || value.endsWith(u' ');
    return bBlankAtEnd || std::any_of(value.cbegin(), value.cend(), [](QChar c) {
               return c == u';' || c == u',' || c == u'=';
           });
}

QString escaped(QString value)
{
    if (value.startsWith(u'@')) {
        value.prepend(u'@'); // QSettings' mark of values that are no text
    }
    const bool bQuoted = needsQuotes(value);
    value.replace(u'\\', QLatin1String("\\\\")).replace(u'"', QLatin1String("\\\""));
    return bQuoted ? u'"' + value + u'"' : value;
}

/// A link that leads nowhere is a file that is not to be had, and not the absence of one: where
/// the settings lie on a file system that is not mounted yet, they have a password all the same.
FileContent contentOf(const QString &path)
{
    FileContent content = readRegularFile(path, Links::Follow);
    if (content.state == FileContent::Absent && QFileInfo(path).isSymLink()) {
        content = {FileContent::Unreadable, {}, QStringLiteral("a link that leads nowhere")};
    }
    return content;
}

/// Whether a backslash at the end of a line is followed by a line that begins a group.
bool continuesIntoGroup(const QByteArray &text)
{
    const char *const pEnd = text.cend();
    for (const char *p = text.cbegin(); (p = std::find(p, pEnd, '\\')) != pEnd;) {
        ++p;
        const char *pNext = p != pEnd && *p == '\r' ? p + 1 : p;
        if (pNext == pEnd || *pNext != '\n') {
            continue;
        }
        pNext = std::find_if_not(pNext + 1, pEnd, [](char c) { return c == ' ' || c == '\t'; });
        if (pNext != pEnd && *pNext == '[') {
            return true;
        }
    }
    return false;
}

} // namespace

IniFile::IniFile(const QString &path, QSettings::Format format)
    : IniFile(contentOf(devicePath(path)), format)
{ }

IniFile::IniFile(const FileContent &file, QSettings::Format format)
    : MemoryFile(Proof + plainText(file)), QSettings(MemoryFile::path(), format)
{
    switch (file.state) {
    case FileContent::Absent:
        return;
    case FileContent::Unreadable:
        current = Unreadable;
        sProblem = QLatin1String("cannot be read: ") + file.sError;
        return;
    case FileContent::Readable:
        judge(plainText(file));
    }
}

// QSettings reads on behind an open quote or a backslash at the end of a line, over groups and
// passwords, and says nothing. A value has then more line breaks than the file has escapes for
// them.
bool IniFile::swallowsLines(const QByteArray &text) const
{
    qsizetype nBreaks = 0;
    const QStringList all = allKeys();
    for (const QString &key : all) {
        const QString joined = value(key).toStringList().join(u',');
        nBreaks += std::count_if(joined.cbegin(), joined.cend(),
                                 [](QChar c) { return c == u'\n' || c == u'\r'; });
    }
    if (nBreaks == 0) {
        return continuesIntoGroup(text);
    }
    static const QRegularExpression escape(
        QStringLiteral("\\\\([nr]|x0*[aAdD](?![0-9a-fA-F])|0*1[25](?![0-7]))"));
    return nBreaks > QString::fromLatin1(text).count(escape) || continuesIntoGroup(text);
}

void IniFile::judge(const QByteArray &text)
{
    allKeys(); // only now all of it is parsed
    if (!contains(ProofKey)) {
        current = Unreadable;
        sProblem = QStringLiteral("cannot be read: no memory");
        return;
    }
    sProblem = damageOf(text);
    if (sProblem.isEmpty() && swallowsLines(text)) {
        sProblem =
            QStringLiteral("has a quote that is never closed, or a line that goes on in a group");
    }
    if (sProblem.isEmpty() && status() != QSettings::NoError) {
        sProblem = QStringLiteral("has lines that are neither groups nor keys");
    }
    current = sProblem.isEmpty() ? Sound : Damaged;
}

QStringList IniFile::keys() const
{
    QStringList all = allKeys();
    all.removeOne(ProofKey);
    return all;
}

QByteArray iniText(const QString &group, QList<IniEntry> entries)
{
    if (entries.isEmpty()) {
        return {};
    }
    std::ranges::sort(entries, {}, &IniEntry::sKey);
    QString text = u'[' + group + QLatin1String("]\n");
    for (const IniEntry &entry : entries) {
        text += entry.sKey + u'=' + escaped(entry.sValue) + u'\n';
    }
    return text.toUtf8();
}
