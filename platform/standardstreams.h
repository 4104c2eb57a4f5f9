#pragma once

#include <array>
#include <unistd.h>

/// Makes standard output and standard error of the process streams that never hold it up: what
/// cannot be written at once because nobody reads is dropped, whoever writes it, this program, a
/// library or a command that it runs. Without a reader at all a message ends nobody.
///
/// Pipes and terminals get an open file description of their own for it, so that nothing changes
/// for others who write there. A socket has only the one that its holders share: its flag is given
/// back at the end. Streams that are closed lead to nowhere, so that no file that is opened later
/// takes their number and gets the messages. One object per process, made first.
class StandardStreams
{
public:
    StandardStreams();
    ~StandardStreams();
    StandardStreams(const StandardStreams &) = delete;
    StandardStreams &operator=(const StandardStreams &) = delete;

private:
    /// A stream whose flags others share, and what they were; -1 where there is nothing to give
    /// back.
    struct Shared
    {
        int nFd;
        int nFlags;
    };
    std::array<Shared, 2> shared{{{STDOUT_FILENO, -1}, {STDERR_FILENO, -1}}};
};
