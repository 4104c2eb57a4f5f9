#include "tests/support/deviceroot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace {
constexpr char FirmwareState[] = "/simulator/firmware.state";
}

DeviceRoot::DeviceRoot()
{
    qputenv("PANEL_ROOT", QFile::encodeName(dir.path()));
    for (const char *folder :
         {"/bin", "/sbin", "/etc", "/tmp/.system", "/dev/input", "/proc/device-tree"}) {
        QDir().mkpath(dir.path() + QLatin1String(folder));
    }
    setFirmware("link", "yes");
}

DeviceRoot::~DeviceRoot()
{
    qunsetenv("PANEL_ROOT");
}

QString DeviceRoot::path(const QString &devicePath) const
{
    return dir.path() + devicePath;
}

void DeviceRoot::write(const QString &devicePath, const QByteArray &content) const
{
    QDir().mkpath(QFileInfo(path(devicePath)).path());
    QFile file(path(devicePath));
    need(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(), file.fileName());
}

QByteArray DeviceRoot::read(const QString &devicePath) const
{
    QFile file(path(devicePath));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool DeviceRoot::exists(const QString &devicePath) const
{
    return QFileInfo::exists(path(devicePath));
}

void DeviceRoot::remove(const QString &devicePath) const
{
    if (!QFile::remove(path(devicePath))) {
        QDir(path(devicePath)).removeRecursively();
    }
}

void DeviceRoot::plant(const QString &devicePath, const QByteArray &what) const
{
    const QString name = path(devicePath);
    remove(devicePath);
    QDir().mkpath(QFileInfo(name).path());
    if (what == "fifo") {
        need(mkfifo(QFile::encodeName(name).constData(), 0600) == 0, name);
    } else if (what.endsWith("directory")) {
        QDir().mkpath(what.startsWith("full") ? name + "/inner" : name);
    } else if (what == "link" || what == "dangling") {
        QFile::link(path(what == "link" ? "/tmp/target" : "/tmp/none"), name);
    } else if (!what.isNull() && what != "nothing") {
        write(devicePath, what);
    }
}

void DeviceRoot::writeCommand(const QString &devicePath, const QByteArray &script) const
{
    write(devicePath, "#!/bin/sh\n" + script + "\n");
    QFile::setPermissions(path(devicePath), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void DeviceRoot::setFirmware(const QString &key, const QString &value)
{
    if (value.isEmpty()) {
        firmware.remove(key);
    } else {
        firmware[key] = value;
    }
    writeFirmware();
}

void DeviceRoot::setFirmware(const QString &entries)
{
    for (const QString &entry : entries.split(u' ', Qt::SkipEmptyParts)) {
        setFirmware(entry.section(u'=', 0, 0), entry.section(u'=', 1));
    }
}

void DeviceRoot::breakFirmware()
{
    firmware.clear();
    write(FirmwareState, QByteArray("\0\xff garbage", 10));
}

void DeviceRoot::writeFirmware() const
{
    QByteArray text = "[firmware]\n";
    for (auto it = firmware.cbegin(); it != firmware.cend(); ++it) {
        text += it.key().toUtf8() + '=' + it.value().toUtf8() + '\n';
    }
    write(FirmwareState, text);
}
