#include "calibration/veltacalibrationthread.h"

#include "calibration/touchaxes.h"
#include "calibration/touchreduction.h"
#include "platform/touchscreenpaths.h"
#include "settings/errorcatalogue.h"

#include <QDebug>

#include <algorithm>
#include <array>
#include <span>
#include <tslib.h>

namespace {

constexpr int GlideSteps = 10;

/// Slots for the samples of a touch; the last one takes all samples that come after them.
constexpr std::size_t SampleSlots = 128;

constexpr int FixedPointShift = 16;
constexpr int FixedPointOne = 1 << FixedPointShift;

} // namespace

VeltaCalibrationThread::VeltaCalibrationThread(QObject *parent, const CalibrationPace &ownPace)
    : QThread(parent), pace(ownPace)
{ }

VeltaCalibrationThread::~VeltaCalibrationThread()
{
    stop();
}

void VeltaCalibrationThread::setup(tsdev *touchscreen, CalibrationRecord *record, int index, int x,
                                   int y, const QString &name)
{
    pTouchscreen = touchscreen;
    pRecord = record;
    nIndex = index;
    nTargetX = x;
    nTargetY = y;
    sName = name;
    if (nIndex == 0) {
        reference = {};
        nOriginX = nOriginY = NoOrigin;
    }
    sampler.rearm();
}

void VeltaCalibrationThread::stop()
{
    sampler.stop();
    join();
}

void VeltaCalibrationThread::join()
{
    wait();
    nHandedOver.load(std::memory_order_acquire);
}

void VeltaCalibrationThread::run()
{
    samplePoint();
    nHandedOver.fetch_add(1, std::memory_order_release);
}

void VeltaCalibrationThread::samplePoint()
{
    learnTolerance();
    if (nOriginX != NoOrigin && !glideToTarget()) {
        return;
    }
    showTarget(Qt::black);

    const auto index = static_cast<std::size_t>(nIndex);
    RawPoint measured;
    do {
        const short code = getxy(pTouchscreen, &measured.x, &measured.y);
        if (code == PointStopped) {
            return;
        }
        if (code != 0) {
            Q_EMIT errorCalThread(code);
            return;
        }
        pRecord->rawX[index] = measured.x;
        pRecord->rawY[index] = measured.y;
    } while (
        index > 0
        && isSamePlace({pRecord->rawX[index - 1], pRecord->rawY[index - 1]}, measured, nTolerance));

    reference = measured;
    nOriginX = nTargetX * FixedPointOne;
    nOriginY = nTargetY * FixedPointOne;
    pRecord->screenX[index] = nTargetX;
    pRecord->screenY[index] = nTargetY;
    Q_EMIT updateCaldata(pRecord);
}

void VeltaCalibrationThread::learnTolerance()
{
    if (bToleranceKnown && nTolerance != 0) {
        return;
    }
    const auto axes = readTouchAxes(touchscreenDevice());
    const TouchAxes known = axes.value_or(TouchAxes());
    nTolerance = touchTolerance(known.nMaximumX, known.nMaximumY);
    bToleranceKnown = axes.has_value();
}

bool VeltaCalibrationThread::glideToTarget()
{
    const int stepX = (nTargetX - (nOriginX >> FixedPointShift)) * FixedPointOne / GlideSteps;
    const int stepY = (nTargetY - (nOriginY >> FixedPointShift)) * FixedPointOne / GlideSteps;
    for (int i = 0; i < GlideSteps; ++i) {
        Q_EMIT updateScreenpos(nOriginX >> FixedPointShift, nOriginY >> FixedPointShift, Qt::green);
        nOriginX += stepX;
        nOriginY += stepY;
        if (!sampler.pause(pace.glideInterval)) {
            return false;
        }
    }
    return true;
}

void VeltaCalibrationThread::showTarget(Qt::GlobalColor colour)
{
    Q_EMIT updateScreenpos(nTargetX, nTargetY, colour);
}

short VeltaCalibrationThread::getxy(tsdev *touchscreen, int *rawX, int *rawY)
{
    using Result = TouchSampler::Result;
    std::array<ts_sample, SampleSlots> samples{};

    showTarget(Qt::black);
    do {
        const Result result = sampler.read(touchscreen, samples.data());
        if (result == Result::Stopped) {
            return PointStopped;
        }
        if (result == Result::Failed) {
            qDebug("getxy: ts_read_raw error 1");
            return ERR_TS_READ_PRESS;
        }
    } while (samples[0].pressure == 0);

    std::size_t n = 0;
    do {
        if (n <= SampleSlots - 2 && samples[n].pressure != 0) {
            ++n;
        }
        const Result result = sampler.read(touchscreen, &samples[n]);
        if (result == Result::Stopped) {
            return PointStopped;
        }
        if (result == Result::Failed) {
            qDebug("getxy: ts_read_raw error 2");
            return ERR_TS_READ_RELEASE;
        }
        showTarget(samples[n].pressure != 0 ? Qt::yellow : Qt::white);
    } while (samples[n].pressure != 0);

    std::array<RawPoint, SampleSlots> points{};
    std::transform(samples.begin(), samples.begin() + n, points.begin(),
                   [](const ts_sample &sample) {
                       return RawPoint{sample.x, sample.y};
                   });
    const RawPoint position = medianPosition(std::span(points).first(n));
    *rawX = position.x;
    *rawY = position.y;

    if (reference != RawPoint() && isSamePlace(reference, position, nTolerance)) {
        showTarget(Qt::red);
        return sampler.pause(pace.verdictPause) ? 0 : PointStopped;
    }
    showTarget(Qt::green);
    if (sName == QLatin1String(CenterPointName) && !sampler.pause(pace.verdictPause)) {
        return PointStopped;
    }
    return 0;
}
