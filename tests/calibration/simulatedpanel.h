#pragma once

#include "calibration/calibrationrecord.h"
#include "platform/calibrationpairs.h"

#include <QSize>

#include <cmath>
#include <functional>
#include <tuple>
#include <utility>

/// A resistive touchscreen glued on an 800 x 480 panel in one of the ways it happens: scaled,
/// shifted, slightly skewed, its axes mirrored or exchanged; the picture turned against the panel.
struct SimulatedPanel
{
    bool bExchanged = false;
    bool bMirroredX = false;
    bool bMirroredY = false;
    int nRotation = 0; ///< quarter turns of the picture, counter-clockwise

    static constexpr QSize Size{800, 480};

    QSize picture() const { return nRotation % 2 != 0 ? Size.transposed() : Size; }

    /// What the touchscreen reports for a finger at \a finger on the picture.
    RawPoint touch(QPoint finger) const
    {
        const QPoint mirrored = QPoint(picture().width() - 1, picture().height() - 1) - finger;
        const QPoint turns[] = {
            finger, {finger.y(), mirrored.x()}, mirrored, {mirrored.y(), finger.x()}};
        const QPoint glass = turns[nRotation];
        double x = 4.3 * glass.x() + 0.02 * glass.y();
        double y = 7.1 * glass.y() - 0.03 * glass.x();
        x = bMirroredX ? 3900 - x : 210 + x;
        y = bMirroredY ? 3800 - y : 330 + y;
        if (bExchanged) {
            std::swap(x, y);
        }
        return {static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))};
    }
};

/// What a calibration run on a \a screen measures of a touchscreen: \a touch is its report.
inline CalibrationRecord recordOf(QSize screen, const std::function<RawPoint(QPoint)> &touch)
{
    CalibrationRecord record;
    for (std::size_t i = 0; i < CalibrationRecord::PointCount; ++i) {
        const QPoint target = crosshairTargets(screen)[i];
        std::tie(record.screenX[i], record.screenY[i]) = std::pair(target.x(), target.y());
        std::tie(record.rawX[i], record.rawY[i]) = std::pair(touch(target).x, touch(target).y);
    }
    return record;
}
