#pragma once

#include "calibration/calibrationpace.h"
#include "calibration/calibrationtable.h"
#include "calibration/suspendedpointer.h"
#include "calibration/touchcalibrationdata.h"
#include "calibration/veltacalibrationthread.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

/// A touchscreen calibration from its request to its acceptance, without a widget: the states of
/// calibrationtable.h, and what they work on. Page, panel and window of a run show what this
/// signals and tell it what the operator does. GUI thread.
///
/// At its destruction a calibration that nobody has accepted yet is replaced by the one before,
/// without a word.
class CalibrationRun : public QObject
{
    Q_OBJECT

public:
    explicit CalibrationRun(const CalibrationPace &pace = {}, QObject *parent = nullptr);
    ~CalibrationRun() override;

    CalibrationState state() const { return current; }

    /// Does what the table has for \a event now. Returns 0 or the code of the error catalogue with
    /// which that failed.
    short handle(CalibrationEvent event);
    /// Begins a run at its first point, also in the middle of another one. A calibration that waits
    /// for acceptance is accepted by that. Returns 0 or a code of the error catalogue, with which
    /// the touchscreen could not be opened; nothing is sampled then.
    short start();

    /// The sampling thread's results, in the order in which they come; a run takes them from
    /// whoever receives the thread's signals queued. Without a run they mean nothing.
    void takePoint(const CalibrationRecord &measured);
    /// The thread has finished. Does nothing while it is sampling.
    void endPoint();
    /// The touchscreen cannot be read: ends the run and tells with failed().
    void fail(short code);

    VeltaCalibrationThread *samplingThread() { return &thread; }
    TouchCalibrationData &calibrationData() { return data; }

Q_SIGNALS:
    /// state() is another one, or the same begun anew.
    void stateChanged();
    /// A count-down stands at \a seconds.
    void counted(int seconds);
    /// The count-down to a run has expired: start().
    void startDue();
    /// A run has begun, on a white screen without a crosshair.
    void begun();
    /// The thread samples no more. What it has signalled before is of no use to anybody.
    void samplingStopped();
    /// The points are handed over, and the operator has read what there was to say.
    void applied();
    /// A run has ended at a touchscreen that cannot be read; the calibration is as before.
    void failed(short code);
    /// The operator is to be told the message \a code with \a text as its "%1", modally. 0: that
    /// the old calibration is restored.
    void boxDue(short code, const QString &text);

private:
    short perform(CalibrationAction action);
    void beginCount(int from);
    void count();
    short begin();
    void startPoint();
    void stopSampling();
    void apply();
    short accept();
    short restore();
    void tellRemountFailures();
    void tell(short code, const QString &text);

    CalibrationState current = CalibrationState::Idle;
    int nSeconds = 0; ///< left of a count-down
    QTimer countTimer; ///< a child as well, as the thread: so a test finds it
    TouchCalibrationData data;
    std::optional<SuspendedPointer> suspension; ///< while the touchscreen is the run's
    std::size_t nPoints = 0; ///< finished in this run
    std::optional<CalibrationRecord> arrived; ///< the present point's, from the thread
    CalibrationRecord sampled; ///< filled by the thread
    VeltaCalibrationThread thread;
};
