#include "tests/faults/filefaults.h"

#include "tests/faults/faultplan.h"

#include <cstdarg>
#include <cstdlib>
#include <sys/uio.h>

using namespace FaultPlan;

namespace {

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
/// A function \a name, seen as \a symbol, of the parameters and body that follow.
#define PANEL_DEFINE(result, name, symbol, parameters) \
    result name parameters PANEL_CALL(symbol);         \
    result name parameters

extern "C" {

PANEL_DEFINE(int, panelOpen, open, (const char *path, int flags, ...))
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openIt(AT_FDCWD, path, flags, mode);
}
PANEL_DEFINE(int, panelOpenat, openat, (int folder, const char *path, int flags, ...))
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openIt(folder, path, flags, mode);
}

PANEL_DEFINE(int, panelCreat, creat, (const char *path, mode_t mode))
{
    return openIt(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}
PANEL_DEFINE(int, panelMkstemp, mkstemp, (char *path))
{
    return makeTemporary(path, 0, 0);
}
PANEL_DEFINE(int, panelMkostemp, mkostemp, (char *path, int flags))
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

// The same functions once more, for sizes of 64 bits and for checked calls.
static_assert(sizeof(off_t) == sizeof(off64_t));
#ifndef __clang__ // which has no such warning
#pragma GCC diagnostic ignored "-Wattribute-alias"
#endif
#define PANEL_ALIAS(symbol, target) \
    void panelAlso_##symbol() PANEL_CALL(symbol) __attribute__((alias(#target)));
PANEL_ALIAS(open64, open)
PANEL_ALIAS(__open_2, open)
PANEL_ALIAS(__open64_2, open)
PANEL_ALIAS(openat64, openat)
PANEL_ALIAS(creat64, creat)
PANEL_ALIAS(mkstemp64, mkstemp)
PANEL_ALIAS(mkostemp64, mkostemp)
PANEL_ALIAS(pwrite64, pwrite)
PANEL_ALIAS(pread64, pread)
PANEL_ALIAS(ftruncate64, ftruncate)

} // extern "C"
