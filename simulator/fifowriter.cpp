#include "simulator/fifowriter.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

FifoWriter::~FifoWriter()
{
    if (nFd >= 0) {
        close(nFd);
    }
}

bool FifoWriter::open(const QString &path, std::chrono::milliseconds limit)
{
    std::signal(SIGPIPE, SIG_IGN);
    const QByteArray name = QFile::encodeName(path);
    struct stat information = {};
    const bool bFound = stat(name.constData(), &information) == 0;
    bEventDevice = bFound && S_ISCHR(information.st_mode);
    if (!bFound || !(bEventDevice || S_ISFIFO(information.st_mode))) {
        sError = QStringLiteral("%1 is no simulated input device").arg(path);
        return false;
    }
    const QDeadlineTimer deadline(limit);
    for (;;) {
        nFd = ::open(name.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (nFd >= 0) {
            return true;
        }
        if (errno != ENXIO) {
            sError =
                QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
            return false;
        }
        if (deadline.hasExpired()) {
            sError = QStringLiteral("nobody reads %1: is the panel running?").arg(path);
            return false;
        }
        QThread::msleep(20);
    }
}

bool FifoWriter::write(const QByteArray &record)
{
    const QDeadlineTimer deadline(DefaultLimit);
    for (;;) {
        // Up to PIPE_BUF bytes a pipe takes all or nothing.
        if (::write(nFd, record.constData(), static_cast<size_t>(record.size())) == record.size()) {
            return true;
        }
        if (errno == EAGAIN && !deadline.hasExpired()) {
            pollfd writable{nFd, POLLOUT, 0};
            poll(&writable, 1, 100);
        } else if (errno != EINTR) {
            sError = errno == EAGAIN ? QStringLiteral("the panel does not read its input")
                                     : QStringLiteral("the panel has closed its input device");
            return false;
        }
    }
}
