#include "platform/memoryfile.h"

#include <cerrno>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Two contents can come to the same name within one tick of the clock: who keeps what it has read
/// before (QSettings does) must see from the time that it is another file.
bool stampAnew(int fd)
{
    static time_t nStamp = 0;
    const timespec stamp = {++nStamp, 0};
    const timespec stamps[] = {stamp, stamp}; // of access, of change
    return futimens(fd, stamps) == 0;
}

bool fill(int fd, const QByteArray &content)
{
    ssize_t nWritten = 0;
    do {
        nWritten = write(fd, content.constData(), static_cast<std::size_t>(content.size()));
    } while (nWritten < 0 && errno == EINTR);
    return nWritten == content.size();
}

} // namespace

MemoryFile::MemoryFile(const QByteArray &content) : nFd(memfd_create("panel", MFD_CLOEXEC))
{
    if (nFd >= 0 && !(fill(nFd, content) && stampAnew(nFd))) {
        close(nFd);
        nFd = -1;
    }
}

MemoryFile::~MemoryFile()
{
    if (nFd >= 0) {
        close(nFd);
    }
}

QString MemoryFile::path() const
{
    return isValid() ? QStringLiteral("/proc/self/fd/%1").arg(nFd) : nowhere();
}

QString MemoryFile::nowhere()
{
    return QStringLiteral("/dev/null/nowhere");
}
