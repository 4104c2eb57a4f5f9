#pragma once

#include "platform/calibrationpairs.h"

#include <QByteArray>
#include <QSize>

#include <array>
#include <optional>

/// The affine map from raw touches to pixels of the unrotated screen, in the form of tslib's
/// calibration file: seven integers a b c d e f s with x' = (a x + b y + c) / s and
/// y' = (d x + e y + f) / s, divided as tslib divides (towards zero). Pure arithmetic.
class PointerTransform
{
public:
    /// Divisor of the transformations computed here.
    static constexpr int Divisor = 65536;

    /// The transformation with the least squared error over the five pairs. None when either five
    /// points lie on one line (or nearly so) or when the result does not fit tslib's integers.
    static std::optional<PointerTransform> fit(const CalibrationPairs &pairs);

    /// Reads the content of a calibration file: seven integers, which ts_calibrate follows up with
    /// the screen's width, height and rotation. None when tslib could not use it or would divide
    /// by zero with it.
    static std::optional<PointerTransform> parse(const QByteArray &content);

    /// The content of a calibration file that parse() and tslib read back as this transformation.
    QByteArray toFile() const;

    /// The pixel at which tslib reports the raw touch \a point.
    QPoint map(RawPoint point) const;

    friend bool operator==(const PointerTransform &, const PointerTransform &) = default;

private:
    enum Index { A, B, C, D, E, F, S, Count };

    PointerTransform() = default;
    bool isUsable() const;

    std::array<int, Count> coefficients{};
    /// Rotation in quarter turns that tslib adds, within a screen of this size.
    QSize resolution{0, 0};
    int nRotation = 0;
};
