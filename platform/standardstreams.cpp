#include "platform/standardstreams.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void openClosedStreams()
{
    // The lowest free number is the one that is given, so they are filled one after the other.
    int nOpened = 0;
    do {
        nOpened = open("/dev/null", O_RDWR);
    } while (nOpened >= STDIN_FILENO && nOpened <= STDERR_FILENO);
    if (nOpened >= 0) {
        close(nOpened);
    }
}

bool mayBlock(int fd)
{
    struct stat status = {};
    return fstat(fd, &status) == 0
        && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)
            || (S_ISCHR(status.st_mode) && isatty(fd)));
}

bool lead(int fd, int target)
{
    const bool bLed = target >= 0 && dup2(target, fd) == fd; // commands inherit it
    close(target);
    return bLed;
}

/// False where it cannot be opened anew: a socket, a pipe of another user, no /proc.
bool openAnew(int fd)
{
    char path[32];
    std::snprintf(path, sizeof(path), "/proc/self/fd/%d", fd);
    return lead(fd, open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

} // namespace

StandardStreams::StandardStreams()
{
    openClosedStreams();
    std::signal(SIGPIPE, SIG_IGN);
    // Both are looked at before one is changed: they may be the same socket.
    for (Shared &stream : shared) {
        const int nFlags = fcntl(stream.nFd, F_GETFL);
        const bool bReady = nFlags < 0 || (nFlags & O_NONBLOCK) || !mayBlock(stream.nFd);
        stream.nFlags = bReady || openAnew(stream.nFd) ? -1 : nFlags;
    }
    for (const Shared &stream : shared) {
        if (stream.nFlags >= 0) {
            fcntl(stream.nFd, F_SETFL, stream.nFlags | O_NONBLOCK);
        }
    }
}

StandardStreams::~StandardStreams()
{
    for (const Shared &stream : shared) {
        if (stream.nFlags >= 0) {
            fcntl(stream.nFd, F_SETFL, stream.nFlags);
            // What libraries have to say after main() must not wait either.
            lead(stream.nFd, open("/dev/null", O_WRONLY | O_CLOEXEC));
        }
    }
}
