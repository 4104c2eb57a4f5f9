#include "platform/touchscreenpaths.h"

#include "platform/devicepath.h"

#include <QFile>

namespace {

QString builtInCalibrationFile()
{
    return QStringLiteral("/etc/pointercal");
}

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
    return fromEnvironment("POINTERCAL_FILE", builtInCalibrationFile());
}

QString pointerCalibrationName()
{
    const QString path = QFile::decodeName(qgetenv("POINTERCAL_FILE"));
    return path.isEmpty() ? builtInCalibrationFile() : path;
}
