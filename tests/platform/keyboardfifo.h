#pragma once

#include "tests/support/deviceroot.h"

#include <QFile>

#include <fcntl.h>
#include <initializer_list>
#include <linux/input.h>
#include <sys/stat.h>
#include <unistd.h>

/// A record of the kernel's.
inline QByteArray eventRecord(int nType, int nCode, int nValue)
{
    input_event record{};
    record.type = quint16(nType);
    record.code = quint16(nCode);
    record.value = nValue;
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

/// A keyboard of a device root: a FIFO behind a link in "/dev/input".
class KeyboardFifo
{
public:
    /// Plugs it in, in place of one that has the name; the FIFO keeps its path then, not its node.
    KeyboardFifo(const DeviceRoot &root, const QString &linkName)
        : link(root.path(QStringLiteral("/dev/input/") + linkName)),
          path(root.path(QStringLiteral("/dev/fifo-") + linkName))
    {
        const QByteArray beside = QFile::encodeName(path + ".new");
        need(mkfifo(beside.constData(), 0600) == 0
                 && rename(beside.constData(), QFile::encodeName(path).constData()) == 0,
             path);
        QFile::remove(link);
        QFile::link(path, link);
    }
    void unplug() const { QFile::remove(link); }

    /// Whether somebody reads it.
    bool isRead() const
    {
        const int nFd =
            open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (nFd >= 0) {
            close(nFd);
        }
        return nFd >= 0;
    }
    /// Presses the keys one after the other and releases them in the opposite order.
    void type(std::initializer_list<quint16> codes) const
    {
        QByteArray bytes;
        for (const quint16 code : codes) {
            bytes += eventRecord(EV_KEY, code, 1) + eventRecord(EV_SYN, SYN_REPORT, 0);
        }
        for (auto code = codes.end(); code != codes.begin();) {
            bytes += eventRecord(EV_KEY, *--code, 0) + eventRecord(EV_SYN, SYN_REPORT, 0);
        }
        write(bytes);
    }
    /// The key is held down, and has been before.
    void repeat(quint16 code) const
    {
        write(eventRecord(EV_KEY, code, 2) + eventRecord(EV_SYN, SYN_REPORT, 0));
    }

    QString link;
    QString path;

private:
    void write(const QByteArray &bytes) const
    {
        QFile file(path);
        need(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered)
                 && file.write(bytes) == bytes.size(),
             path);
    }
};
