#include "tests/faults/filefaults.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

using FileFaults::Fault;
using FileFaults::Journal;
using FileFaults::Record;

namespace {

struct Plan
{
    std::string folder;
    Fault fault = Fault::None;
    int nCall = 0;
    Journal *pJournal = nullptr;
    bool bCutShort = false; ///< a write has been, on the full disk
};
Plan plan;
std::atomic<bool> bArmed;

/// The C library's own \a name.
template <typename Function>
Function *behind(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/// What a call does to the disk.
enum class Effect { None, Change, TakesRoom };

/// \a path behind the watched folder; empty when it is not watched.
std::string watchedPart(const std::string &path)
{
    if (path.compare(0, plan.folder.size(), plan.folder) != 0 || path[plan.folder.size()] != '/') {
        return {};
    }
    const std::string part = path.substr(plan.folder.size());
    for (const char *other : {"/simulator/", "/dev/", "/proc/", "/etc/ts.conf"}) {
        if (part.compare(0, std::strlen(other), other) == 0) {
            return {};
        }
    }
    return part;
}

std::string watchedFile(int fd)
{
    if (!bArmed) {
        return {};
    }
    char path[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return length > 0 ? watchedPart({path, static_cast<std::size_t>(length)}) : std::string();
}

std::string watchedName(int folder, const char *path)
{
    if (!bArmed || !path) {
        return {};
    }
    if (path[0] == '/' || folder == AT_FDCWD) {
        return watchedPart(path);
    }
    return watchedFile(folder) + '/' + path;
}

/// Whether the plan strikes call number \a nCall.
bool isStruck(int nCall, Effect effect)
{
    switch (plan.fault) {
    case Fault::None:
        return false;
    case Fault::Once:
        return nCall == plan.nCall;
    case Fault::DiskFull:
        return nCall >= plan.nCall && effect == Effect::TakesRoom;
    case Fault::DiskDead:
        return nCall >= plan.nCall;
    case Fault::Kill:
        // Before any other call the disk is as it is before the next that changes it.
        return nCall >= plan.nCall && effect != Effect::None;
    }
    return false;
}

/// Counts the call on a watched file and tells whether it is to fail; errno is then set.
bool fails(const char *call, const std::string &file, Effect effect)
{
    Journal &journal = *plan.pJournal;
    const int nCall = ++journal.nCalls;
    if (!isStruck(nCall, effect)) {
        return false;
    }
    if (journal.nFirstFault == 0) {
        journal.nFirstFault = nCall;
        std::snprintf(journal.faultyCall, sizeof journal.faultyCall, "%s %s", call, file.c_str());
    }
    if (plan.fault == Fault::Kill) {
        kill(getpid(), SIGKILL);
    }
    errno = effect == Effect::TakesRoom && plan.fault != Fault::DiskDead ? ENOSPC : EIO;
    return true;
}

// ---- the journal --------------------------------------------------------------------------------

Record *newRecord(Record::Kind kind, const std::string &path)
{
    Journal &journal = *plan.pJournal;
    if (journal.nRecords == Journal::Capacity || path.size() >= Record::LongestPath) {
        journal.bIncomplete = true;
        return nullptr;
    }
    // Counted when it is whole; there is one thread that changes files.
    Record &record = journal.records[journal.nRecords];
    record.kind = kind;
    std::strcpy(record.path, path.c_str());
    return &record;
}

void note(Record::Kind kind, const std::string &path, std::uint64_t nNode = 0,
          std::uint32_t nSize = 0, const std::string &target = {})
{
    if (Record *pRecord = newRecord(kind, path)) {
        pRecord->nNode = nNode;
        pRecord->nSize = nSize;
        std::strncpy(pRecord->target, target.c_str(), Record::LongestPath - 1);
        ++plan.pJournal->nRecords;
    }
}

struct stat statusOf(int fd)
{
    struct stat status = {};
    fstat(fd, &status);
    return status;
}

void noteContent(int fd, const std::string &path)
{
    static const auto openFile = behind<int(const char *, int, ...)>("open");
    static const auto readFile = behind<ssize_t(int, void *, size_t, off_t)>("pread");
    static const auto closeFile = behind<int(int)>("close");
    Record *pRecord = newRecord(Record::Written, path);
    const int copy =
        openFile(("/proc/self/fd/" + std::to_string(fd)).c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = pRecord ? readFile(copy, pRecord->content, Record::LongestContent, 0) : -1;
    closeFile(copy);
    if (size < 0 || size == Record::LongestContent) {
        plan.pJournal->bIncomplete = true;
        return;
    }
    pRecord->nNode = statusOf(fd).st_ino;
    pRecord->nSize = static_cast<std::uint32_t>(size);
    ++plan.pJournal->nRecords;
}

// ---- calls of one form --------------------------------------------------------------------------

bool exists(int folder, const char *path)
{
    struct stat status = {};
    return fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) == 0;
}

int openIt(int folder, const char *path, int flags, mode_t mode)
{
    static const auto real = behind<int(int, const char *, int, ...)>("openat");
    const std::string file = watchedName(folder, path);
    if (file.empty()) {
        return real(folder, path, flags, mode);
    }
    const bool bNameless = (flags & O_TMPFILE) == O_TMPFILE;
    const bool bCreates = bNameless || ((flags & O_CREAT) != 0 && !exists(folder, path));
    const Effect effect = bCreates ? Effect::TakesRoom
        : (flags & O_TRUNC) != 0   ? Effect::Change
                                   : Effect::None;
    if (fails("open", file, effect)) {
        return -1;
    }
    const int fd = real(folder, path, flags, mode);
    if (fd >= 0 && bCreates) {
        note(Record::Created, bNameless ? std::string() : file, statusOf(fd).st_ino);
    } else if (fd >= 0 && (flags & O_TRUNC) != 0) {
        note(Record::Truncated, file, statusOf(fd).st_ino);
    }
    return fd;
}

int makeTemporary(char *path, int suffix, int flags)
{
    static const auto real = behind<int(char *, int, int)>("mkostemps");
    const std::string file = watchedName(AT_FDCWD, path);
    if (!file.empty() && fails("mkstemp", file, Effect::TakesRoom)) {
        return -1;
    }
    const int fd = real(path, suffix, flags);
    if (!file.empty() && fd >= 0) {
        note(Record::Created, watchedName(AT_FDCWD, path), statusOf(fd).st_ino);
    }
    return fd;
}

/// \a real writes all or, told so, the given number of bytes.
template <typename Real>
ssize_t writeIt(const char *call, int fd, std::size_t size, Real real)
{
    const std::string file = watchedFile(fd);
    if (file.empty()) {
        return real(size);
    }
    if (fails(call, file, Effect::TakesRoom)) {
        if (plan.fault != Fault::DiskFull || plan.bCutShort || size < 2) {
            return -1;
        }
        plan.bCutShort = true;
        size /= 2;
    }
    const ssize_t result = real(size);
    if (result > 0) {
        noteContent(fd, file);
    }
    return result;
}

template <typename Real>
ssize_t readIt(const char *call, int fd, Real real)
{
    const std::string file = watchedFile(fd);
    return !file.empty() && fails(call, file, Effect::None) ? -1 : real();
}

/// Noted, not done: what is certain is the journal's to know, and a real sync takes its time.
template <typename Real>
int syncIt(const char *call, int fd, Real real)
{
    const std::string file = watchedFile(fd);
    if (file.empty()) {
        return real(fd);
    }
    // Room is found only now where the file system has put that off.
    if (fails(call, file, Effect::TakesRoom)) {
        return -1;
    }
    const struct stat status = statusOf(fd);
    note(S_ISDIR(status.st_mode) ? Record::FolderSynced : Record::Synced, file, status.st_ino);
    return 0;
}

int renameIt(int fromFolder, const char *from, int toFolder, const char *to, unsigned flags)
{
    static const auto real =
        behind<int(int, const char *, int, const char *, unsigned)>("renameat2");
    const std::string file = watchedName(fromFolder, from);
    const std::string target = watchedName(toFolder, to);
    if (!file.empty() && fails("rename", file, Effect::TakesRoom)) {
        return -1;
    }
    const int result = real(fromFolder, from, toFolder, to, flags);
    if (!file.empty() && result == 0) {
        note(Record::Renamed, file, 0, 0, target);
    }
    return result;
}

int linkIt(int fromFolder, const char *from, int toFolder, const char *to, int flags)
{
    static const auto real = behind<int(int, const char *, int, const char *, int)>("linkat");
    const std::string target = watchedName(toFolder, to);
    if (!target.empty() && fails("link", target, Effect::TakesRoom)) {
        return -1;
    }
    const int result = real(fromFolder, from, toFolder, to, flags);
    struct stat status = {};
    if (!target.empty() && result == 0 && fstatat(toFolder, to, &status, 0) == 0) {
        note(Record::Linked, watchedName(fromFolder, from), status.st_ino, 0, target);
    }
    return result;
}

int unlinkIt(const char *call, int folder, const char *path, int flags)
{
    static const auto real = behind<int(int, const char *, int)>("unlinkat");
    const std::string file = watchedName(folder, path);
    if (!file.empty() && fails(call, file, Effect::Change)) {
        return -1;
    }
    const int result = real(folder, path, flags);
    if (!file.empty() && result == 0) {
        note(Record::Unlinked, file);
    }
    return result;
}

template <typename Real>
int truncateIt(int fd, off64_t size, Real real)
{
    const std::string file = watchedFile(fd);
    if (!file.empty() && fails("ftruncate", file, Effect::Change)) {
        return -1;
    }
    const int result = real();
    if (!file.empty() && result == 0) {
        note(Record::Truncated, file, statusOf(fd).st_ino, static_cast<std::uint32_t>(size));
    }
    return result;
}

mode_t modeArgument(int flags, va_list arguments)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

void FileFaults::arm(const char *folder, Fault fault, int nCall, Journal *pJournal)
{
    bArmed = false;
    char canonical[PATH_MAX];
    plan = {realpath(folder, canonical) ? canonical : folder, fault, nCall, pJournal};
    pJournal->nCalls = pJournal->nFirstFault = pJournal->nRecords = 0;
    pJournal->bIncomplete = false;
    pJournal->faultyCall[0] = '\0';
    bArmed = true;
}

void FileFaults::disarm()
{
    bArmed = false;
}

void FileFaults::mark()
{
    if (bArmed) {
        note(Record::Marked, {});
    }
}

// ---- what the program calls ---------------------------------------------------------------------

// Under names of their own, so that the C library's declarations do not matter; the linker sees the
// name in brackets.
#define PANEL_CALL(name) __asm__(#name)
#define PANEL_OPEN(name, symbol)                                   \
    int name(const char *path, int flags, ...) PANEL_CALL(symbol); \
    int name(const char *path, int flags, ...)                     \
    {                                                              \
        va_list arguments;                                         \
        va_start(arguments, flags);                                \
        const mode_t mode = modeArgument(flags, arguments);        \
        va_end(arguments);                                         \
        return openIt(AT_FDCWD, path, flags, mode);                \
    }
#define PANEL_OPENAT(name, symbol)                                             \
    int name(int folder, const char *path, int flags, ...) PANEL_CALL(symbol); \
    int name(int folder, const char *path, int flags, ...)                     \
    {                                                                          \
        va_list arguments;                                                     \
        va_start(arguments, flags);                                            \
        const mode_t mode = modeArgument(flags, arguments);                    \
        va_end(arguments);                                                     \
        return openIt(folder, path, flags, mode);                              \
    }
/// A function \a name, seen as \a symbol, of the parameters and body that follow.
#define PANEL_DEFINE(result, name, symbol, parameters) \
    result name parameters PANEL_CALL(symbol);         \
    result name parameters

extern "C" {

PANEL_OPEN(panelOpen, open)
PANEL_OPEN(panelOpen64, open64)
PANEL_OPENAT(panelOpenat, openat)
PANEL_OPENAT(panelOpenat64, openat64)

PANEL_DEFINE(int, panelOpen2, __open_2, (const char *path, int flags))
{
    return openIt(AT_FDCWD, path, flags, 0);
}
PANEL_DEFINE(int, panelOpen642, __open64_2, (const char *path, int flags))
{
    return openIt(AT_FDCWD, path, flags, 0);
}
PANEL_DEFINE(int, panelCreat, creat, (const char *path, mode_t mode))
{
    return openIt(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}
PANEL_DEFINE(int, panelCreat64, creat64, (const char *path, mode_t mode))
{
    return openIt(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}
PANEL_DEFINE(int, panelMkstemp, mkstemp, (char *path))
{
    return makeTemporary(path, 0, 0);
}
PANEL_DEFINE(int, panelMkstemp64, mkstemp64, (char *path))
{
    return makeTemporary(path, 0, 0);
}
PANEL_DEFINE(int, panelMkostemp, mkostemp, (char *path, int flags))
{
    return makeTemporary(path, 0, flags);
}
PANEL_DEFINE(int, panelMkostemp64, mkostemp64, (char *path, int flags))
{
    return makeTemporary(path, 0, flags);
}

PANEL_DEFINE(ssize_t, panelWrite, write, (int fd, const void *data, size_t size))
{
    static const auto real = behind<ssize_t(int, const void *, size_t)>("write");
    return writeIt("write", fd, size, [=](size_t part) { return real(fd, data, part); });
}
PANEL_DEFINE(ssize_t, panelPwrite, pwrite, (int fd, const void *data, size_t size, off_t offset))
{
    static const auto real = behind<ssize_t(int, const void *, size_t, off_t)>("pwrite");
    return writeIt("pwrite", fd, size, [=](size_t part) { return real(fd, data, part, offset); });
}
PANEL_DEFINE(ssize_t, panelPwrite64, pwrite64,
             (int fd, const void *data, size_t size, off64_t offset))
{
    static const auto real = behind<ssize_t(int, const void *, size_t, off64_t)>("pwrite64");
    return writeIt("pwrite", fd, size, [=](size_t part) { return real(fd, data, part, offset); });
}
PANEL_DEFINE(ssize_t, panelWritev, writev, (int fd, const iovec *pieces, int count))
{
    static const auto real = behind<ssize_t(int, const iovec *, int)>("writev");
    // Cut short by whole pieces.
    return writeIt("writev", fd, static_cast<size_t>(count),
                   [=](size_t part) { return real(fd, pieces, static_cast<int>(part)); });
}

PANEL_DEFINE(ssize_t, panelRead, read, (int fd, void *data, size_t size))
{
    static const auto real = behind<ssize_t(int, void *, size_t)>("read");
    return readIt("read", fd, [=] { return real(fd, data, size); });
}
PANEL_DEFINE(ssize_t, panelReadChecked, __read_chk,
             (int fd, void *data, size_t size, size_t capacity))
{
    static const auto real = behind<ssize_t(int, void *, size_t, size_t)>("__read_chk");
    return readIt("read", fd, [=] { return real(fd, data, size, capacity); });
}
PANEL_DEFINE(ssize_t, panelPread, pread, (int fd, void *data, size_t size, off_t offset))
{
    static const auto real = behind<ssize_t(int, void *, size_t, off_t)>("pread");
    return readIt("pread", fd, [=] { return real(fd, data, size, offset); });
}
PANEL_DEFINE(ssize_t, panelPread64, pread64, (int fd, void *data, size_t size, off64_t offset))
{
    static const auto real = behind<ssize_t(int, void *, size_t, off64_t)>("pread64");
    return readIt("pread", fd, [=] { return real(fd, data, size, offset); });
}

PANEL_DEFINE(int, panelFsync, fsync, (int fd))
{
    return syncIt("fsync", fd, behind<int(int)>("fsync"));
}
PANEL_DEFINE(int, panelFdatasync, fdatasync, (int fd))
{
    return syncIt("fdatasync", fd, behind<int(int)>("fdatasync"));
}
PANEL_DEFINE(int, panelClose, close, (int fd))
{
    static const auto real = behind<int(int)>("close");
    const std::string file = watchedFile(fd);
    if (file.empty()) {
        return real(fd);
    }
    const bool bFails = fails("close", file, Effect::None);
    const int nError = errno;
    const int result = real(fd); // Linux closes it, whatever it reports
    errno = bFails ? nError : errno;
    return bFails ? -1 : result;
}

PANEL_DEFINE(int, panelRename, rename, (const char *from, const char *to))
{
    return renameIt(AT_FDCWD, from, AT_FDCWD, to, 0);
}
PANEL_DEFINE(int, panelRenameat, renameat,
             (int fromFolder, const char *from, int toFolder, const char *to))
{
    return renameIt(fromFolder, from, toFolder, to, 0);
}
PANEL_DEFINE(int, panelRenameat2, renameat2,
             (int fromFolder, const char *from, int toFolder, const char *to, unsigned flags))
{
    return renameIt(fromFolder, from, toFolder, to, flags);
}
PANEL_DEFINE(int, panelLink, link, (const char *from, const char *to))
{
    return linkIt(AT_FDCWD, from, AT_FDCWD, to, 0);
}
PANEL_DEFINE(int, panelLinkat, linkat,
             (int fromFolder, const char *from, int toFolder, const char *to, int flags))
{
    return linkIt(fromFolder, from, toFolder, to, flags);
}
PANEL_DEFINE(int, panelUnlink, unlink, (const char *path))
{
    return unlinkIt("unlink", AT_FDCWD, path, 0);
}
PANEL_DEFINE(int, panelUnlinkat, unlinkat, (int folder, const char *path, int flags))
{
    return unlinkIt("unlink", folder, path, flags);
}
PANEL_DEFINE(int, panelRmdir, rmdir, (const char *path))
{
    return unlinkIt("rmdir", AT_FDCWD, path, AT_REMOVEDIR);
}
PANEL_DEFINE(int, panelRemove, remove, (const char *path))
{
    struct stat status = {};
    const bool bFolder = lstat(path, &status) == 0 && S_ISDIR(status.st_mode);
    return unlinkIt("remove", AT_FDCWD, path, bFolder ? AT_REMOVEDIR : 0);
}

PANEL_DEFINE(int, panelFtruncate, ftruncate, (int fd, off_t size))
{
    static const auto real = behind<int(int, off_t)>("ftruncate");
    return truncateIt(fd, size, [=] { return real(fd, size); });
}
PANEL_DEFINE(int, panelFtruncate64, ftruncate64, (int fd, off64_t size))
{
    static const auto real = behind<int(int, off64_t)>("ftruncate64");
    return truncateIt(fd, size, [=] { return real(fd, size); });
}
PANEL_DEFINE(int, panelChmod, chmod, (const char *path, mode_t mode))
{
    static const auto real = behind<int(const char *, mode_t)>("chmod");
    const std::string file = watchedName(AT_FDCWD, path);
    return !file.empty() && fails("chmod", file, Effect::None) ? -1 : real(path, mode);
}
PANEL_DEFINE(int, panelFchmod, fchmod, (int fd, mode_t mode))
{
    static const auto real = behind<int(int, mode_t)>("fchmod");
    const std::string file = watchedFile(fd);
    return !file.empty() && fails("fchmod", file, Effect::None) ? -1 : real(fd, mode);
}

} // extern "C"
