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
    /// Whatever is there, a folder with all that is in it.
    void remove(const QString &devicePath) const;

    /// Puts there, in place of what is there, a "fifo", a "directory", a "full directory", a link
    /// that is "dangling" or a "link" to /tmp/target; "nothing", as a null array; or else a file of
    /// that content.
    void plant(const QString &devicePath, const QByteArray &what) const;

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
