#include "tests/faults/filefaults.h"

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
#include <unistd.h>

using FileFaults::Fault;
using FileFaults::Journal;
using FileFaults::Record;

namespace {

// ---- which calls are watched, and which of them fails

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
    std::string part = path.substr(plan.folder.size());
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

std::string watchedName(const char *path)
{
    return bArmed && path ? watchedPart(path) : std::string();
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

void note(Record::Kind kind, const std::string &path, std::uint64_t nNode = 0,
          const std::string &target = {})
{
    Journal &journal = *plan.pJournal;
    if (journal.nRecords == Journal::Capacity || path.size() >= Record::LongestPath) {
        journal.bIncomplete = true;
        return;
    }
    Record &record = journal.records[journal.nRecords];
    record.kind = kind;
    record.nNode = nNode;
    std::strcpy(record.path, path.c_str());
    std::strncpy(record.target, target.c_str(), Record::LongestPath - 1);
    ++journal.nRecords; // now that it is whole; there is one thread that changes files
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
    Journal &journal = *plan.pJournal;
    if (journal.nRecords < Journal::Capacity) {
        Record &record = journal.records[journal.nRecords];
        const int copy =
            openFile(("/proc/self/fd/" + std::to_string(fd)).c_str(), O_RDONLY | O_CLOEXEC);
        const ssize_t size = readFile(copy, record.content, Record::LongestContent, 0);
        closeFile(copy);
        record.nSize = static_cast<std::uint32_t>(size);
        journal.bIncomplete = journal.bIncomplete || size < 0 || size == Record::LongestContent;
    }
    note(Record::Written, path, statusOf(fd).st_ino);
}

void noteNothing()
{ }

/// The \a real call on \a file, unless the plan strikes it; \a noted when it has succeeded.
template <typename Real, typename Noted = void (*)()>
auto watched(const char *call, const std::string &file, Effect effect, Real real,
             Noted noted = noteNothing)
{
    decltype(real()) result = -1;
    if (file.empty() || !fails(call, file, effect)) {
        result = real();
        if (!file.empty() && result >= 0) {
            noted();
        }
    }
    return result;
}

/// By \a call, which is unlink or rmdir.
int unlinkIt(const char *call, const char *path)
{
    const std::string file = watchedName(path);
    return watched(
        call, file, Effect::Change, [&] { return behind<int(const char *)>(call)(path); },
        [&] { note(Record::Unlinked, file); });
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

// ---- what the program calls

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
    static const auto real = behind<int(const char *, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const std::string file = watchedName(path);
    struct stat status = {};
    const bool bCreates = !file.empty() && (flags & O_CREAT) != 0 && lstat(path, &status) != 0;
    int fd = -1;
    return watched(
        "open", file, bCreates ? Effect::TakesRoom : Effect::None,
        [&] { return fd = real(path, flags, mode); },
        [&] {
            if (bCreates) {
                note(Record::Created, file, statusOf(fd).st_ino);
            }
        });
}
PANEL_DEFINE(int, panelMkostemp, mkostemp, (char *path, int flags))
{
    static const auto real = behind<int(char *, int)>("mkostemp");
    int fd = -1;
    return watched(
        "mkstemp", watchedName(path), Effect::TakesRoom, [&] { return fd = real(path, flags); },
        [&] { note(Record::Created, watchedName(path), statusOf(fd).st_ino); });
}
PANEL_DEFINE(ssize_t, panelWrite, write, (int fd, const void *data, size_t size))
{
    static const auto real = behind<ssize_t(int, const void *, size_t)>("write");
    const std::string file = watchedFile(fd);
    if (!file.empty() && fails("write", file, Effect::TakesRoom)) {
        if (plan.fault != Fault::DiskFull || plan.bCutShort || size < 2) {
            return -1;
        }
        plan.bCutShort = true;
        size /= 2;
    }
    const ssize_t result = real(fd, data, size);
    if (!file.empty() && result > 0) {
        noteContent(fd, file);
    }
    return result;
}
PANEL_DEFINE(ssize_t, panelRead, read, (int fd, void *data, size_t size))
{
    static const auto real = behind<ssize_t(int, void *, size_t)>("read");
    return watched("read", watchedFile(fd), Effect::None, [=] { return real(fd, data, size); });
}
PANEL_DEFINE(ssize_t, panelReadChecked, __read_chk,
             (int fd, void *data, size_t size, size_t capacity))
{
    static const auto real = behind<ssize_t(int, void *, size_t, size_t)>("__read_chk");
    return watched("read", watchedFile(fd), Effect::None,
                   [=] { return real(fd, data, size, capacity); });
}
/// Noted, not done: what is certain is the journal's to know, and a real sync takes its time.
PANEL_DEFINE(int, panelFsync, fsync, (int fd))
{
    static const auto real = behind<int(int)>("fsync");
    const std::string file = watchedFile(fd);
    // Room is found only now where the file system has put that off.
    return watched(
        "fsync", file, Effect::TakesRoom, [&] { return file.empty() ? real(fd) : 0; },
        [&] {
            const struct stat status = statusOf(fd);
            note(S_ISDIR(status.st_mode) ? Record::FolderSynced : Record::Synced, file,
                 status.st_ino);
        });
}
PANEL_DEFINE(int, panelClose, close, (int fd))
{
    static const auto real = behind<int(int)>("close");
    const int planned = watched("close", watchedFile(fd), Effect::None, [] { return 0; });
    const int nError = errno;
    const int result = real(fd); // Linux closes it, whatever it reports
    errno = planned < 0 ? nError : errno;
    return planned < 0 ? planned : result;
}
PANEL_DEFINE(int, panelRename, rename, (const char *from, const char *to))
{
    static const auto real = behind<int(const char *, const char *)>("rename");
    const std::string file = watchedName(from);
    return watched(
        "rename", file, Effect::TakesRoom, [&] { return real(from, to); },
        [&] { note(Record::Renamed, file, 0, watchedName(to)); });
}
PANEL_DEFINE(int, panelUnlink, unlink, (const char *path))
{
    return unlinkIt("unlink", path);
}
PANEL_DEFINE(int, panelRmdir, rmdir, (const char *path))
{
    return unlinkIt("rmdir", path);
}
PANEL_DEFINE(int, panelFtruncate, ftruncate, (int fd, off_t size))
{
    static const auto real = behind<int(int, off_t)>("ftruncate");
    const std::string file = watchedFile(fd);
    return watched(
        "ftruncate", file, Effect::Change, [&] { return real(fd, size); },
        [&] { noteContent(fd, file); });
}
PANEL_DEFINE(int, panelFchmod, fchmod, (int fd, mode_t mode))
{
    static const auto real = behind<int(int, mode_t)>("fchmod");
    return watched("fchmod", watchedFile(fd), Effect::None, [=] { return real(fd, mode); });
}

// The same functions once more, for sizes of 64 bits and for checked calls.
#ifndef __clang__ // which has no such warning
#pragma GCC diagnostic ignored "-Wattribute-alias"
#endif
#define PANEL_ALIAS(symbol, target) \
    void panelAlso_##symbol() PANEL_CALL(symbol) __attribute__((alias(#target)));
PANEL_ALIAS(open64, open)
PANEL_ALIAS(__open_2, open)
PANEL_ALIAS(__open64_2, open)
PANEL_ALIAS(ftruncate64, ftruncate)

} // extern "C"
