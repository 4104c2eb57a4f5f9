#include "platform/tslibenvironment.h"

#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/touchscreenpaths.h"

#include <QFile>
#include <QFileInfo>

#include <sys/mman.h>
#include <unistd.h>

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

TslibEnvironment::TslibEnvironment(const QByteArray &calibrationContent)
    : calibration("TSLIB_CALIBFILE"), configuration("TSLIB_CONFFILE")
{
    // No file can ever have this name, and tslib takes a missing file for "no calibration".
    QString calibrationFile = QStringLiteral("/dev/null/uncalibrated");
    if (!calibrationContent.isEmpty()) {
        // In memory, as a disk may be full or read-only just when the old calibration must return.
        nCalibrationFd = memfd_create("pointercal", MFD_CLOEXEC);
        if (nCalibrationFd >= 0
            && write(nCalibrationFd, calibrationContent.constData(),
                     static_cast<std::size_t>(calibrationContent.size()))
                == calibrationContent.size()) {
            calibrationFile = QStringLiteral("/proc/self/fd/%1").arg(nCalibrationFd);
        } else if (const QString file = pointerCalibrationFile();
                   readRegularFile(file, Links::Follow).content == calibrationContent) {
            calibrationFile = file;
        } else {
            qWarning("No memory for the pointer calibration: touches are not calibrated");
        }
    }
    calibration.set(calibrationFile);
    const QString file = devicePath(QStringLiteral("/etc/ts.conf"));
    if (configuration.isEmpty() && QFileInfo::exists(file)) {
        configuration.set(file);
    }
}

TslibEnvironment::~TslibEnvironment()
{
    if (nCalibrationFd >= 0) {
        close(nCalibrationFd);
    }
}
