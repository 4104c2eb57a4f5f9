#include "platform/tslibdevice.h"

#include "platform/touchscreenpaths.h"

#include <QFile>

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <tslib.h>

tsdev *openTslibDevice(bool bNonBlocking)
{
    // tslib opens for reading and writing, so not even a FIFO without a writer blocks.
    tsdev *pDevice =
        ts_open(QFile::encodeName(touchscreenDevice()).constData(), bNonBlocking ? 1 : 0);
    if (pDevice) {
        fcntl(ts_fd(pDevice), F_SETFD, FD_CLOEXEC);
    }
    return pDevice;
}

bool releaseGrab(tsdev *pDevice)
{
    return ioctl(ts_fd(pDevice), EVIOCGRAB, 0) == 0;
}

void takeGrab(tsdev *pDevice)
{
    ioctl(ts_fd(pDevice), EVIOCGRAB, 1);
}
