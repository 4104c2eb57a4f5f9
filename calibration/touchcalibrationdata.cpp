#include "calibration/touchcalibrationdata.h"

#include "infobox/veltainfobox.h"
#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/pointertransform.h"
#include "platform/touchscreenpaths.h"
#include "platform/tslibdevice.h"
#include "platform/tslibenvironment.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"

#include <QDebug>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <chrono>
#include <tslib.h>

namespace {

using namespace std::chrono_literals;

/// How long a remount may take, a slow flash with much to write back included.
constexpr auto MountLimit = 20s;

} // namespace

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
    bBackupLoaded = bRestoreDue;
}

short TouchCalibrationData::backupCalibration()
{
    if (bBackupLoaded) {
        return WARN_CAL_BACKUP_LOADED;
    }
    PointerCalibrationData pairs;
    pairs.screenPoints = crosshairTargets(untransformed({nScreenWidth, nScreenHeight}, nRotation));
    if (const WindowServer *pServer = WindowServer::instance()) {
        pServer->getCalibration(&pairs);
    }
    backup = storedRecord(pairs);
    bBackupLoaded = true;
    return 0;
}

short TouchCalibrationData::applyCalibration(const CalibrationRecord &pairs, bool bRestore)
{
    const PointerCalibrationData data =
        bRestore ? storedPairs(pairs) : calibrationPairs(pairs, nRotation);
    WindowServer *pServer = WindowServer::instance();
    if (pServer) {
        pServer->clearCalibration();
    }
    short code = makeCalibrationWritable(true);
    if (pServer && (code == 0 || bRestore) && !pServer->calibrate(data, bRestore)) {
        code = bRestore || PointerTransform::fit(data) ? ERR_FILE_WRITE : ERR_CAL_CORRUPT;
    }
    if (!bRestore && code == 0) {
        bRestoreDue = false;
    } else if (!bRestore && code == RemountFailed) {
        // The pointer's calibration is cleared, and nothing has come in its place.
        bRestoreDue = bBackupLoaded;
    }
    if (bRemounted) {
        const short protectCode = makeCalibrationWritable(false);
        code = code != 0 ? code : protectCode;
    }
    return code;
}

short TouchCalibrationData::restoreOldCalibration()
{
    if (!bBackupLoaded) {
        return ERR_CAL_NO_BACKUP;
    }
    const short code = applyCalibration(backup, true);
    bRestoreDue = bBackupLoaded = code == ERR_FILE_WRITE;
    return code == RemountFailed ? 0 : code;
}

short TouchCalibrationData::makeCalibrationWritable(bool bWritable)
{
    const QString directory = QFileInfo(pointerCalibrationFile()).path();
    if (bWritable && QFileInfo(directory).isWritable()) {
        return 0;
    }
    bRemounted = bWritable;
    const QString option =
        QStringLiteral("remount,%1").arg(bWritable ? QLatin1String("rw") : QLatin1String("ro"));
    const int result = runCommand(devicePath(QStringLiteral("/bin/mount")),
                                  {QStringLiteral("-o"), option, directory}, MountLimit);
    if (result == CommandNotStarted || result == CommandCrashed) {
        if (!bSilent) {
            const VeltaInfoBox box(bWritable ? ERR_REMOUNT_CAL : ERR_REMOUNT_PROTECT,
                                   QFileInfo(pointerCalibrationName()).path(),
                                   CalibrationBoxSeconds, nullptr, true, true);
        }
        return RemountFailed;
    }
    return 0;
}
