#include "platform/screenshotrequest.h"

#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/requestfiles.h"
#include "platform/screengrab.h"

#include <QBuffer>

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
        isRequested(pictureFile()); // takes away what is no file, such as a folder
        replaceFile(pictureFile(), picture.data(), PictureMode);
    }
    request.finish();
}
