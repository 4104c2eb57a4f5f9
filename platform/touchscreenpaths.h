#pragma once

#include <QString>

/// \file
/// Where the touchscreen and its calibration are, the same for everyone who opens them. A path
/// from the environment is used as it stands; a built-in one passes through devicePath().

/// The touchscreen's device: TSLIB_TSDEVICE, else the device's "/dev/input/touchscreen". Asked by
/// everyone: the pointer, the touch type, a calibration run and its tolerance.
QString touchscreenDevice();

/// The pointer calibration file: POINTERCAL_FILE, else the device's "/etc/pointercal".
QString pointerCalibrationFile();
/// The same file as the operator knows it: without a device root in front.
QString pointerCalibrationName();
