#include "platform/tslibdevice.h"

#include "platform/touchscreenpaths.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <tslib.h>

tsdev *openTslibDevice(bool nonBlocking)
{
    // tslib opens for reading and writing, so not even a FIFO without a writer blocks.
    tsdev *pDevice =
        ts_open(QFile::encodeName(touchscreenDevice()).constData(), nonBlocking ? 1 : 0);
    if (pDevice) {
        fcntl(ts_fd(pDevice), F_SETFD, FD_CLOEXEC);
    }
    return pDevice;
}

bool releaseGrab(tsdev *device)
{
    // tslib does not learn of it: when it closes the device it prints "Unable to un-grab".
    return ioctl(ts_fd(device), EVIOCGRAB, 0UL) == 0;
}

bool takeGrab(tsdev *device)
{
    // One that has been unplugged is found out by the next read.
    return ioctl(ts_fd(device), EVIOCGRAB, 1UL) == 0 || errno == ENODEV;
}

std::optional<bool> isTouched(tsdev *device)
{
    std::array<unsigned char, KEY_MAX / 8 + 1> keys{};
    if (ioctl(ts_fd(device), EVIOCGKEY(keys.size()), keys.data()) < 0) {
        return std::nullopt;
    }
    return (keys[BTN_TOUCH / 8] >> BTN_TOUCH % 8 & 1) != 0;
}
