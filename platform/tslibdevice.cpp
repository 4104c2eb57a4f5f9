#include "platform/tslibdevice.h"

#include "platform/touchscreenpaths.h"

#include <QFile>

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

void takeGrab(tsdev *device)
{
    // One that has been unplugged is found out by the next read.
    if (ioctl(ts_fd(device), EVIOCGRAB, 1UL) != 0 && errno != ENODEV) {
        qWarning("Cannot take the touches back from other readers: %s",
                 qPrintable(qt_error_string(errno)));
    }
}
