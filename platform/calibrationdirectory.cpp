#include "platform/calibrationdirectory.h"

#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/touchscreenpaths.h"

#include <QFileInfo>
#include <QStorageInfo>

#include <chrono>
#include <utility>

namespace {

using namespace std::chrono_literals;

/// How long a remount may take, a slow flash with much to write back included.
constexpr auto MountLimit = 20s;

QString directory()
{
    return QFileInfo(pointerCalibrationFile()).path();
}

bool remount(const char *option, const QString &target)
{
    const int result =
        runCommand(devicePath(QStringLiteral("/bin/mount")),
                   {QStringLiteral("-o"), QLatin1String(option), target}, MountLimit);
    return result != CommandNotStarted && result != CommandCrashed;
}

bool isWritable(const QString &folder)
{
    return QFileInfo(folder).isWritable();
}

/// Where the file system that holds \a folder is mounted; empty when that is no part of the device.
QString mountPoint(const QString &folder)
{
    const QString point = QStorageInfo(folder).rootPath();
    return point.startsWith(devicePath(QStringLiteral("/"))) ? point : QString();
}

} // namespace

CalibrationDirectory::CalibrationDirectory() : bRemounted(!isWritable(directory()))
{
    bReady = !bRemounted || makeWritable();
}

CalibrationDirectory::~CalibrationDirectory()
{
    protect();
}

bool CalibrationDirectory::protect()
{
    return !std::exchange(bRemounted, false) || remount("remount,ro", sTarget);
}

bool CalibrationDirectory::makeWritable()
{
    sTarget = directory();
    if (!remount("remount,rw", sTarget)) {
        return false;
    }
    // A directory that is no mount point of its own is refused by the command.
    if (const QString point = mountPoint(sTarget);
        !isWritable(sTarget) && !point.isEmpty() && point != sTarget) {
        sTarget = point;
        return remount("remount,rw", sTarget);
    }
    return true;
}
