#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// \file
/// Stands in front of those file calls of the C library that the panel uses, as a preloaded library
/// does: a test program that links it first has it called in place of the C library, by Qt and by
/// the panel alike. While it is armed it counts the calls on files below one folder, has one of
/// them fail, and notes what the others have done to the disk. Processes that the program starts
/// have no part in it.

namespace FileFaults {

enum class Fault : std::uint8_t {
    None,
    Once, ///< the call fails: no space where it takes space, else an input/output error
    DiskFull, ///< from this call on nothing that takes space succeeds; the first write is cut short
    DiskDead, ///< this call and all after it fail with an input/output error
    Kill ///< SIGKILL instead of the next call that changes the disk
};

/// One thing that has happened to the disk. Paths begin behind the watched folder.
struct Record
{
    enum Kind : std::uint8_t {
        Created, ///< \a path is a new, empty file
        Written, ///< \a content is now the whole of the file
        Synced,
        Renamed, ///< \a path to \a target
        Unlinked,
        FolderSynced,
        Marked ///< by mark()
    };
    static constexpr std::size_t LongestPath = 256;
    static constexpr std::size_t LongestContent = 4096;

    Kind kind;
    std::uint64_t nNode; ///< inode number; a new file may have that of one that is gone
    std::uint32_t nSize;
    char path[LongestPath];
    char target[LongestPath];
    char content[LongestContent];
};

/// Lives in memory that the killed process shares with its survivor.
struct Journal
{
    static constexpr int Capacity = 400;

    std::atomic<int> nCalls; ///< that were watched
    std::atomic<int> nFirstFault; ///< number of the first call that failed; 0: none has
    std::atomic<int> nRecords;
    std::atomic<bool> bIncomplete; ///< a call could not be noted
    char faultyCall[Record::LongestPath + 32]; ///< the one that failed first, or killed
    Record records[Capacity];
};

/// Watches the files below \a folder, apart from its simulator, dev, proc and tslib's
/// configuration. Call number \a nCall, from 1, has the \a fault.
void arm(const char *folder, Fault fault, int nCall, Journal *pJournal);
void disarm();
/// Notes how far the program has come.
void mark();

} // namespace FileFaults
