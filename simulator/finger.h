#pragma once

#include "simulator/fifowriter.h"
#include "simulator/touchmapping.h"

#include <chrono>
#include <optional>

/// A finger on the simulated device's single-touch screen. Positions are pixels of the
/// untransformed screen; what the touchscreen reports for them is the hardware's mapping.
class Finger
{
public:
    explicit Finger(const DeviceFolder &device);

    /// False when the device has no single-touch screen; nothing else works then.
    bool hasScreen() const { return mapping.has_value(); }
    QSize screenSize() const { return mapping->screenSize(); }

    /// Finds the panel that listens. False, with errorText() set, when there is none.
    bool open();
    /// Presses at \a from, moves to \a to within \a hold and releases. False, with errorText() set,
    /// when the panel does not take it.
    bool touch(const QPoint &from, const QPoint &to, std::chrono::milliseconds hold);
    QString errorText() const { return sError.isEmpty() ? touchscreen.errorText() : sError; }

    /// How often the process that has opened the touchscreen most often has done so. The panel
    /// opens it once for its pointer, and once more for the time of a calibration run.
    int openings() const;

private:
    QString sPath;
    QString sError;
    std::optional<TouchMapping> mapping;
    FifoWriter touchscreen;
};
