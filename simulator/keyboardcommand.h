#pragma once

#include "simulator/arguments.h"
#include "simulator/devicefolder.h"

/// panelctl keyboard: plugs keyboards in and out and types on them.
ExitCode keyboardCommand(const DeviceFolder &device, Arguments &arguments);
