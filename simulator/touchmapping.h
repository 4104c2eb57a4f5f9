#pragma once

#include "platform/calibrationpairs.h"
#include "simulator/devicefolder.h"

#include <QByteArray>
#include <QSize>
#include <QStringList>

#include <array>
#include <optional>

/// How the simulated touchscreen lies on the screen: which raw position its controller reports for
/// a finger at a pixel. It belongs to the hardware, so no calibration of the panel changes it.
class TouchMapping
{
public:
    /// Names for make(); the first is the default.
    static const QStringList &variants();
    /// A mapping for \a screenSize, of the \a chosen variants together.
    static TouchMapping make(const QStringList &chosen, const QSize &screenSize);
    /// The mapping stored in \a device; nothing when it has none.
    static std::optional<TouchMapping> load(const DeviceFolder &device);
    /// False, after a line on stderr, when it cannot be written.
    bool save(const DeviceFolder &device) const;

    QSize screenSize() const { return screen; }
    /// What the controller reports for a finger at the pixel \a position.
    RawPoint toRaw(const QPoint &position) const;
    /// The pointer calibration file that undoes this mapping: seven integers a b c d e f s with
    /// x' = (a x + b y + c) / s and y' = (d x + e y + f) / s. The divisions truncate, so half a
    /// pixel is part of c and f.
    QByteArray pointerCalibration() const;

private:
    /// raw = nFactorX * x + nFactorY * y + nOffset.
    struct Axis
    {
        double nFactorX = 0;
        double nFactorY = 0;
        double nOffset = 0;
    };

    QSize screen;
    std::array<Axis, 2> axes;
};
