#include "platform/tslibenvironment.h"

#include "platform/devicepath.h"

#include <QFile>
#include <QFileInfo>

TslibEnvironment::Variable::Variable(const char *name)
    : pName(name), before(qgetenv(name)), bWasSet(qEnvironmentVariableIsSet(name))
{ }

TslibEnvironment::Variable::~Variable()
{
    if (bWasSet) {
        qputenv(pName, before);
    } else {
        qunsetenv(pName);
    }
}

void TslibEnvironment::Variable::set(const QString &path) const
{
    qputenv(pName, QFile::encodeName(path));
}

TslibEnvironment::TslibEnvironment(const QString &calibrationFile)
    : calibration("TSLIB_CALIBFILE"), configuration("TSLIB_CONFFILE")
{
    // No file can ever have this name, and tslib takes a missing file for "no calibration".
    calibration.set(calibrationFile.isEmpty() ? QStringLiteral("/dev/null/uncalibrated")
                                              : calibrationFile);
    const QString file = devicePath(QStringLiteral("/etc/ts.conf"));
    if (configuration.isEmpty() && QFileInfo::exists(file)) {
        configuration.set(file);
    }
}

TslibEnvironment::~TslibEnvironment() = default;
