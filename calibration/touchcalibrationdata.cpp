#include "calibration/touchcalibrationdata.h"

#include "platform/tslibdevice.h"
#include "platform/tslibenvironment.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"

#include <QDebug>

#include <tslib.h>
#include <utility>

void TouchCalibrationData::TouchscreenCloser::operator()(tsdev *device) const
{
    ts_close(device);
}

TouchCalibrationData::TouchCalibrationData()
{
    const WindowServer *pServer = WindowServer::instance();
    nRotation = pServer ? pServer->transformationOrientation() : 0;
}

TouchCalibrationData::~TouchCalibrationData() = default;

short TouchCalibrationData::openTouchscreen()
{
    pTouchscreen.reset(); // the old one is closed before the new one is opened
    pTouchscreen.reset(openTslibDevice(false));
    if (!pTouchscreen) {
        qDebug("ts_open error");
        return ERR_TS_OPEN;
    }
    const TslibEnvironment withoutCalibration;
    if (ts_config(pTouchscreen.get()) != 0) {
        qDebug("ts_config error");
        pTouchscreen.reset();
        return ERR_TS_CONFIG;
    }
    return 0;
}

short TouchCalibrationData::closeTouchscreen()
{
    if (!pTouchscreen) {
        return ERR_NULL_POINTER;
    }
    return ts_close(pTouchscreen.release()) == 0 ? 0 : ERR_TS_CLOSE;
}

void TouchCalibrationData::settle()
{
    switch (debt) {
    case Debt::None:
        break;
    case Debt::Restore:
        restoreOldCalibration();
        break;
    case Debt::Accept:
        acceptCalibration();
        break;
    }
    if (debt != Debt::Restore) {
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
    backupCalibration(); // nothing is replaced that could not be put back
    WindowServer *pServer = WindowServer::instance();
    if (pServer) {
        pServer->clearCalibration();
    }
    short code = makeCalibrationWritable(true);
    bStored = false;
    if (code == 0) {
        code = pServer ? store(*pServer, pairsOf(measured, nRotation)) : short(0);
        bStored = code == 0;
        debt = bStored ? Debt::None : debt;
    } else {
        // The pointer's calibration is cleared, and nothing has come in its place.
        debt = Debt::Restore;
    }
    return protectCalibration(code);
}

short TouchCalibrationData::store(WindowServer &server, const CalibrationPairs &pairs) const
{
    switch (server.calibrate(pairs, *backup)) {
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
    makeCalibrationWritable(true); // a file that is right already needs no writing
    WindowServer *pServer = WindowServer::instance();
    const bool bRestored = !pServer || pServer->restoreCalibration(*backup);
    makeCalibrationWritable(false);
    // The note of a calibration that was accepted before, but whose note would not go, is still
    // due.
    debt = !bRestored                             ? Debt::Restore
        : WindowServer::isCalibrationUnaccepted() ? Debt::Accept
                                                  : Debt::None;
    if (!bRestored) {
        return ERR_FILE_WRITE;
    }
    backup.reset();
    return 0;
}

short TouchCalibrationData::acceptCalibration()
{
    // A note of an earlier start may be there all the same, which nobody has accepted.
    const bool bToDo = debt == Debt::Accept || (bStored && WindowServer::isCalibrationUnaccepted());
    if (!bToDo || debt == Debt::Restore) {
        return 0; // nothing has been stored, or nothing by the last run
    }
    short code = makeCalibrationWritable(true);
    const bool bAccepted = WindowServer::acceptCalibration();
    debt = bAccepted ? Debt::None : Debt::Accept;
    if (!bAccepted && code == 0) {
        code = ERR_FILE_ERASE;
    }
    return protectCalibration(code);
}

short TouchCalibrationData::makeCalibrationWritable(bool writable)
{
    if (writable) {
        directory.emplace();
        if (directory->isReady()) {
            return 0;
        }
        remountFailures.push_back(ERR_REMOUNT_CAL);
        return RemountFailed;
    }
    const bool bDone = !directory || directory->protect();
    directory.reset();
    if (bDone) {
        return 0;
    }
    remountFailures.push_back(ERR_REMOUNT_PROTECT);
    return RemountFailed;
}

/// Ends what makeCalibrationWritable(true) has begun; \a code, if it is one, goes before its own.
short TouchCalibrationData::protectCalibration(short code)
{
    const short protectCode = makeCalibrationWritable(false);
    return code != 0 ? code : protectCode;
}

std::vector<short> TouchCalibrationData::takeRemountFailures()
{
    return std::exchange(remountFailures, {});
}
