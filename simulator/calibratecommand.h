#pragma once

#include "simulator/arguments.h"
#include "simulator/devicefolder.h"

/// The request file that raises the panel's calibration page.
inline constexpr char CalibrationRequest[] = "/tmp/.system/TouchCalibration";

/// panelctl calibrate: the operator of one calibration run.
ExitCode calibrateCommand(const DeviceFolder &device, Arguments &arguments);
