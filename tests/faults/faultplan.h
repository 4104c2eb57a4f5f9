#pragma once

#include "tests/faults/filefaults.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

/// Which calls of this process are watched and which of them fails, and the journal of the others.
/// Of the library alone.
namespace FaultPlan {

using FileFaults::Fault;
using FileFaults::Journal;
using FileFaults::Record;

struct Plan
{
    std::string folder;
    Fault fault = Fault::None;
    int nCall = 0;
    Journal *pJournal = nullptr;
    bool bCutShort = false; ///< a write has been, on the full disk
};
inline Plan plan;
inline std::atomic<bool> bArmed;

/// The C library's own \a name.
template <typename Function>
Function *behind(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/// What a call does to the disk.
enum class Effect { None, Change, TakesRoom };

/// \a path behind the watched folder; empty when it is not watched.
inline std::string watchedPart(const std::string &path)
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

inline std::string watchedFile(int fd)
{
    if (!bArmed) {
        return {};
    }
    char path[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return length > 0 ? watchedPart({path, static_cast<std::size_t>(length)}) : std::string();
}

inline std::string watchedName(const char *path)
{
    return bArmed && path ? watchedPart(path) : std::string();
}

/// Whether the plan strikes call number \a nCall.
inline bool isStruck(int nCall, Effect effect)
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
inline bool fails(const char *call, const std::string &file, Effect effect)
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

inline Record *newRecord(Record::Kind kind, const std::string &path)
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

inline void note(Record::Kind kind, const std::string &path, std::uint64_t nNode = 0,
                 std::uint32_t nSize = 0, const std::string &target = {})
{
    if (Record *pRecord = newRecord(kind, path)) {
        pRecord->nNode = nNode;
        pRecord->nSize = nSize;
        std::strncpy(pRecord->target, target.c_str(), Record::LongestPath - 1);
        ++plan.pJournal->nRecords;
    }
}

inline struct stat statusOf(int fd)
{
    struct stat status = {};
    fstat(fd, &status);
    return status;
}

inline void noteContent(int fd, const std::string &path)
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

} // namespace FaultPlan
