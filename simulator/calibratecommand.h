#pragma once

#include "simulator/arguments.h"
#include "simulator/devicefolder.h"

/// panelctl calibrate: the operator of one calibration run.
ExitCode calibrateCommand(const DeviceFolder &device, Arguments &arguments);
