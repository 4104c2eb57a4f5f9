#include "platform/requestfile.h"

#include "platform/devicepath.h"
#include "platform/regularfile.h"

#include <QFile>

#include <cerrno>

bool RequestFile::Identity::operator==(const Identity &other) const
{
    return device == other.device && number == other.number
        && written.tv_sec == other.written.tv_sec && written.tv_nsec == other.written.tv_nsec;
}

RequestFile::RequestFile(const QString &path) : sPath(path)
{ }

std::optional<RequestFile::Identity> RequestFile::identity() const
{
    struct stat status = {};
    if (lstat(QFile::encodeName(devicePath(sPath)).constData(), &status) != 0) {
        return {};
    }
    return Identity{status.st_dev, status.st_ino, status.st_mtim};
}

bool RequestFile::isPending() const
{
    return isRequested(devicePath(sPath)) && !(finished && finished == identity());
}

void RequestFile::begin()
{
    begun = identity();
}

bool RequestFile::isBegun() const
{
    return begun && begun == identity();
}

bool RequestFile::finish()
{
    if (removeName(devicePath(sPath))) {
        finished.reset();
        return true;
    }
    qWarning("%s cannot be removed (%s), not served again", qPrintable(sPath),
             qPrintable(qt_error_string(errno)));
    finished = identity();
    return false;
}
