#include "benchmarks/evdevkeyboard.h"

#include "tests/support/deviceroot.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

EvdevKeyboard::EvdevKeyboard(const DeviceRoot &root)
{
    const QByteArray pipe = QFile::encodeName(root.path(QStringLiteral("/dev/input/event0")));
    const QByteArray link = QFile::encodeName(root.path(QStringLiteral("/dev/input/keyboard0")));
    // For reading too: what is sent before the driver is there waits for it.
    if (mkfifo(pipe.constData(), 0600) != 0 || symlink("event0", link.constData()) != 0
        || (nFd = open(pipe.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) < 0) {
        qFatal("cannot make a keyboard: %s", std::strerror(errno));
    }
}

EvdevKeyboard::~EvdevKeyboard()
{
    close(nFd);
}

void EvdevKeyboard::add(std::span<const int> codes, int nRepeats)
{
    constexpr int Release = 0;
    constexpr int Press = 1;
    constexpr int Repeat = 2;
    for (const int nCode : codes) {
        addEvent(nCode, Press);
    }
    for (int i = 0; i < nRepeats; ++i) {
        addEvent(codes.back(), Repeat);
    }
    for (auto it = codes.rbegin(); it != codes.rend(); ++it) {
        addEvent(*it, Release);
    }
}

void EvdevKeyboard::addEvent(int nCode, int nValue)
{
    input_event events[2] = {};
    events[0].type = EV_KEY;
    events[0].code = static_cast<__u16>(nCode);
    events[0].value = nValue;
    events[1].type = EV_SYN;
    events[1].code = SYN_REPORT;
    pending.append(reinterpret_cast<const char *>(events), sizeof events);
}

void EvdevKeyboard::send()
{
    // The driver runs in this very thread: a pipe without room would never get any.
    if (write(nFd, pending.constData(), static_cast<size_t>(pending.size())) != pending.size()) {
        qFatal("the program does not read its keyboard");
    }
    pending.clear();
}

bool EvdevKeyboard::isRead() const
{
    int nWaiting = 0;
    return ioctl(nFd, FIONREAD, &nWaiting) == 0 && nWaiting == 0;
}
