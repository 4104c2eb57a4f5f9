#include "platform/firmware.h"

#include "platform/firmwaretext.h"
#include "platform/libfirmware.h"
#include "platform/servicenotifier.h"

#include <array>
#include <cstdio>
#include <utility>

namespace {

/// At least what the library may fill of each kind; it is told of its size for the gateway alone.
using AddressBuffer = std::array<char, 64>;
using ModeBuffer = std::array<char, 84>;

static_assert(PlcStatus::Size == RCTRL_STATUS_SIZE);

constexpr int NoNameServer = -3; // the text is valid, and may be empty
constexpr int NoRoute = 0;
constexpr int RouteFound = 1;

/// What a call has given. The library may be slow as long as it comes back: several slow calls in a
/// row are no call that hangs.
template <typename Result>
Result answered(Result result)
{
    ServiceNotifier::feedWatchdog();
    return result;
}

/// The library may read and write a name's buffer up to its full length.
using NameBuffer = std::array<char, 10>;

NameBuffer interfaceName(int interface)
{
    NameBuffer name{};
    std::snprintf(name.data(), name.size(), "eth%1d", interface);
    return name;
}

std::optional<QString> askInterface(int interface, int (*call)(char *, const char *))
{
    AddressBuffer buffer{};
    const NameBuffer name = interfaceName(interface);
    return answered(call(buffer.data(), name.data())) == 0 ? std::optional(firmwareText(buffer))
                                                           : std::nullopt;
}

} // namespace

bool Firmware::isInterfacePresent(int interface)
{
    switch (interface) {
    case 0:
        return true;
    case 1:
        return answered(sysif_IsEth1Present()) != 0;
    case 2:
        return answered(sysif_IsEth2Present()) != 0;
    }
    return false;
}

std::optional<QString> Firmware::interfaceMode(int interface)
{
    constexpr std::array<int (*)(char *), InterfaceCount> Calls{
        sysdb_GetEth0Mode, sysdb_GetEth1Mode, sysdb_GetEth2Mode};
    ModeBuffer buffer{};
    return answered(Calls[static_cast<std::size_t>(interface)](buffer.data())) == 0
        ? std::optional(firmwareText(buffer))
        : std::nullopt;
}

std::optional<QString> Firmware::interfaceAddress(int interface)
{
    return askInterface(interface, sysif_GetInterfaceIp);
}

std::optional<QString> Firmware::interfaceNetmask(int interface)
{
    return askInterface(interface, sysif_GetInterfaceNetmask);
}

std::optional<QString> Firmware::defaultGateway()
{
    AddressBuffer buffer{};
    switch (answered(sysgw_GetDefaultGateway(buffer.data(), int(buffer.size())))) {
    case RouteFound:
        return firmwareText(buffer);
    case NoRoute:
        return QStringLiteral("0.0.0.0");
    default:
        return std::nullopt;
    }
}

std::optional<QString> Firmware::nameServer(int server)
{
    AddressBuffer buffer{};
    const int nResult = answered((server == 0 ? sysnm_GetDNS1 : sysnm_GetDNS2)(buffer.data()));
    return nResult == 0 || nResult == NoNameServer ? std::optional(firmwareText(buffer))
                                                   : std::nullopt;
}

RuntimeLink RuntimeLink::open()
{
    return RuntimeLink(answered(rctrl_init_communication()));
}

RuntimeLink::~RuntimeLink()
{
    close();
}

RuntimeLink &RuntimeLink::operator=(RuntimeLink &&other) noexcept
{
    std::swap(nHandle, other.nHandle);
    return *this;
}

void RuntimeLink::close()
{
    if (isOpen()) {
        rctrl_exit_communication(std::exchange(nHandle, 0));
    }
}

std::optional<PlcStatus> RuntimeLink::status() const
{
    // A failing call may have left anything in the record.
    PlcStatus status{};
    return isOpen() && answered(rctrl_get_status(nHandle, &status)) == 0 ? std::optional(status)
                                                                         : std::nullopt;
}

bool RuntimeLink::startAllApplications() const
{
    return isOpen() && answered(rctrl_start_all_applications(nHandle)) == 0;
}
