#pragma once

#include <QString>

#include <optional>
#include <sys/stat.h>

/// A file by which another part of the device asks for something: once for each time that it is
/// made, also where it cannot be removed afterwards. Only a regular file is a request; see
/// isRequested() for the rest. GUI thread.
class RequestFile
{
public:
    /// \a path: on the device.
    explicit RequestFile(const QString &path);

    /// Whether there is a request that has not been finished.
    bool isPending() const;
    /// Remembers the request that is there as the one that is being served.
    void begin();
    /// Whether the request that is there is the one of begin().
    bool isBegun() const;
    /// Removes the request. False when that cannot be done: with one warning line, and it is
    /// pending no more until it is written or made anew.
    bool finish();

private:
    /// What tells a request from the next one of the same name.
    struct Identity
    {
        dev_t device;
        ino_t number;
        timespec written;
        bool operator==(const Identity &other) const;
    };
    std::optional<Identity> identity() const;

    QString sPath;
    std::optional<Identity> begun;
    std::optional<Identity> finished;
};
