#pragma once

#include "platform/calibrationpairs.h"
#include "tests/support/deviceroot.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// The touchscreen of a device root: a FIFO that real tslib reads, and its ts.conf.
class TouchscreenFifo
{
public:
    explicit TouchscreenFifo(const DeviceRoot &root,
                             const QString &devicePath = "/dev/input/touchscreen")
    {
        root.write("/etc/ts.conf", "module_raw waveshare len=8\nmodule linear\n");
        path = root.path(devicePath);
        root.plant(devicePath, "fifo");
    }
    ~TouchscreenFifo()
    {
        if (nFd >= 0) {
            close(nFd);
        }
    }
    Q_DISABLE_COPY(TouchscreenFifo)

    /// One sample, as a finger at \a point that presses with \a pressure (0: lifted).
    static QByteArray sample(RawPoint point, int pressure)
    {
        const auto byte = [](int value) { return char(value & 0xff); };
        return {std::initializer_list<char>{'\xaa', byte(pressure), byte(point.x >> 8),
                                            byte(point.x), byte(point.y >> 8), byte(point.y), 0, 0}
                    .begin(),
                8};
    }
    void send(RawPoint point, int pressure)
    {
        if (nFd < 0) {
            // For reading too: opening does not wait for a reader then, and never reads.
            nFd = open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        }
        need(write(nFd, sample(point, pressure).constData(), 8) == 8, path);
    }
    /// A whole touch at one place.
    void tap(RawPoint point)
    {
        send(point, 1);
        send(point, 0);
    }

    QString path;

private:
    int nFd = -1;
};
