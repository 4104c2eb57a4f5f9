#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

/// Writes to a named pipe that the panel reads as an input device. Never hangs: where nobody reads,
/// or the reader is stuck, it gives up after a few seconds. On the emulated device there is a real
/// input device in the pipe's place: the kernel takes the events that are written to it as its own.
///
/// The panel's drivers open the pipe for reading and writing, so it has a writer for as long as it
/// has a reader and this one may come and go.
class FifoWriter
{
public:
    FifoWriter() = default;
    ~FifoWriter();
    FifoWriter(const FifoWriter &) = delete;
    FifoWriter &operator=(const FifoWriter &) = delete;

    /// Opens the pipe \a path. False, with errorText() set, when there is none or nobody reads it
    /// within \a limit.
    bool open(const QString &path, std::chrono::milliseconds limit = DefaultLimit);
    /// Writes \a record, at most PIPE_BUF bytes, whole or not at all.
    bool write(const QByteArray &record);
    QString errorText() const { return sError; }
    /// True when a real input device was opened, which takes records of the type input_event.
    bool isEventDevice() const { return bEventDevice; }

    static constexpr std::chrono::milliseconds DefaultLimit{3000};

private:
    int nFd = -1;
    bool bEventDevice = false;
    QString sError;
};
