#pragma once

#include "simulator/arguments.h"
#include "simulator/devicefolder.h"

/// "init": makes the folder of a simulated device, or makes an existing one anew. Refuses a folder
/// with other things in it.
ExitCode initCommand(const DeviceFolder &defaultDevice, Arguments &arguments);

/// "boot": what happens at power-on before the panel starts: temporary files are gone, the network
/// is as etc/settings.ini says, a DHCP interface has no lease yet.
ExitCode bootCommand(const DeviceFolder &device, Arguments &arguments);
