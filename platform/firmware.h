#pragma once

#include "platform/plcstatus.h"

#include <QString>

#include <optional>

/// \file
/// What the program asks of the device's firmware library, as C++ values. Nobody else includes the
/// library's own header. GUI thread only; every call may block for as long as the device's services
/// take.

/// The Ethernet interfaces, numbered as in "eth0", and the network that is in force now. Without a
/// value: the library could not say.
namespace Firmware {

constexpr int InterfaceCount = 3;

/// Interface 0 is always there.
bool isInterfacePresent(int interface);
/// The mode that the interface is configured for, in the library's own words.
std::optional<QString> interfaceMode(int interface);
std::optional<QString> interfaceAddress(int interface);
std::optional<QString> interfaceNetmask(int interface);
/// The gateway of the default route; "0.0.0.0" when there is no such route.
std::optional<QString> defaultGateway();
/// The name server \a server, 0 or 1; an empty text when there is none.
std::optional<QString> nameServer(int server);

} // namespace Firmware

/// The link to the PLC runtime. Closes itself; closed at first, and again when another link is
/// moved into its place.
class RuntimeLink
{
public:
    /// Tries to open the link; the result may be closed.
    static RuntimeLink open();

    RuntimeLink() = default;
    ~RuntimeLink();
    RuntimeLink &operator=(RuntimeLink &&other) noexcept;

    bool isOpen() const { return nHandle >= FirstHandle; }
    void close();
    /// Nothing when the runtime does not answer: the link is not worth keeping then.
    std::optional<PlcStatus> status() const;
    /// Starts every loaded application. False when the runtime refuses.
    bool startAllApplications() const;

private:
    explicit RuntimeLink(int handle) : nHandle(handle) { }

    static constexpr int FirstHandle = 1;

    int nHandle = 0;
};
