#pragma once

#include <QByteArray>
#include <QString>

/// Bytes that have a file name of their own while the object lives, for libraries that read nothing
/// but files: they get the copy that has been checked, whatever happens to the file on the device.
/// In memory, as a disk may be full or read-only just then. Commands of the panel do not inherit
/// it.
class MemoryFile
{
public:
    explicit MemoryFile(const QByteArray &content);
    ~MemoryFile();
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    /// False when there was no memory.
    bool isValid() const { return nFd >= 0; }
    /// Its name; one that no file can have when it is not valid.
    QString path() const;
    /// A name that no file can ever have.
    static QString nowhere();

private:
    int nFd = -1;
};
