#include "platform/pointertransform.h"

#include "platform/screenrotation.h"

#include <QList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace {

/// Least deviation of five points across the line that fits them best, in their own units. Less
/// is noise of points on one line, which would be blown up to the size of the screen.
constexpr double LeastSpread = 2;
/// The same as a share of what is possible: 1 - r*r, with r the correlation of x and y.
constexpr double LeastIndependence = 1e-3;

struct RealPoint
{
    double x = 0;
    double y = 0;
};
using RealPoints = std::array<RealPoint, CalibrationPairs::Count>;

template <typename Points>
RealPoints toReal(const Points &points)
{
    RealPoints result;
    if constexpr (std::is_same_v<typename Points::value_type, QPoint>) {
        std::ranges::transform(points, result.begin(), [](QPoint point) {
            return RealPoint{double(point.x()), double(point.y())};
        });
    } else {
        std::ranges::transform(points, result.begin(), [](RawPoint point) {
            return RealPoint{double(point.x), double(point.y)};
        });
    }
    return result;
}

RealPoint mean(const RealPoints &points)
{
    RealPoint sum;
    for (const RealPoint &point : points) {
        sum.x += point.x;
        sum.y += point.y;
    }
    return {sum.x / points.size(), sum.y / points.size()};
}

/// Sums of squares around the mean.
struct Moments
{
    explicit Moments(const RealPoints &points) : centre(mean(points))
    {
        for (const RealPoint &point : points) {
            const double u = point.x - centre.x;
            const double v = point.y - centre.y;
            xx += u * u;
            yy += v * v;
            xy += u * v;
        }
    }

    double determinant() const { return xx * yy - xy * xy; }

    bool isOnOneLine() const
    {
        const double determinantNow = determinant();
        if (determinantNow <= LeastIndependence * xx * yy) {
            return true;
        }
        const double across =
            determinantNow / ((xx + yy + std::hypot(xx - yy, 2 * xy)) / 2); // lesser eigenvalue
        return across < LeastSpread * LeastSpread * CalibrationPairs::Count;
    }

    RealPoint centre;
    double xx = 0;
    double yy = 0;
    double xy = 0;
};

bool fitsInt(double value)
{
    return std::abs(value) <= std::numeric_limits<int>::max();
}

} // namespace

std::optional<PointerTransform> PointerTransform::fit(const CalibrationPairs &pairs)
{
    const RealPoints raw = toReal(pairs.devicePoints);
    const RealPoints screen = toReal(pairs.screenPoints);
    const Moments moments(raw);
    if (moments.isOnOneLine() || Moments(screen).isOnOneLine()) {
        return std::nullopt;
    }

    PointerTransform transform;
    transform.coefficients[S] = Divisor;
    const auto fitRow = [&](double RealPoint::*axis, Index row) {
        double xs = 0;
        double ys = 0;
        double sum = 0;
        for (std::size_t i = 0; i < raw.size(); ++i) {
            xs += (raw[i].x - moments.centre.x) * screen[i].*axis;
            ys += (raw[i].y - moments.centre.y) * screen[i].*axis;
            sum += screen[i].*axis;
        }
        const double scale = Divisor / moments.determinant();
        const double first = std::round((xs * moments.yy - ys * moments.xy) * scale);
        const double second = std::round((ys * moments.xx - xs * moments.xy) * scale);
        // tslib cuts the fraction off. Half a divisor on top makes it round, so that a cross
        // touched exactly comes out as its own pixel. Computed from the rounded factors, the
        // constant takes up their error at the centre of the points.
        const double constant = std::round((sum / raw.size() + 0.5) * Divisor
                                           - first * moments.centre.x - second * moments.centre.y);
        if (!fitsInt(first) || !fitsInt(second) || !fitsInt(constant)) {
            return false;
        }
        transform.coefficients[row] = int(first);
        transform.coefficients[row + 1] = int(second);
        transform.coefficients[row + 2] = int(constant);
        return true;
    };
    if (!fitRow(&RealPoint::x, A) || !fitRow(&RealPoint::y, D) || !transform.isUsable()) {
        return std::nullopt;
    }
    return transform;
}

std::optional<PointerTransform> PointerTransform::parse(const QByteArray &content)
{
    enum Extra { Width = Count, Height, Rotation, TotalCount };

    const QList<QByteArray> words = content.simplified().split(' ');
    if (words.size() < Count || words.size() > TotalCount) {
        return std::nullopt;
    }
    std::array<int, TotalCount> numbers{};
    for (qsizetype i = 0; i < words.size(); ++i) {
        bool bOk = false;
        numbers[std::size_t(i)] = words[i].toInt(&bOk);
        if (!bOk) {
            return std::nullopt;
        }
    }
    PointerTransform transform;
    std::copy_n(numbers.begin(), std::size_t(Count), transform.coefficients.begin());
    transform.resolution = {numbers[Width], numbers[Height]};
    transform.nRotation = numbers[Rotation];
    if (!transform.isUsable()) {
        return std::nullopt;
    }
    return transform;
}

bool PointerTransform::isUsable() const
{
    const qint64 determinant =
        qint64(coefficients[A]) * coefficients[E] - qint64(coefficients[B]) * coefficients[D];
    // Besides 0, the divisor -1 traps the processor (with the lowest integer as dividend).
    return determinant != 0 && coefficients[S] != 0 && coefficients[S] != -1 && nRotation >= 0
        && nRotation < QuarterTurns;
}

QByteArray PointerTransform::toFile() const
{
    QByteArray content;
    for (const int coefficient : coefficients) {
        content += QByteArray::number(coefficient) + ' ';
    }
    if (nRotation != 0) {
        content += QByteArray::number(resolution.width()) + ' '
            + QByteArray::number(resolution.height()) + ' ' + QByteArray::number(nRotation);
    }
    return content.trimmed() + '\n';
}

QPoint PointerTransform::map(RawPoint point) const
{
    const auto row = [&](Index first) {
        return int((qint64(coefficients[first]) * point.x
                    + qint64(coefficients[first + 1]) * point.y + coefficients[first + 2])
                   / coefficients[S]);
    };
    const int x = row(A);
    const int y = row(D);
    switch (nRotation) {
    case 1:
        return {y, resolution.width() - 1 - x};
    case 2:
        return {resolution.width() - 1 - x, resolution.height() - 1 - y};
    case 3:
        return {resolution.height() - 1 - y, x};
    default:
        return {x, y};
    }
}
