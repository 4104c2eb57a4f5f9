#include "calibration/touchcalibrationdata.h"

#include "infobox/veltainfobox.h"
#include "platform/touchscreenpaths.h"
#include "platform/tslibdevice.h"
#include "platform/tslibenvironment.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"

#include <QDebug>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <tslib.h>

TouchCalibrationData::TouchCalibrationData()
{
    const WindowServer *pServer = WindowServer::instance();
    nRotation = pServer ? pServer->transformationOrientation() : 0;
}

TouchCalibrationData::~TouchCalibrationData()
{
    if (pTouchscreen) {
        closeTouchscreen();
    }
}

short TouchCalibrationData::openTouchscreen()
{
    if (pTouchscreen) {
        closeTouchscreen();
    }
    pTouchscreen = openTslibDevice(false);
    if (!pTouchscreen) {
        qDebug("ts_open error");
        return ERR_TS_OPEN;
    }
    const TslibEnvironment withoutCalibration;
    if (ts_config(pTouchscreen) != 0) {
        qDebug("ts_config error");
        closeTouchscreen();
        return ERR_TS_CONFIG;
    }
    return 0;
}

void TouchCalibrationData::shareTouchscreen()
{
    if (pTouchscreen) {
        releaseGrab(pTouchscreen);
    }
}

short TouchCalibrationData::closeTouchscreen()
{
    if (!pTouchscreen) {
        return ERR_NULL_POINTER;
    }
    const int result = ts_close(pTouchscreen);
    pTouchscreen = nullptr;
    return result == 0 ? 0 : ERR_TS_CLOSE;
}

void TouchCalibrationData::releaseBackup()
{
    if (bRestoreDue) {
        const QScopedValueRollback silent(bSilent, true);
        restoreOldCalibration();
    }
    if (!bRestoreDue) {
        backup.reset();
    }
}

short TouchCalibrationData::backupCalibration()
{
    if (backup) {
        return WARN_CAL_BACKUP_LOADED;
    }
    const WindowServer *pServer = WindowServer::instance();
    backup = pServer ? pServer->saveCalibration() : SavedCalibration();
    return 0;
}

short TouchCalibrationData::applyCalibration(const CalibrationRecord &measured)
{
    WindowServer *pServer = WindowServer::instance();
    if (pServer) {
        pServer->clearCalibration();
    }
    short code = makeCalibrationWritable(true);
    if (code != 0) {
        // The pointer's calibration is cleared, and nothing has come in its place.
        bRestoreDue = backup.has_value();
    } else {
        code = pServer ? store(*pServer, calibrationPairs(measured, nRotation)) : short(0);
        bRestoreDue = bRestoreDue && code != 0;
    }
    bAcceptDue = false;
    return protectCalibration(code);
}

short TouchCalibrationData::store(WindowServer &server, const PointerCalibrationData &pairs) const
{
    switch (server.calibrate(pairs, backup.value_or(server.saveCalibration()))) {
    case CalibrationOutcome::Stored:
        return 0;
    case CalibrationOutcome::Degenerate:
        return ERR_CAL_CORRUPT;
    case CalibrationOutcome::NotWritten:
        return ERR_FILE_WRITE;
    }
    Q_UNREACHABLE();
}

short TouchCalibrationData::restoreOldCalibration()
{
    if (!backup) {
        return ERR_CAL_NO_BACKUP;
    }
    short code = makeCalibrationWritable(true);
    WindowServer *pServer = WindowServer::instance();
    if (pServer && !pServer->restoreCalibration(*backup)) {
        code = ERR_FILE_WRITE;
    }
    code = protectCalibration(code);
    bAcceptDue = false;
    bRestoreDue = code == ERR_FILE_WRITE;
    if (!bRestoreDue) {
        backup.reset();
    }
    return code == RemountFailed ? 0 : code;
}

short TouchCalibrationData::acceptCalibration()
{
    if (!bAcceptDue && !WindowServer::isCalibrationUnaccepted()) {
        return 0; // refused, not stored, or accepted already
    }
    short code = makeCalibrationWritable(true);
    bAcceptDue = !WindowServer::acceptCalibration();
    if (bAcceptDue) {
        code = code != 0 ? code : ERR_FILE_ERASE;
    }
    return protectCalibration(code);
}

short TouchCalibrationData::makeCalibrationWritable(bool bWritable)
{
    if (bWritable) {
        directory.emplace();
    }
    const bool bDone = !directory || (bWritable ? directory->isReady() : directory->protect());
    if (!bWritable) {
        directory.reset();
    }
    if (bDone) {
        return 0;
    }
    if (!bSilent) {
        const VeltaInfoBox box(bWritable ? ERR_REMOUNT_CAL : ERR_REMOUNT_PROTECT,
                               QFileInfo(pointerCalibrationName()).path(), CalibrationBoxSeconds,
                               nullptr, true, true);
    }
    return RemountFailed;
}

/// Ends what makeCalibrationWritable(true) has begun; \a code, if it is one, goes before its own.
short TouchCalibrationData::protectCalibration(short code)
{
    const short protectCode = makeCalibrationWritable(false);
    return code != 0 ? code : protectCode;
}
