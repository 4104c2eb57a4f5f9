#include "platform/macaddress.h"

#include "platform/devicepath.h"
#include "platform/regularfile.h"

#include <QFile>

#include <algorithm>
#include <ifaddrs.h>
#include <memory>
#include <sys/socket.h>

namespace {

constexpr qint64 AddressFileLimit = 4096; // sysfs files claim to be a page long

// Not through Qt Network: loading that library alone would cost a tenth of the start-up.
bool hasAddressEntry(const QByteArray &name)
{
    ifaddrs *pFirst = nullptr;
    if (getifaddrs(&pFirst) != 0) {
        return false;
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> pList(pFirst, freeifaddrs);
    for (const ifaddrs *pEntry = pFirst; pEntry; pEntry = pEntry->ifa_next) {
        const int nFamily = pEntry->ifa_addr ? pEntry->ifa_addr->sa_family : AF_UNSPEC;
        if ((nFamily == AF_INET || nFamily == AF_INET6) && name == pEntry->ifa_name) {
            return true;
        }
    }
    return false;
}

bool isUnset(const QByteArray &address)
{
    return std::all_of(address.begin(), address.end(), [](char c) { return c == '0' || c == ':'; });
}

} // namespace

QString interfaceMacAddress(const QString &name)
{
    const QString folder = QStringLiteral("/sys/class/net/");
    const FileContent file = readRegularFile(devicePath(folder + name + QLatin1String("/address")),
                                             Links::Refuse, AddressFileLimit);
    const QByteArray address = file.content.trimmed().toUpper();
    // The interfaces of a device root are files, and this machine's addresses are none of theirs.
    const bool bOwnMachine = devicePath(folder) == folder;
    if (isUnset(address) || (bOwnMachine && !hasAddressEntry(QFile::encodeName(name)))) {
        return {};
    }
    return QString::fromLatin1(address);
}
