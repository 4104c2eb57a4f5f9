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

/// Five pairs of points that define a pointer calibration: where the touchscreen reports a touch
/// (device points) and where on the untransformed (unrotated) screen it was, in pixels.
struct PointerCalibrationData
{
    static constexpr std::size_t PointCount = 5;

    std::array<RawPoint, PointCount> devPoints{};
    std::array<QPoint, PointCount> screenPoints{};
    friend bool operator==(const PointerCalibrationData &,
                           const PointerCalibrationData &) = default;
};
