#include "simulator/devicefolder.h"

#include "simulator/arguments.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace {

bool report(const QString &what, const QString &path, const QString &reason)
{
    failure(QStringLiteral("cannot %1 %2: %3").arg(what, path, reason));
    return false;
}

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

DeviceFolder::DeviceFolder(const QString &folder)
    : sRoot(QDir::cleanPath(QDir(folder).absolutePath()))
{ }

bool DeviceFolder::isDevice() const
{
    return QFileInfo(path(QStringLiteral("/simulator"))).isDir()
        && QFileInfo(path(QStringLiteral("/dev/input"))).isDir();
}

bool DeviceFolder::exists(const QString &devicePath) const
{
    const QFileInfo info(path(devicePath));
    return info.exists() || info.isSymLink();
}

bool DeviceFolder::write(const QString &devicePath, const QByteArray &content) const
{
    const QString filePath = path(devicePath);
    if (!makeFolder(QFileInfo(devicePath).path())) {
        return false;
    }
    QSaveFile file(filePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()
        || !file.commit()) {
        return report(QStringLiteral("write"), filePath, file.errorString());
    }
    return true;
}

bool DeviceFolder::writeExecutable(const QString &devicePath, const QByteArray &content) const
{
    return write(devicePath, content)
        && QFile::setPermissions(path(devicePath),
                                 QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                     | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther
                                     | QFile::ExeOther);
}

bool DeviceFolder::makeFolder(const QString &devicePath) const
{
    return QDir().mkpath(path(devicePath))
        || report(QStringLiteral("make the folder"), path(devicePath), systemError());
}

bool DeviceFolder::makeFifo(const QString &devicePath) const
{
    const QByteArray name = QFile::encodeName(path(devicePath));
    return makeFolder(QFileInfo(devicePath).path())
        && (mkfifo(name.constData(), 0600) == 0
            || report(QStringLiteral("make the pipe"), path(devicePath), systemError()));
}

bool DeviceFolder::copy(const QString &source, const QString &devicePath) const
{
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly)) {
        return report(QStringLiteral("read"), source, file.errorString());
    }
    return write(devicePath, file.readAll());
}

bool DeviceFolder::remove(const QString &devicePath) const
{
    QFile file(path(devicePath));
    return file.remove() || !exists(devicePath)
        || report(QStringLiteral("remove"), file.fileName(), file.errorString());
}
