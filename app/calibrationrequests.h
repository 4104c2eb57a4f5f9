#pragma once

#include "platform/requestfile.h"

#include <memory>

class CalibrationPage;

/// Serves the files by which other parts of the device ask for a calibration of the touchscreen, or
/// say that one has timed out. GUI thread.
class CalibrationRequests
{
public:
    CalibrationRequests();
    /// Takes a calibration back that nobody has accepted.
    ~CalibrationRequests();

    /// Finds out whether there is a touchscreen that can be calibrated. Without one requests are
    /// removed unserved.
    void detectTouchType();
    /// Looks for a request, at every tick: shows the calibration page, lets it be, or hides it.
    void serve();
    /// The calibration page covers everything else.
    bool isPageVisible() const;
    /// Whether a calibration before this start has timed out. The message is removed, and touch is
    /// off until a calibration.
    static bool takeTimeoutMessage();

private:
    RequestFile request;
    std::unique_ptr<CalibrationPage> pPage; ///< from the first request on
    bool bCalibratable = true;
};
