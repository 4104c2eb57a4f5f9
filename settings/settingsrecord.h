#pragma once

#include "settings/screenclass.h"

#include <QLatin1String>
#include <QString>

#include <array>

class VeltaUtils;

/// Network operation mode of "eth0". The values are those of SettingsRecord::nNetMode and the
/// arguments of networkModeName().
enum NetMode : quint32 { StaticMode = 0, DhcpMode = 1 };

/// Display name of a network mode, "Static" or "DHCP".
const QString &networkModeName(quint32 netMode);

/// Order of SettingsRecord::ipEntries.
enum IpEntryIndex { AddressEntry, GatewayEntry, NetmaskEntry, Dns1Entry, Dns2Entry };
constexpr int IpEntryCount = 5;

/// Text that stands for no address.
inline constexpr QLatin1String NoAddress("0.0.0.0");

/// One IPv4 setting.
struct IpEntry
{
    QString value; ///< Dotted text that is, or is to be, in the settings file; may be empty.
    QString dhcpValue; ///< What the DHCP interface has at present; "0.0.0.0" in static mode.
    QString label; ///< Translated display name.
    bool bDefaulted = false; ///< The stored value was invalid and was replaced by its default.
    bool bDhcpDefaulted = false; ///< Counterpart for dhcpValue; live values are never defaulted.
};

/// All values of one configuration pass. The wizard pages read and write the fields directly.
struct SettingsRecord
{
    qint32 nResolutionIndex = 0; ///< The screen class, below ScreenClassCount.
    VeltaUtils *pUtils = nullptr; ///< Not owned; set in the working record only.
    std::array<quint16, ScreenClassCount> nScreenWidth{}; ///< Pixels, by screen class.
    std::array<quint16, ScreenClassCount> nScreenHeight{}; ///< Pixels, by screen class.
    bool bFixedWidth = false; ///< The wizard takes nFixedWidth and stands in the screen's middle.
    quint16 nFixedWidth = 0; ///< Pixels; 0 until set.
    QString configPassword; ///< Empty: none.
    bool bUnlocked = true; ///< The configuration may be entered.
    quint8 nInputTimeout = 20; ///< Seconds of inactivity that close the keyboard; 0 is read as 20.
    std::array<IpEntry, IpEntryCount> ipEntries;
    quint32 nNetMode = StaticMode;
    bool bDataChanged = false; ///< Result of the last change detection.
    bool bLargeScreen = false; ///< The screen is wider than 1920 pixels.
};
