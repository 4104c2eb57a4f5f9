#include "platform/calibrationdirectory.h"

#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/touchscreenpaths.h"

#include <QFileInfo>

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

bool remount(const char *option)
{
    const int result =
        runCommand(devicePath(QStringLiteral("/bin/mount")),
                   {QStringLiteral("-o"), QLatin1String(option), directory()}, MountLimit);
    return result != CommandNotStarted && result != CommandCrashed;
}

} // namespace

CalibrationDirectory::CalibrationDirectory() : bRemounted(!QFileInfo(directory()).isWritable())
{
    bReady = !bRemounted || remount("remount,rw");
}

CalibrationDirectory::~CalibrationDirectory()
{
    protect();
}

bool CalibrationDirectory::protect()
{
    return !std::exchange(bRemounted, false) || remount("remount,ro");
}
