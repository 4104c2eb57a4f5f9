#include "platform/touchscreenpaths.h"

#include "platform/devicepath.h"

#include <QFile>

namespace {

QString fromEnvironment(const char *variable, const QString &builtIn)
{
    const QString path = QFile::decodeName(qgetenv(variable));
    return path.isEmpty() ? devicePath(builtIn) : path;
}

} // namespace

QString touchscreenDevice()
{
    return fromEnvironment("TSLIB_TSDEVICE", QStringLiteral("/dev/input/touchscreen"));
}

QString pointerCalibrationFile()
{
    return fromEnvironment("POINTERCAL_FILE", QStringLiteral("/etc/pointercal"));
}
