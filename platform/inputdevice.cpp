#include "platform/inputdevice.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <linux/input.h>
#include <optional>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

std::optional<struct stat> statusOf(const QString &path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return status;
}

bool isSimulated(const struct stat &status)
{
    return S_ISFIFO(status.st_mode) && !qEnvironmentVariableIsEmpty("PANEL_ROOT");
}

/// The descriptor of what speaks the kernel's input protocol, else -1.
int openEventDevice(const QString &path)
{
    // Opening alone does things to some devices (a watchdog starts), so only what may be one.
    const auto status = statusOf(path);
    if (!status || !S_ISCHR(status->st_mode)) {
        return -1;
    }
    const int nFd =
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    int nVersion = 0;
    if (nFd >= 0 && ioctl(nFd, EVIOCGVERSION, &nVersion) != 0) {
        close(nFd);
        return -1;
    }
    return nFd;
}

} // namespace

DeviceIdentity deviceIdentity(const QString &path)
{
    DeviceIdentity identity;
    identity.sTarget = QFileInfo(path).symLinkTarget();
    if (const auto status = statusOf(path)) {
        identity.nNumber = status->st_rdev;
        identity.nFileSystem = status->st_dev;
        identity.nNode = status->st_ino;
    }
    return identity;
}

bool isEventDevice(const QString &path)
{
    const int nFd = openEventDevice(path);
    if (nFd >= 0) {
        close(nFd);
    }
    return nFd >= 0;
}

bool isGrabbed(const QString &path)
{
    const int nFd = openEventDevice(path);
    if (nFd < 0) {
        return false;
    }
    const bool bGrabbed = ioctl(nFd, EVIOCGRAB, 1UL) != 0 && errno == EBUSY;
    close(nFd); // and so gives up the grab, if it was to be had
    return bGrabbed;
}

bool isKeyboard(const QString &path)
{
    const auto status = statusOf(path);
    return (status && isSimulated(*status)) || isEventDevice(path);
}

bool canBeTouchscreen(const QString &path)
{
    constexpr unsigned MemoryDevices = 1; // major number
    const auto status = statusOf(path);
    return status
        && (isSimulated(*status)
            || (S_ISCHR(status->st_mode) && major(status->st_rdev) != MemoryDevices));
}
