#pragma once

#include "tests/support/deviceroot.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// The service manager's end of a notification socket.
class NotifySocket
{
public:
    struct Message
    {
        QByteArray text;
        std::chrono::nanoseconds time; ///< at which it was sent
    };

    /// \a name: a path, or "@" and a name without a file.
    explicit NotifySocket(const QByteArray &name)
        : nFd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
        std::replace(address.sun_path, address.sun_path + 1, '@', '\0');
        const auto nLength = socklen_t(offsetof(sockaddr_un, sun_path)) + socklen_t(name.size());
        const int nOn = 1;
        need(bind(nFd, reinterpret_cast<const sockaddr *>(&address), nLength) == 0
                 && setsockopt(nFd, SOL_SOCKET, SO_TIMESTAMPNS, &nOn, sizeof nOn) == 0,
             name);
    }
    ~NotifySocket() { close(nFd); }
    Q_DISABLE_COPY(NotifySocket)

    /// All that has come so far, earlier calls included.
    const QList<Message> &messages()
    {
        char text[512];
        iovec part{text, sizeof text};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timespec))];
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        ssize_t nSize = 0;
        while ((nSize = recvmsg(nFd, &header, 0)) >= 0) {
            timespec time{};
            std::memcpy(&time, CMSG_DATA(CMSG_FIRSTHDR(&header)), sizeof time);
            received.append(
                {QByteArray(text, nSize),
                 std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec)});
        }
        return received;
    }
    QByteArrayList texts()
    {
        QByteArrayList all;
        for (const Message &message : messages()) {
            all += message.text;
        }
        return all;
    }

private:
    int nFd;
    QList<Message> received;
};
