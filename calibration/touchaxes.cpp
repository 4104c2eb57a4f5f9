#include "calibration/touchaxes.h"

#include <QFile>

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

quint16 maximum(int device, unsigned int axis)
{
    // The call leaves the record untouched where the device is none of the input subsystem.
    input_absinfo info{};
    const int result = ioctl(device, EVIOCGABS(axis), &info);
    return result < 0 ? 0 : static_cast<quint16>(info.maximum);
}

} // namespace

std::optional<TouchAxes> readTouchAxes(const QString &path)
{
    // Non-blocking: opening a FIFO that nobody writes to would wait for a writer.
    const int device = open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0) {
        return std::nullopt;
    }
    const TouchAxes axes{maximum(device, ABS_X), maximum(device, ABS_Y)};
    close(device);
    return axes;
}
