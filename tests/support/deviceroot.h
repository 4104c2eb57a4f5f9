#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QTemporaryDir>

/// Ends the test program where something that it needs is not there.
inline void need(bool bThere, const QString &what)
{
    if (!bThere) {
        qFatal("needed: %s", qPrintable(what));
    }
}

/// A temporary device root with the folders of a device, in force (PANEL_ROOT) while it lives.
class DeviceRoot
{
public:
    DeviceRoot();
    ~DeviceRoot();

    /// Path on this machine of the device's \a devicePath.
    QString path(const QString &devicePath) const;

    /// Writes a whole file, creating its folder.
    void write(const QString &devicePath, const QByteArray &content) const;
    QByteArray read(const QString &devicePath) const;
    bool exists(const QString &devicePath) const;
    void remove(const QString &devicePath) const;

    /// Puts something else than a file there: "fifo", "directory", "full directory", or a link that
    /// is "dangling", leads to itself ("loop"), or "link" to /tmp/target. False: no such kind.
    bool plant(const QString &devicePath, const QByteArray &kind) const;

    /// Writes an executable shell script that stands for a device command.
    void writeCommand(const QString &devicePath, const QByteArray &script) const;

    /// Sets one key of the simulated firmware library's state; an empty \a value removes the key.
    void setFirmware(const QString &key, const QString &value);
    /// Sets several, as "key=value key=value".
    void setFirmware(const QString &entries);
    /// Makes the firmware library's state unreadable: every call fails.
    void breakFirmware();

private:
    void writeFirmware() const;

    QTemporaryDir dir;
    QMap<QString, QString> firmware;
};
