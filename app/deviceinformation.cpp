#include "app/deviceinformation.h"

#include "platform/firmware.h"
#include "platform/macaddress.h"
#include "settings/inifile.h"
#include "settings/settingsrecord.h"

namespace {

constexpr auto FirmwareInfoFile = QLatin1String("/etc/fwinfo.ini");
constexpr auto UnknownMac = QLatin1String("00:00:00:00:00:00");
// The library's words for a mode are its own, but for these two in them.
constexpr auto DhcpWord = QLatin1String("dhcp");
constexpr auto StaticWord = QLatin1String("static");

QString macAddress(int interface)
{
    const QString mac = interfaceMacAddress(QStringLiteral("eth%1").arg(interface));
    return mac.isEmpty() ? QString(UnknownMac) : mac;
}

} // namespace

FirmwareVersions readFirmwareVersions()
{
    static bool bTold = false; // it is read again and again
    const IniFile info(FirmwareInfoFile);
    const bool bBad = !info.problem().isEmpty();
    if (bBad && !bTold) {
        qWarning("%s %s", FirmwareInfoFile.data(), qPrintable(info.problem()));
    }
    bTold = bBad;
    return {info.value(QLatin1String("firmware/version")).toString(),
            info.value(QLatin1String("codesys/version")).toString()};
}

std::optional<InterfaceInformation> readInterfaceInformation()
{
    for (int i = 0; i < Firmware::InterfaceCount; ++i) {
        if (!Firmware::isInterfacePresent(i)) {
            continue;
        }
        const QString mode = Firmware::interfaceMode(i).value_or(QString());
        // A mode that holds both words counts as DHCP.
        if (mode.contains(DhcpWord) || mode.contains(StaticWord)) {
            return InterfaceInformation{
                i, !mode.contains(DhcpWord), Firmware::interfaceAddress(i).value_or(NoAddress),
                Firmware::interfaceNetmask(i).value_or(NoAddress), macAddress(i)};
        }
    }
    return std::nullopt;
}
