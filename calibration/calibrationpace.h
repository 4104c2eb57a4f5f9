#pragma once

#include <chrono>

/// How fast a calibration run goes on. Tests have it faster.
struct CalibrationPace
{
    /// Time of each of the ten steps in which the crosshair glides to its next place.
    std::chrono::milliseconds glideInterval{50};
    /// How long a verdict stays on the screen before something else is shown.
    std::chrono::milliseconds verdictPause{500};
};
