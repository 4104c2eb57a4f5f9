#pragma once

#include "calibration/calibrationrecord.h"

struct tsdev;

/// Seconds after which a box about the calibration file closes by itself: the touchscreen that
/// should press its button may be uncalibrated at that moment.
constexpr quint8 CalibrationBoxSeconds = 10;

/// What a calibration run works on and leaves behind: the measured points, the open touchscreen,
/// the calibration that was in force before, and the way to the window server's pointer handler.
///
/// GUI thread only; the sampling thread gets the touchscreen handle alone. Operations return 0 or
/// a negative code of the error catalogue.
class TouchCalibrationData
{
public:
    TouchCalibrationData();
    /// Closes the touchscreen if it is open.
    ~TouchCalibrationData();
    TouchCalibrationData(const TouchCalibrationData &) = delete;
    TouchCalibrationData &operator=(const TouchCalibrationData &) = delete;

    /// Opens and configures the touchscreen for raw samples; the operator is not told of failures.
    /// Nobody else may read the touchscreen from here to closeTouchscreen(): two readers of one
    /// device can take each other's samples. One that is still open is closed first.
    short openTouchscreen();
    short closeTouchscreen();
    /// Lets the pointer have the touches of a touchscreen that is still open, but not read any
    /// more.
    void shareTouchscreen();

    /// Lets the next backupCalibration() take a new backup. One that is due for a restore is
    /// restored first, without a word to the operator, and stays when that fails again.
    void releaseBackup();
    /// The backup is the only good copy of the calibration: a restore could not be stored, or
    /// measured points have cost the pointer its calibration; and no later run has succeeded.
    bool isRestoreDue() const { return bRestoreDue; }
    /// Keeps the calibration in force, for a screen of nScreenWidth x nScreenHeight. A backup that
    /// is already held stays (and the result is a warning code).
    short backupCalibration();
    /// Puts \a pairs in force and into the pointer calibration file, whose directory is made
    /// writable for that moment if it is not. With \a bRestore the pairs are those of a backup,
    /// else measured points of a run.
    ///
    /// Measured points that are refused (ERR_CAL_CORRUPT) or cannot be stored (ERR_FILE_WRITE)
    /// leave pointer and file as before. Where the directory cannot be remounted (RemountFailed)
    /// measured points leave the pointer without calibration and the file as before; a restore
    /// reaches the pointer all the same.
    short applyCalibration(const CalibrationRecord &pairs, bool bRestore);
    /// Puts the backup in force again and drops it, unless the file cannot be written
    /// (ERR_FILE_WRITE): then it is in force, and kept for another try. A failed remount, of which
    /// the operator has been told, is no failure of the restore.
    short restoreOldCalibration();
    /// Remounts the file system of the pointer calibration file's directory, for writing (unless
    /// the directory is writable) or for reading only. The operator is told of a failure. Where
    /// the file is a symbolic link, this is the link's directory, not its target's.
    short makeCalibrationWritable(bool bWritable);
    /// Result of a remount that could not run.
    static constexpr short RemountFailed = -1;

    /// No boxes from now on: for the end of the program, where nobody could answer them.
    void setSilent() { bSilent = true; }

    int nScreenWidth = 0; ///< pixels, set at the start of a run
    int nScreenHeight = 0; ///< pixels, set at the start of a run
    tsdev *pTouchscreen = nullptr; ///< open only during a run
    CalibrationRecord points; ///< measured in this run

private:
    bool bBackupLoaded = false; ///< a backup is held
    bool bRemounted = false;
    bool bRestoreDue = false;
    bool bSilent = false;
    int nRotation; ///< quarter turns of the screen, 0 to 3
    CalibrationRecord backup;
};
