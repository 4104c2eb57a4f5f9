#include "platform/servicenotifier.h"

#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

ServiceNotifier *pNotifier = nullptr;

QByteArray takeVariable(const char *name)
{
    QByteArray value = qgetenv(name);
    qunsetenv(name);
    return value;
}

/// Zero when there is no watchdog, or another process is to feed it.
std::chrono::milliseconds takeWatchdogInterval()
{
    const std::chrono::microseconds limit(std::clamp<qlonglong>(
        takeVariable("WATCHDOG_USEC").toLongLong(), 0, std::chrono::microseconds(24h).count()));
    const QByteArray process = takeVariable("WATCHDOG_PID");
    const bool bOurs = process.isEmpty() || process.toLongLong() == getpid();
    return bOurs && limit > 0us
        ? std::max(1ms, std::chrono::floor<std::chrono::milliseconds>(limit / 3))
        : 0ms;
}

} // namespace

ServiceNotifier::ServiceNotifier()
    : address(takeVariable("NOTIFY_SOCKET")), interval(takeWatchdogInterval())
{
    pNotifier = this;
    if (!address.isEmpty()) {
        nSocket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    }
}

ServiceNotifier::~ServiceNotifier()
{
    pNotifier = nullptr;
    if (nSocket >= 0) {
        close(nSocket);
    }
}

void ServiceNotifier::ready()
{
    send("READY=1");
    if (interval > 0ms && !address.isEmpty()) {
        pTimer = std::make_unique<QTimer>();
        pTimer->setTimerType(Qt::CoarseTimer);
        QObject::connect(pTimer.get(), &QTimer::timeout, pTimer.get(), [this] { feed(); });
        pTimer->start(interval);
        feed();
    }
}

void ServiceNotifier::stopping()
{
    pTimer.reset();
    send("STOPPING=1");
}

void ServiceNotifier::setStatus(const QString &status)
{
    if (pNotifier && std::exchange(pNotifier->sStatus, status) != status) {
        pNotifier->send("STATUS=" + status.simplified().toUtf8());
    }
}

void ServiceNotifier::feedWatchdog()
{
    if (pNotifier && pNotifier->pTimer && pNotifier->nextFeeding.hasExpired()) {
        pNotifier->feed();
    }
}

void ServiceNotifier::feed()
{
    nextFeeding.setRemainingTime(interval);
    send("WATCHDOG=1");
}

void ServiceNotifier::send(const QByteArray &message)
{
    if (address.isEmpty()) {
        return;
    }
    sockaddr_un socketAddress{};
    socketAddress.sun_family = AF_UNIX;
    // Unlike a path, a name without a file ends with its length and begins with a NUL.
    const auto nSize = static_cast<std::size_t>(address.size());
    errno = ENAMETOOLONG;
    ssize_t nSent = -1;
    if (nSize < sizeof socketAddress.sun_path) {
        std::memcpy(socketAddress.sun_path, address.constData(), nSize);
        const bool bAbstract = socketAddress.sun_path[0] == '@';
        if (bAbstract) {
            socketAddress.sun_path[0] = '\0';
        }
        const std::size_t nLength = offsetof(sockaddr_un, sun_path) + nSize + (bAbstract ? 0 : 1);
        nSent = sendto(nSocket, message.constData(), static_cast<std::size_t>(message.size()),
                       MSG_NOSIGNAL, reinterpret_cast<const sockaddr *>(&socketAddress),
                       static_cast<socklen_t>(nLength));
    }
    if (nSent < 0 && !std::exchange(bWarned, true)) {
        qWarning("The service manager cannot be told: %s", qPrintable(qt_error_string(errno)));
    }
}
