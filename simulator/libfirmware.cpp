// The simulated firmware library: the symbols of the device's own, with the answers of a text file,
// /simulator/firmware.state below $PANEL_ROOT (on the emulated device, which has no such variable,
// the file of this name). The file is read again at every call, so panelctl (or an
// editor) changes the device while the panel runs. Without Qt, because the device's library has
// none: the program must not be able to rely on it.

#include "platform/libfirmware.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>

namespace {

constexpr int Failed = -1;
constexpr int NoNameServer = -3;
constexpr int Handle = 1;

constexpr std::size_t AddressSize = 20;
constexpr std::size_t ModeSize = 84;
constexpr std::size_t NameServerSize = 64;

// Layout of the status record.
constexpr std::size_t StateOffset = 4;
constexpr std::size_t NamesOffset = 88;
constexpr std::size_t NameSize = 440;
constexpr std::size_t NameSlots = (RCTRL_STATUS_SIZE - NamesOffset) / NameSize;

constexpr std::string_view Header = "[firmware]";

std::string trimmed(const std::string &text)
{
    constexpr char Blanks[] = " \t\r";
    const auto first = text.find_first_not_of(Blanks);
    if (first == std::string::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

/// \a text with every \xNN (two hexadecimal digits) replaced by that byte; another backslash is
/// itself.
std::string unescaped(const std::string &text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char *pDigits = text.data() + i + 2;
        if (text.compare(i, 2, "\\x") == 0 && i + 4 <= text.size()
            && std::from_chars(pDigits, pDigits + 2, byte, 16).ptr == pDigits + 2) {
            result += static_cast<char>(byte);
            i += 3;
        } else {
            result += text[i];
        }
    }
    return result;
}

/// The state file at the moment of one call.
class State
{
public:
    /// Reads the file and takes the time that the file says a call takes.
    State()
    {
        const char *pRoot = std::getenv("PANEL_ROOT");
        sPath = std::string(pRoot ? pRoot : "") + "/simulator/firmware.state";
        std::ifstream file(sPath, std::ios::binary);
        std::string line;
        while (std::getline(file, line)) {
            line = trimmed(line);
            if (!bValid) {
                if (!line.empty() && line != Header) {
                    return;
                }
                bValid = line == Header;
            } else if (const auto equals = line.find('='); equals != std::string::npos) {
                values[trimmed(line.substr(0, equals))] = unescaped(line.substr(equals + 1));
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(number("delayMs").value_or(0)));
    }

    /// False when the file is missing or is none of ours.
    bool isValid() const { return bValid; }

    std::optional<std::string> text(const std::string &key) const
    {
        const auto it = values.find(key);
        return it == values.end() ? std::nullopt : std::optional(it->second);
    }

    /// The value of \a key; nothing when it is missing or no whole number.
    std::optional<int> number(const std::string &key) const
    {
        const std::string value = text(key).value_or(std::string());
        int result = 0;
        const auto [pEnd, error] =
            std::from_chars(value.data(), value.data() + value.size(), result);
        return error == std::errc() && pEnd == value.data() + value.size() ? std::optional(result)
                                                                           : std::nullopt;
    }

    bool isYes(const std::string &key) const { return text(key) == "yes"; }

    /// What the call of this name is told to return instead of doing its work.
    std::optional<int> forcedResult(const char *function) const
    {
        return isValid() ? number(std::string("result.") + function) : Failed;
    }

    /// Sets state=\a state in the file, which is replaced whole: panelctl may read it meanwhile.
    bool writeState(int state) const
    {
        std::ifstream file(sPath, std::ios::binary);
        std::ostringstream content;
        std::string line;
        while (std::getline(file, line)) {
            const auto equals = line.find('=');
            if (equals == std::string::npos || trimmed(line.substr(0, equals)) != "state") {
                content << line << '\n';
            }
        }
        content << "state=" << state << '\n';

        const std::string newPath = sPath + '.' + std::to_string(getpid());
        std::ofstream newFile(newPath, std::ios::binary);
        newFile << content.str();
        newFile.close();
        std::error_code error;
        if (newFile) {
            std::filesystem::rename(newPath, sPath, error);
        }
        return newFile && !error;
    }

private:
    std::string sPath;
    std::map<std::string, std::string> values;
    bool bValid = false;
};

/// Copies \a text as the device's services do: with a NUL where there is room for it, without one
/// where the text fills the buffer of \a size bytes.
void copyText(char *buffer, std::size_t size, const std::string &text)
{
    std::memcpy(buffer, text.c_str(), std::min(size, text.size() + 1));
}

int textCall(const char *function, const std::string &key, char *buffer, std::size_t size)
{
    const State state;
    if (const auto result = state.forcedResult(function)) {
        return *result;
    }
    const auto text = state.text(key);
    if (!text) {
        return Failed;
    }
    copyText(buffer, size, *text);
    return 0;
}

int nameServerCall(const char *function, const std::string &key, char *buffer)
{
    const State state;
    if (const auto result = state.forcedResult(function)) {
        return *result;
    }
    const std::string text = state.text(key).value_or(std::string());
    copyText(buffer, NameServerSize, text);
    return text.empty() ? NoNameServer : 0;
}

int presenceCall(const char *function, const std::string &key)
{
    const State state;
    const auto result = state.forcedResult(function);
    return state.isValid() ? result.value_or(state.isYes(key)) : 0;
}

/// Number of applications: one more than the highest index with a name, unless the file says it.
int appCount(const State &state)
{
    int count = 0;
    for (int i = 0; i < UINT8_MAX; ++i) {
        if (state.text("app." + std::to_string(i))) {
            count = i + 1;
        }
    }
    return std::clamp(state.number("appCount").value_or(count), 0, UINT8_MAX);
}

} // namespace

int rctrl_init_communication(void)
{
    const State state;
    if (const auto result = state.forcedResult(__func__)) {
        return *result;
    }
    return state.isYes("link") ? Handle : Failed;
}

int rctrl_get_status(int handle, void *status)
{
    const State state;
    if (const auto result = state.forcedResult(__func__)) {
        return *result;
    }
    if (handle < Handle || !state.isYes("link")) {
        return Failed;
    }
    char *pRecord = static_cast<char *>(status);
    std::memset(pRecord, 0, RCTRL_STATUS_SIZE);
    const auto count = static_cast<std::uint8_t>(appCount(state));
    const std::int32_t plcState = state.number("state").value_or(0);
    std::memcpy(pRecord, &count, sizeof count);
    std::memcpy(pRecord + StateOffset, &plcState, sizeof plcState);
    for (std::size_t i = 0; i < NameSlots; ++i) {
        copyText(pRecord + NamesOffset + i * NameSize, NameSize,
                 state.text("app." + std::to_string(i)).value_or(std::string()));
    }
    return 0;
}

int rctrl_exit_communication(int handle)
{
    return State().forcedResult(__func__).value_or(handle >= Handle ? 0 : Failed);
}

int rctrl_start_all_applications(int handle)
{
    const State state;
    if (const auto result = state.forcedResult(__func__)) {
        return *result;
    }
    if (handle < Handle || !state.isYes("link")) {
        return Failed;
    }
    return state.writeState(state.number("startedState").value_or(1)) ? 0 : Failed;
}

int sysif_GetInterfaceIp(char *buffer, const char *interfaceName)
{
    return textCall(__func__, std::string(interfaceName) + ".ip", buffer, AddressSize);
}

int sysif_GetInterfaceNetmask(char *buffer, const char *interfaceName)
{
    return textCall(__func__, std::string(interfaceName) + ".netmask", buffer, AddressSize);
}

int sysif_IsEth1Present(void)
{
    return presenceCall(__func__, "eth1.present");
}

int sysif_IsEth2Present(void)
{
    return presenceCall(__func__, "eth2.present");
}

int sysdb_GetEth0Mode(char *buffer)
{
    return textCall(__func__, "eth0.mode", buffer, ModeSize);
}

int sysdb_GetEth1Mode(char *buffer)
{
    return textCall(__func__, "eth1.mode", buffer, ModeSize);
}

int sysdb_GetEth2Mode(char *buffer)
{
    return textCall(__func__, "eth2.mode", buffer, ModeSize);
}

int sysgw_GetDefaultGateway(char *buffer, int size)
{
    const State state;
    if (const auto result = state.forcedResult(__func__)) {
        return *result;
    }
    const std::string text = state.text("gateway").value_or(std::string());
    if (text.empty() || size < 1) {
        return 0;
    }
    copyText(buffer, static_cast<std::size_t>(size), text);
    return 1;
}

int sysnm_GetDNS1(char *buffer)
{
    return nameServerCall(__func__, "dns1", buffer);
}

int sysnm_GetDNS2(char *buffer)
{
    return nameServerCall(__func__, "dns2", buffer);
}
