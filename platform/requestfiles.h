#pragma once

#include <QLatin1String>

/// \file
/// The files by which other parts of the device ask the panel for something, as device paths.

/// Asks for a calibration of the touchscreen.
inline constexpr QLatin1String CalibrationRequestFile("/tmp/.system/TouchCalibration");
/// Says that the automatic calibration before this start has timed out.
inline constexpr QLatin1String CalMessageFile("/flash/local/cal_message");
/// Asks for a picture of the screen.
inline constexpr QLatin1String ScreenshotRequestFile("/tmp/makeScreenshot");
