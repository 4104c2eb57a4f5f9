#pragma once

#include "calibration/calibrationrecord.h"
#include "platform/calibrationdirectory.h"
#include "platform/savedcalibration.h"

#include <memory>
#include <optional>
#include <vector>

class WindowServer;
struct tsdev;

/// What a calibration run works on and leaves behind: the record of the measured points, the open
/// touchscreen, the calibration that was in force before, and the way to the window server's
/// pointer handler.
///
/// GUI thread only; the sampling thread gets the touchscreen handle alone. Operations return 0 or
/// a negative code of the error catalogue, and tell nobody else.
class TouchCalibrationData
{
public:
    TouchCalibrationData();
    /// Closes the touchscreen if it is open.
    ~TouchCalibrationData();
    TouchCalibrationData(const TouchCalibrationData &) = delete;
    TouchCalibrationData &operator=(const TouchCalibrationData &) = delete;

    /// Opens and configures the touchscreen for raw samples. Nobody else may read the touchscreen
    /// from here to closeTouchscreen(): two readers of one device can take each other's samples.
    /// One that is still open is closed first.
    short openTouchscreen();
    short closeTouchscreen();
    /// Open only during a run, else nullptr. Owned here.
    tsdev *touchscreen() const { return pTouchscreen.get(); }

    /// For a new run, or the end of the program: tries once more what has failed at the end of the
    /// last run, and lets the next backupCalibration() take a new backup. A backup that is the only
    /// good copy of the calibration stays.
    void settle();
    /// Keeps the calibration in force. A backup that is already held stays (and the result is a
    /// warning code).
    short backupCalibration();
    /// Puts the record \a measured in a run in force and into the pointer calibration file, whose
    /// directory is made writable for that moment if it is not. Until acceptCalibration() the next
    /// start of the program goes back to the backup.
    ///
    /// Pairs that are refused (ERR_CAL_CORRUPT) or cannot be stored (ERR_FILE_WRITE) leave pointer
    /// and file as before. Where the directory cannot be remounted (RemountFailed) they leave the
    /// pointer without calibration and the file as before.
    short applyCalibration(const CalibrationRecord &measured);
    /// Puts the backup in force again and drops it, unless the file cannot be written
    /// (ERR_FILE_WRITE): then it is in force, and kept for settle(). A failed remount is no failure
    /// of the restore.
    short restoreOldCalibration();
    /// Has the applied calibration outlive the program. Where that is not sure (ERR_FILE_ERASE or
    /// RemountFailed) the next start may go back to the backup, and settle() tries again. Nothing
    /// to do is no failure.
    short acceptCalibration();
    /// Makes the directory of the pointer calibration file writable, or as it was before.
    short makeCalibrationWritable(bool writable);
    /// Result of a remount that could not run; see takeRemountFailures().
    static constexpr short RemountFailed = -1;
    /// ERR_REMOUNT_CAL or ERR_REMOUNT_PROTECT for each failure since the last call, in order.
    std::vector<short> takeRemountFailures();

    int nScreenWidth = 0; ///< pixels, set at the start of a run
    int nScreenHeight = 0; ///< pixels, set at the start of a run
    CalibrationRecord record; ///< measured in this run

private:
    struct TouchscreenCloser
    {
        void operator()(tsdev *device) const;
    };
    /// What is still to be done, as it has failed.
    enum class Debt {
        None,
        Restore, ///< the backup is the only good copy, and no later run has succeeded
        Accept ///< the operator has accepted, and the next start would not know
    };

    short store(WindowServer &server, const CalibrationPairs &pairs) const;
    short protectCalibration(short code);

    std::unique_ptr<tsdev, TouchscreenCloser> pTouchscreen;
    std::optional<SavedCalibration> backup;
    bool bStored = false; ///< by the last run
    Debt debt = Debt::None;
    std::optional<CalibrationDirectory> directory; ///< while it is to be writable
    std::vector<short> remountFailures;
    int nRotation; ///< quarter turns of the screen, 0 to 3
};
