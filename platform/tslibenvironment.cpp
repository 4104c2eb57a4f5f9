#include "platform/tslibenvironment.h"

#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/touchscreenpaths.h"

#include <QFile>

namespace {

constexpr auto DefaultConfiguration = QLatin1String("/etc/ts.conf");

} // namespace

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

QString TslibEnvironment::Variable::path() const
{
    return QFile::decodeName(before);
}

void TslibEnvironment::Variable::set(const QString &path) const
{
    qputenv(pName, QFile::encodeName(path));
}

TslibEnvironment::TslibEnvironment(const QByteArray &calibrationContent)
    : calibration("TSLIB_CALIBFILE"), configuration("TSLIB_CONFFILE")
{
    nameCalibration(calibrationContent);
    nameConfiguration();
}

void TslibEnvironment::nameCalibration(const QByteArray &content)
{
    // tslib takes a missing file for "no calibration".
    calibration.set(MemoryFile::nowhere());
    if (content.isEmpty()) {
        return;
    }
    calibrationCopy.emplace(content);
    if (calibrationCopy->isValid()) {
        calibration.set(calibrationCopy->path());
    } else if (const QString file = pointerCalibrationFile();
               readRegularFile(file, Links::Follow).content == content) {
        calibration.set(file);
    } else {
        qWarning("No memory for the pointer calibration: touches are not calibrated");
    }
}

void TslibEnvironment::nameConfiguration()
{
    const QString named = configuration.path();
    const QString path = named.isEmpty() ? devicePath(DefaultConfiguration) : named;
    const FileContent file = readRegularFile(path, Links::Follow);
    switch (file.state) {
    case FileContent::Absent:
        break; // tslib knows where else to look, or says what is missing
    case FileContent::Readable:
        configuration.set(path);
        break;
    case FileContent::Unreadable:
        // A name all the same, as tslib would open its own, which may be this very file.
        configuration.set(MemoryFile::nowhere());
        sProblem = QStringLiteral(": %1 cannot be read: %2")
                       .arg(named.isEmpty() ? QString(DefaultConfiguration) : named, file.sError);
        break;
    }
}
