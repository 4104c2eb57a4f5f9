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
        if (QFileInfo(pictureFile()).isDir()) {
            removeName(pictureFile());
        }
        if (!replaceFile(pictureFile(), picture.data(), PictureMode)) {
            qWarning("%s cannot be written: %s", qPrintable(pictureFile()),
                     qPrintable(qt_error_string(errno)));
        }
    }
    request.finish();
}
