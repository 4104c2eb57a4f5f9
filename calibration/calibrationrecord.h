#pragma once

#include "platform/calibrationpairs.h"

#include <QPoint>
#include <QSize>

#include <array>

/// What a run has measured at its five points, in tslib's own layout: where the touchscreen
/// reported each touch (its raw units) and where the crosshair was (pixels). The coefficients are
/// never used: the pointer handler computes its own.
struct CalibrationRecord
{
    static constexpr int PointCount = CalibrationPairs::Count;

    std::array<int, PointCount> rawX{};
    std::array<int, PointCount> screenX{};
    std::array<int, PointCount> rawY{};
    std::array<int, PointCount> screenY{};
    std::array<int, 7> coefficients{};
};

/// Where a run shows its crosshairs on a screen of \a size pixels: "Top left", "Top right",
/// "Bot right", "Bot left", "Center".
constexpr std::array<QPoint, CalibrationRecord::PointCount> crosshairTargets(const QSize &size)
{
    constexpr int Distance = 50; // of the corner crosshairs from the edges
    const int right = size.width() - Distance;
    const int bottom = size.height() - Distance;
    return {{{Distance, Distance},
             {right, Distance},
             {right, bottom},
             {Distance, bottom},
             {size.width() / 2, size.height() / 2}}};
}

/// The pairs of \a record, measured on a screen turned by \a rotation quarter turns (0 to 3), in
/// the order and coordinates of the untransformed screen, which the pointer handler works in.
CalibrationPairs pairsOf(const CalibrationRecord &record, int rotation);
