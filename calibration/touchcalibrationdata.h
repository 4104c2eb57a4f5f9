#pragma once

#include "calibration/calibrationrecord.h"
#include "platform/calibrationdirectory.h"
#include "platform/savedcalibration.h"

#include <optional>

class WindowServer;
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
    /// Keeps the calibration in force. A backup that is already held stays (and the result is a
    /// warning code).
    short backupCalibration();
    /// Puts the points \a measured in a run in force and into the pointer calibration file, whose
    /// directory is made writable for that moment if it is not. Until acceptCalibration() the next
    /// start of the program goes back to the backup.
    ///
    /// Points that are refused (ERR_CAL_CORRUPT) or cannot be stored (ERR_FILE_WRITE) leave pointer
    /// and file as before. Where the directory cannot be remounted (RemountFailed) they leave the
    /// pointer without calibration and the file as before.
    short applyCalibration(const CalibrationRecord &measured);
    /// Puts the backup in force again and drops it, unless the file cannot be written
    /// (ERR_FILE_WRITE): then it is in force, and kept for another try. A failed remount, of which
    /// the operator has been told, is no failure of the restore.
    short restoreOldCalibration();
    /// Has the applied calibration outlive the program. Where that cannot be made sure
    /// (ERR_FILE_ERASE, or RemountFailed) the next start may go back to the backup, and another
    /// try is due. Nothing to do is no failure.
    short acceptCalibration();
    bool isAcceptDue() const { return bAcceptDue; }
    /// Makes the directory of the pointer calibration file writable, or as it was before. The
    /// operator is told of a failure (RemountFailed).
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
    short store(WindowServer &server, const PointerCalibrationData &pairs) const;
    short protectCalibration(short code);

    bool bRestoreDue = false;
    bool bAcceptDue = false; ///< the operator has accepted, and the next start would not know
    bool bSilent = false;
    int nRotation; ///< quarter turns of the screen, 0 to 3
    std::optional<SavedCalibration> backup;
    std::optional<CalibrationDirectory> directory; ///< while it is to be writable
};
