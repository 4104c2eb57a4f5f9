#pragma once

#include <QString>

#include <optional>

/// \file
/// What the preview page tells of the device, read anew at every call and without a widget. GUI
/// thread; the firmware library's calls may block.

/// Versions from the device's firmware information; empty where they are not known.
struct FirmwareVersions
{
    QString sFirmware;
    QString sRuntime; ///< of the PLC runtime
};
FirmwareVersions readFirmwareVersions();

/// The Ethernet interface that the preview page shows.
struct InterfaceInformation
{
    int nInterface = 0; ///< as in "eth0"
    bool bStatic = true; ///< else by DHCP
    QString sIp; ///< "0.0.0.0" when it is not known (yet)
    QString sNetmask; ///< likewise
    QString sMac; ///< all zeros when it has none
};

/// The first interface that is configured for a static address or for DHCP; nothing when none is.
std::optional<InterfaceInformation> readInterfaceInformation();
