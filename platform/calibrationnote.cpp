#include "platform/calibrationnote.h"

#include <QCryptographicHash>
#include <QFile>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// A line of words, then the old content to the end of the file. The words: the old file's state,
/// the digest of its content, and the digest of each content that runs have put in its place.
constexpr char WordSeparator = ' ';
constexpr char LineEnd = '\n';
constexpr qsizetype LeastWords = 3;
constexpr qint64 FirstLineLimit = 1 << 16;
constexpr qint64 SizeLimit = ConfigurationLimit + FirstLineLimit;

/// In the order of FileContent::State.
constexpr std::array<const char *, 3> StateWords{"absent", "readable", "unreadable"};

QByteArray digest(const QByteArray &content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex();
}

/// Empties the file at \a path, synced, without following or blocking.
bool makeEmpty(const QString &path)
{
    const int nFd = open(QFile::encodeName(path).constData(),
                         O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (nFd < 0) {
        return false;
    }
    struct stat status = {};
    const bool bEmpty = fstat(nFd, &status) == 0 && S_ISREG(status.st_mode)
        && ftruncate(nFd, 0) == 0 && fsync(nFd) == 0;
    return close(nFd) == 0 && bEmpty;
}

} // namespace

CalibrationNote::CalibrationNote(const QString &calibrationFile)
    : sPath(calibrationFile + QStringLiteral(".unaccepted"))
{ }

bool CalibrationNote::exists() const
{
    struct stat status = {};
    return lstat(QFile::encodeName(sPath).constData(), &status) == 0
        || (errno != ENOENT && errno != ENOTDIR);
}

bool CalibrationNote::isUnreadable() const
{
    struct stat status = {};
    return lstat(QFile::encodeName(sPath).constData(), &status) == 0 && S_ISREG(status.st_mode)
        && status.st_size <= SizeLimit
        && readRegularFile(sPath, Links::Refuse, SizeLimit).state == FileContent::Unreadable;
}

std::optional<CalibrationNote::Content> CalibrationNote::read() const
{
    const FileContent file = readRegularFile(sPath, Links::Refuse, SizeLimit);
    const qsizetype nLine = file.content.indexOf(LineEnd);
    const QList<QByteArray> words = file.content.left(nLine).split(WordSeparator);
    if (file.state != FileContent::Readable || nLine < 0 || words.size() < LeastWords) {
        return std::nullopt;
    }
    Content content;
    content.before.content = file.content.mid(nLine + 1);
    content.written = words.mid(2);
    for (std::size_t state = 0; state < StateWords.size(); ++state) {
        if (words[0] == StateWords[state] && words[1] == digest(content.before.content)) {
            content.before.state = static_cast<FileContent::State>(state);
            return content;
        }
    }
    return std::nullopt;
}

bool CalibrationNote::write(const FileContent &before, const QByteArray &written) const
{
    QList<QByteArray> words{StateWords[before.state], digest(before.content), digest(written)};
    if (const auto earlier = read(); earlier && earlier->before == before) {
        for (const QByteArray &known : earlier->written) {
            if (!words.contains(known)) {
                words += known;
            }
        }
    }
    return replaceFileForGood(sPath, words.join(WordSeparator) + LineEnd + before.content);
}

std::optional<FileContent> CalibrationNote::replacedBy(const FileContent &present) const
{
    const auto content = read();
    if (present.state != FileContent::Readable || !content
        || !content->written.contains(digest(present.content))) {
        return std::nullopt;
    }
    return content->before;
}

bool CalibrationNote::remove() const
{
    // One that is empty is as good as none: either of the two is enough.
    const bool bEmpty = makeEmpty(sPath);
    return (removeName(sPath) && syncFolderOf(sPath)) || bEmpty;
}
