#pragma once

#include "simulator/arguments.h"
#include "simulator/devicefolder.h"

#include <span>

/// One command of panelctl.
struct Command
{
    const char *pName;
    const char *pUsage; ///< what follows the name, a line for each form
    const char *pHelp;
    /// Whether the device's folder must be there already.
    bool bNeedsDevice;
    ExitCode (*run)(const DeviceFolder &device, Arguments &arguments);
};

/// All of them, in the order of the help.
std::span<const Command> commands();
