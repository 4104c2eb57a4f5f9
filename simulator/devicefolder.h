#pragma once

#include <QByteArray>
#include <QString>

/// The folder of a simulated device: what the panel sees below PANEL_ROOT, and the simulator's own
/// state in its subfolder "simulator".
class DeviceFolder
{
public:
    explicit DeviceFolder(const QString &folder);

    /// Absolute path of the folder.
    QString root() const { return sRoot; }
    /// Path on this machine of the device's file \a devicePath.
    QString path(const QString &devicePath) const { return sRoot + devicePath; }
    /// True when init made this folder.
    bool isDevice() const;
    bool exists(const QString &devicePath) const;

    /// Writes a file whole (old or new content after a crash), creating its folder. False, after a
    /// line on stderr, when that is impossible; so for all below.
    bool write(const QString &devicePath, const QByteArray &content) const;
    bool writeExecutable(const QString &devicePath, const QByteArray &content) const;
    bool makeFolder(const QString &devicePath) const;
    bool makeFifo(const QString &devicePath) const;
    bool copy(const QString &source, const QString &devicePath) const;
    /// Removes a file or link; no error when there is none.
    bool remove(const QString &devicePath) const;

private:
    QString sRoot;
};
