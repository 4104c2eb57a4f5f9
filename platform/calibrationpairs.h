#pragma once

#include <QPoint>

#include <array>

/// A touch position in the touchscreen's own units, before any calibration. A type of its own, so
/// that it cannot be taken for a position on the screen.
struct RawPoint
{
    int x = 0;
    int y = 0;
    friend bool operator==(const RawPoint &, const RawPoint &) = default;
};

/// The five pairs that define a pointer calibration. A pair is a device point, where the
/// touchscreen reports a touch, and its screen point, where on the untransformed (unrotated) screen
/// that was, in pixels. They come from the five points of a record
/// (calibration/calibrationrecord.h).
struct CalibrationPairs
{
    static constexpr std::size_t Count = 5;

    std::array<RawPoint, Count> devicePoints{};
    std::array<QPoint, Count> screenPoints{};
    friend bool operator==(const CalibrationPairs &, const CalibrationPairs &) = default;
};
