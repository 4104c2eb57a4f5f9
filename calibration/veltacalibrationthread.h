#pragma once

#include "calibration/calibrationpace.h"
#include "calibration/calibrationrecord.h"
#include "calibration/touchsampler.h"

#include <QColor>
#include <QString>
#include <QThread>

#include <atomic>

struct tsdev;

/// Name of the last point of a run, which is followed by a pause.
inline constexpr char CenterPointName[] = "Center";

/// Samples one calibration point per start: set up, start, wait for finished(), and again.
///
/// The object lives in the GUI thread; run() alone is on the sampling thread, and its signals
/// are to be connected queued. Neither the touchscreen nor the record is owned; both must stay
/// until the thread has finished, and the record must not be touched while it runs.
class VeltaCalibrationThread : public QThread
{
    Q_OBJECT

public:
    explicit VeltaCalibrationThread(QObject *parent = nullptr, const CalibrationPace &ownPace = {});
    /// Stops and joins the thread.
    ~VeltaCalibrationThread() override;

    /// Prepares the next start: point \a index (0 to 4) of \a record, its crosshair at \a x,
    /// \a y pixels. The point of index 0 begins a run. Not while the thread runs.
    void setup(tsdev *touchscreen, CalibrationRecord *record, int index, int x, int y,
               const QString &name);

    /// Ends the point in progress, if there is one, and returns when the thread has ended (a few
    /// milliseconds). No signal of the point is emitted afterwards.
    void stop();
    /// Returns when the thread has ended by itself; its results may be read then. To be called
    /// where the thread has nothing left to do.
    void join();

    /// Samples one touch. Returns 0 with its raw position, an error code of errorCalThread(), or
    /// PointStopped. Called on the sampling thread.
    short getxy(tsdev *touchscreen, int *rawX, int *rawY);
    static constexpr short PointStopped = 1;

Q_SIGNALS:
    /// The crosshair is to be at this position of the screen and the screen in this colour.
    void updateScreenpos(int xPos, int yPos, QColor eBrush);
    /// The point is complete; \a pCalData is the CalibrationRecord given to setup().
    void updateCaldata(void *pCalData);
    /// The touchscreen cannot be read; the point ends without result. ERR_TS_READ_PRESS while it
    /// waits for the touch, ERR_TS_READ_RELEASE for its end.
    void errorCalThread(short nThreadError);

protected:
    void run() override;

private:
    void samplePoint();
    void learnTolerance();
    bool glideToTarget();
    void showTarget(Qt::GlobalColor colour);

    TouchSampler sampler;
    CalibrationPace pace;
    tsdev *pTouchscreen = nullptr;
    CalibrationRecord *pRecord = nullptr;
    int nIndex = 0;
    int nTargetX = 0;
    int nTargetY = 0;
    /// Where the crosshair comes from, 16.16 fixed point; NoOrigin in x: it does not move.
    int nOriginX = NoOrigin;
    int nOriginY = NoOrigin;
    /// Raw position of the point before; 0, 0: there is none.
    RawPoint reference;
    QString sName;
    bool bToleranceKnown = false;
    quint16 nTolerance = 200;
    /// Points sampled. Hands what run() has written over to the thread that joins; QThread::wait()
    /// does so too, but in a way that a thread sanitizer cannot see.
    std::atomic<int> nHandedOver = 0;

    static constexpr int NoOrigin = -1;
};
