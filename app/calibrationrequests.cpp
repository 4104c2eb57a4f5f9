#include "app/calibrationrequests.h"

#include "calibration/calibrationpage.h"
#include "platform/requestfiles.h"
#include "platform/touchtype.h"
#include "platform/windowserver.h"

#include <QApplication>

CalibrationRequests::CalibrationRequests() : request(CalibrationRequestFile)
{ }

CalibrationRequests::~CalibrationRequests() = default;

void CalibrationRequests::detectTouchType()
{
    bCalibratable = readTouchType() == TouchType::Single;
}

void CalibrationRequests::serve()
{
    if (!request.isPending()) {
        if (pPage) {
            pPage->hide();
        }
        return;
    }
    WindowServer *pServer = WindowServer::instance();
    if (!bCalibratable && pServer && pServer->isPointerSuspended()) {
        detectTouchType(); // one that came meanwhile is not opened, so nobody has told of it
    }
    if (!bCalibratable) {
        request.finish();
        return;
    }
    if (QApplication::activeModalWidget()) {
        return; // it would cover a box that takes all input
    }
    if (!pPage) {
        pPage = std::make_unique<CalibrationPage>(); // rarely needed, and not small
    }
    if (pPage->isRunning()) {
        return;
    }
    if (pPage->isVisible() && request.isBegun()) {
        // The operator has left the page, but the request could not be removed.
        request.finish();
        pPage->hide();
        return;
    }
    request.begin();
    if (pServer) {
        pServer->resumePointer();
    }
    pPage->startAutoCalibration();
}

bool CalibrationRequests::isPageVisible() const
{
    return pPage && pPage->isVisible();
}

bool CalibrationRequests::takeTimeoutMessage()
{
    RequestFile message(CalMessageFile);
    if (!message.isPending()) {
        return false;
    }
    // A message that stays would shut touch off at every start, and with it the way to calibrate.
    const bool bOnce = message.finish();
    if (WindowServer *pServer = WindowServer::instance(); pServer && bOnce) {
        pServer->suspendPointer(); // until a calibration resumes it
    }
    return true;
}
