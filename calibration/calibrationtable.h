#pragma once

/// \file
/// What a calibration does in which state: the one table that CalibrationRun reads. The states with
/// "Left" in their name are those of a request that has been withdrawn while its last step cannot
/// be left yet; no other run follows.

enum class CalibrationState {
    Idle, ///< nobody wants a calibration
    Resting, ///< one is wanted, and waits for the operator to start it or leave
    CountingDown, ///< to a run
    Sampling, ///< a run waits for touches
    Applying, ///< its points are handed over; boxes about that may be open
    ApplyingLeft,
    Awaiting, ///< counting down to the old calibration, unless the new one is accepted
    AwaitingLeft,
    Restoring, ///< the old calibration is put back; the box about that may be open
    RestoringLeft
};
constexpr int CalibrationStates = 10;

enum class CalibrationEvent {
    Request, ///< somebody wants a calibration
    Start, ///< of a run, at once
    StopCountdown, ///< to a run
    StartTick, ///< a second of the count-down to a run has passed
    AcceptTick, ///< a second of the count-down to the restore has passed
    Expired, ///< a tick at 0
    PointMeasured,
    AllMeasured,
    TouchscreenFailed, ///< it cannot be opened or read
    Applied, ///< the points are handed over, and all boxes about that are closed
    Accept,
    Restore, ///< the old calibration is wanted back
    Restored, ///< it is back, and the box about that is closed
    Withdraw ///< nobody wants a calibration any more
};
constexpr int CalibrationEvents = 14;

enum class CalibrationAction {
    None,
    BeginCountdown,
    BeginAcceptance,
    Count,
    AskToStart,
    Begin,
    NextPoint,
    StopSampling,
    Apply,
    Accept,
    Restore
};

struct CalibrationStep
{
    bool bMeant = false; ///< else the event means nothing in this state
    CalibrationState next{}; ///< entered before the action
    CalibrationAction action{};
};

CalibrationStep calibrationStep(CalibrationState state, CalibrationEvent event);

/// Whether a calibration is wanted: from the request or the start until it is withdrawn.
bool isWanted(CalibrationState state);
