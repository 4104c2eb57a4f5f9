#pragma once

#include "platform/calibrationpairs.h"

#include <QtGlobal>

#include <span>

/// Tolerance in raw units below which two touches count as the same place, for a touchscreen whose
/// axes reach \a maximumX and \a maximumY (0: the axis does not tell).
quint16 touchTolerance(quint16 maximumX, quint16 maximumY);

/// The one position of a touch: the median of its x and of its y, each on its own, so that a few
/// wild samples at the press or the release do not count. \a samples holds at least one.
RawPoint medianPosition(std::span<const RawPoint> samples);

/// Whether \a left and \a right are at most \a tolerance apart on both axes.
bool isSamePlace(const RawPoint &left, const RawPoint &right, int tolerance);
