#include "calibration/touchreduction.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

/// A touch nearer than one part in this many of the shorter axis is the same place.
constexpr int AxisParts = 20;
/// Largest axis that is believed where only one axis tells its maximum.
constexpr quint16 AssumedAxis = 1023;

int median(std::vector<int> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    if (values.size() % 2 != 0) {
        return values[middle];
    }
    return static_cast<int>((qint64(values[middle - 1]) + values[middle]) / 2);
}

} // namespace

quint16 touchTolerance(quint16 maximumX, quint16 maximumY)
{
    if (maximumX != 0 && maximumY != 0) {
        return std::min(maximumX, maximumY) / AxisParts;
    }
    const quint16 known = std::max(maximumX, maximumY);
    return (known == 0 ? AssumedAxis : std::min(known, AssumedAxis)) / AxisParts;
}

RawPoint medianPosition(std::span<const RawPoint> samples)
{
    Q_ASSERT(!samples.empty());
    std::vector<int> x(samples.size());
    std::vector<int> y(samples.size());
    std::transform(samples.begin(), samples.end(), x.begin(), [](auto &point) { return point.x; });
    std::transform(samples.begin(), samples.end(), y.begin(), [](auto &point) { return point.y; });
    return {median(std::move(x)), median(std::move(y))};
}

bool isSamePlace(const RawPoint &left, const RawPoint &right, int tolerance)
{
    return std::abs(qint64(left.x) - right.x) <= tolerance
        && std::abs(qint64(left.y) - right.y) <= tolerance;
}
