#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

/// Writes to a named pipe that the panel reads as an input device. Never hangs: where nobody reads,
/// or the reader is stuck, it gives up after a few seconds.
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

    static constexpr std::chrono::milliseconds DefaultLimit{3000};

private:
    int nFd = -1;
    QString sError;
};
