#include "platform/regularfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

/// Between a file's name and the random end of the temporary file beside it.
constexpr auto StrayMark = QLatin1String(".panel-");
constexpr int NewFileMode = 0600;
constexpr int PermissionBits = 07777;
/// Of an open() that no FIFO and no device holds up.
constexpr int ReadOnlyFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

/// An open descriptor, closed at its end. errno is what it was before the closing.
class Descriptor
{
public:
    explicit Descriptor(int opened) : nFd(opened) { }
    ~Descriptor() { close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return nFd; }
    bool isOpen() const { return nFd >= 0; }
    /// False when the file system reports only now that a write has failed.
    bool close()
    {
        const int nError = errno;
        const bool bClosed = nFd < 0 || ::close(std::exchange(nFd, -1)) == 0;
        if (bClosed) {
            errno = nError;
        }
        return bClosed;
    }

private:
    int nFd;
};

bool writeAll(int fd, const QByteArray &content)
{
    qsizetype nDone = 0;
    while (nDone < content.size()) {
        const ssize_t nWritten = write(fd, content.constData() + nDone,
                                       static_cast<std::size_t>(content.size() - nDone));
        if (nWritten < 0 && errno == EINTR) {
            continue;
        }
        if (nWritten <= 0) {
            errno = nWritten == 0 ? ENOSPC : errno;
            return false;
        }
        nDone += nWritten;
    }
    return true;
}

FileContent unreadable(int error)
{
    return {FileContent::Unreadable, {}, qt_error_string(error)};
}

FileContent readAll(int fd, qint64 limit)
{
    QByteArray content;
    char piece[16384];
    for (;;) {
        const ssize_t nRead = read(fd, piece, sizeof(piece));
        if (nRead < 0 && errno == EINTR) {
            continue;
        }
        if (nRead < 0) {
            return unreadable(errno);
        }
        if (nRead == 0) {
            return {FileContent::Readable, content, {}};
        }
        content.append(piece, nRead);
        if (content.size() > limit) {
            return unreadable(EFBIG);
        }
    }
}

/// Writes, syncs and closes the new file at \a path; unlinks it when that fails.
bool fillNewFile(int fd, const QByteArray &path, const QByteArray &content)
{
    Descriptor descriptor(fd);
    if (writeAll(fd, content) && fsync(fd) == 0 && descriptor.close()) {
        return true;
    }
    const int nError = errno;
    unlink(path.constData());
    errno = nError;
    return false;
}

/// Names of the temporary files of \a path, without their folder.
QStringList strayFiles(const QFileInfo &file)
{
    const QString pattern = file.fileName() + StrayMark + QLatin1Char('*');
    return QDir(file.path()).entryList({pattern}, QDir::Files | QDir::Hidden | QDir::System);
}

/// A new file of \a content, made and synced beside \a path and renamed over it.
bool renameNewFile(const QString &path, const QByteArray &content, int mode)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (lstat(name.constData(), &status) == 0 && S_ISREG(status.st_mode)) {
        mode = static_cast<int>(status.st_mode) & PermissionBits;
    }
    QByteArray beside = QFile::encodeName(path + StrayMark) + "XXXXXX";
    const int nFd = mkostemp(beside.data(), O_CLOEXEC);
    if (nFd < 0) {
        return false;
    }
    fchmod(nFd, static_cast<mode_t>(mode)); // one that is too strict is still a whole file
    if (!fillNewFile(nFd, beside, content)) {
        return false;
    }
    if (rename(beside.constData(), name.constData()) != 0) {
        const int nError = errno;
        unlink(beside.constData());
        errno = nError;
        return false;
    }
    return true;
}

} // namespace

FileContent readRegularFile(const QString &path, Links links, qint64 limit)
{
    const QByteArray name = QFile::encodeName(path);
    const int nFollow = links == Links::Follow ? 0 : O_NOFOLLOW;
    const Descriptor descriptor(open(name.constData(), ReadOnlyFlags | nFollow));
    if (!descriptor.isOpen()) {
        const bool bAbsent = errno == ENOENT || errno == ENOTDIR;
        return bAbsent ? FileContent() : unreadable(errno);
    }
    struct stat status = {};
    if (fstat(descriptor.get(), &status) != 0) {
        return unreadable(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return {FileContent::Unreadable, {}, QStringLiteral("not a regular file")};
    }
    return readAll(descriptor.get(), limit);
}

bool isRequested(const QString &path)
{
    static QSet<QString> stuck;
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (lstat(name.constData(), &status) != 0) {
        stuck.remove(path);
        return false;
    }
    if (S_ISREG(status.st_mode)) {
        return Descriptor(open(name.constData(), ReadOnlyFlags | O_NOFOLLOW)).isOpen();
    }
    if (stuck.contains(path)) {
        return false;
    }
    if (removeName(path)) {
        qWarning("%s is no file and so no request: removed", qPrintable(path));
    } else {
        qWarning("%s is no file and so no request, and cannot be removed: %s", qPrintable(path),
                 qPrintable(qt_error_string(errno)));
        stuck.insert(path);
    }
    return false;
}

bool removeName(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    if (unlink(name.constData()) == 0 || errno == ENOENT || errno == ENOTDIR) {
        return true;
    }
    // Linux says EISDIR, others EPERM.
    const int nError = errno;
    if ((nError == EISDIR || nError == EPERM) && rmdir(name.constData()) == 0) {
        return true;
    }
    if (errno == ENOTDIR) {
        errno = nError; // no folder: what the first call said is the reason
    }
    return false;
}

bool isWritableName(const QString &path)
{
    return faccessat(AT_FDCWD, QFile::encodeName(path).constData(), W_OK,
                     AT_EACCESS | AT_SYMLINK_NOFOLLOW)
        == 0;
}

bool writeNewFile(const QString &path, const QByteArray &content)
{
    if (!removeName(path)) {
        return false;
    }
    const QByteArray name = QFile::encodeName(path);
    const int nFd =
        open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, NewFileMode);
    return nFd >= 0 && fillNewFile(nFd, name, content);
}

bool replaceFile(const QString &path, const QByteArray &content, int mode)
{
    if (!renameNewFile(path, content, mode)) {
        return false;
    }
    // The name may still be the old file's after a power cut, which is a whole file, too.
    syncFolderOf(path);
    return true;
}

bool replaceFileForGood(const QString &path, const QByteArray &content, int mode)
{
    return renameNewFile(path, content, mode) && syncFolderOf(path);
}

bool syncFolderOf(const QString &path)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(path).path());
    const Descriptor descriptor(open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor.isOpen() && fsync(descriptor.get()) == 0;
}

bool hasStrayFiles(const QString &path)
{
    return !strayFiles(QFileInfo(path)).isEmpty();
}

void removeStrayFiles(const QString &path)
{
    const QFileInfo file(path);
    const QStringList strays = strayFiles(file);
    for (const QString &stray : strays) {
        removeName(file.path() + QLatin1Char('/') + stray);
    }
}
