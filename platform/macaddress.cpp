#include "platform/macaddress.h"

#include <QByteArray>
#include <QFile>

#include <ifaddrs.h>
#include <memory>
#include <netpacket/packet.h>
#include <sys/socket.h>

// Not through Qt Network: loading that library alone would cost a tenth of the start-up.
QString interfaceMacAddress(const QString &name)
{
    ifaddrs *pFirst = nullptr;
    if (getifaddrs(&pFirst) != 0) {
        return {};
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> pList(pFirst, freeifaddrs);
    const QByteArray wanted = QFile::encodeName(name);
    QByteArray address;
    bool bHasAddressEntry = false;
    for (const ifaddrs *pEntry = pFirst; pEntry; pEntry = pEntry->ifa_next) {
        if (!pEntry->ifa_addr || wanted != pEntry->ifa_name) {
            continue;
        }
        const int nFamily = pEntry->ifa_addr->sa_family;
        if (nFamily == AF_PACKET) {
            sockaddr_ll link{};
            memcpy(&link, pEntry->ifa_addr, sizeof(link));
            address = QByteArray(reinterpret_cast<const char *>(link.sll_addr), link.sll_halen);
        } else if (nFamily == AF_INET || nFamily == AF_INET6) {
            bHasAddressEntry = true;
        }
    }
    return bHasAddressEntry ? QString::fromLatin1(address.toHex(':').toUpper()) : QString();
}
