#pragma once

#include <QString>

#include <sys/types.h>

/// \file
/// What stands at the path of an input device, found out without blocking and without opening what
/// is no device.

/// Which device a path leads to. A device that is plugged in anew is another one, also when the
/// system gives it the same number: its node is another.
struct DeviceIdentity
{
    QString sTarget; ///< of the link at the path, empty where there is none
    dev_t nNumber = 0; ///< of the device, 0 when it is none (a FIFO of a simulated one)
    dev_t nFileSystem = 0;
    ino_t nNode = 0; ///< 0: nothing is there

    bool exists() const { return nNode != 0; }
    friend bool operator==(const DeviceIdentity &, const DeviceIdentity &) = default;
};

DeviceIdentity deviceIdentity(const QString &path);

/// Whether \a path speaks the kernel's input protocol.
bool isEventDevice(const QString &path);

/// Whether another program has grabbed the event device at \a path, so that nobody else gets what
/// comes from it. One that this program has grabbed counts, too.
bool isGrabbed(const QString &path);

/// Whether \a path can be read as a keyboard: an event device, or a FIFO of a simulated device.
/// Anything else would cost the processor (a device without an end) or block.
bool isKeyboard(const QString &path);

/// Whether \a path may be a touchscreen, of whatever protocol: a character device, but none of the
/// system's memory such as /dev/null, or a FIFO of a simulated device.
bool canBeTouchscreen(const QString &path);
