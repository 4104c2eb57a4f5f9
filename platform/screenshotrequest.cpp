#include "platform/screenshotrequest.h"

#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/requestfiles.h"
#include "platform/screengrab.h"

#include <QBuffer>
#include <QFileInfo>

#include <cerrno>

namespace {

constexpr int PictureMode = 0644;

QString pictureFile()
{
    return devicePath(QStringLiteral("/tmp/screenshot.png"));
}

} // namespace

ScreenshotRequest::ScreenshotRequest() : request(ScreenshotRequestFile)
{
    removeStrayFiles(pictureFile());
}

void ScreenshotRequest::serve()
{
    if (!request.isPending()) {
        return;
    }
    QBuffer picture;
    if (grabScreen().save(&picture, "PNG")) {
        const QFileInfo planted(pictureFile());
        const bool bPlanted = planted.isSymLink() || (planted.exists() && !planted.isFile());
        if (bPlanted && removeName(pictureFile())) {
            qWarning("%s is no file and so no picture: removed", qPrintable(pictureFile()));
        }
        if (!replaceFile(pictureFile(), picture.data(), PictureMode)) {
            qWarning("%s cannot be written: %s", qPrintable(pictureFile()),
                     qPrintable(qt_error_string(errno)));
        }
    }
    request.finish();
}
