#include "calibration/calibrationrecord.h"

namespace {

/// Distance of the corner crosshairs from the edges, in pixels.
constexpr int CornerDistance = 50;

/// Which point of the record stands at each place of the pairs, by quarter turns.
struct PairOrder
{
    std::array<std::size_t, CalibrationRecord::PointCount> device;
    std::array<std::size_t, CalibrationRecord::PointCount> screen;
    bool bExchangeAxes;
};

constexpr std::array<PairOrder, 4> PairOrders{{
    {{0, 1, 2, 3, 4}, {0, 1, 2, 3, 4}, false},
    {{1, 2, 3, 0, 4}, {0, 3, 2, 1, 4}, true},
    {{2, 3, 0, 1, 4}, {0, 1, 2, 3, 4}, false},
    {{3, 0, 1, 2, 4}, {0, 3, 2, 1, 4}, true},
}};

CalibrationPairs pairsInOrder(const CalibrationRecord &record, const PairOrder &order)
{
    CalibrationPairs pairs;
    for (std::size_t i = 0; i < CalibrationRecord::PointCount; ++i) {
        const std::size_t device = order.device[i];
        const QPoint screen(record.screenX[order.screen[i]], record.screenY[order.screen[i]]);
        pairs.devicePoints[i] = {record.rawX[device], record.rawY[device]};
        pairs.screenPoints[i] = order.bExchangeAxes ? screen.transposed() : screen;
    }
    return pairs;
}

} // namespace

std::array<QPoint, CalibrationRecord::PointCount> crosshairTargets(const QSize &size)
{
    const int right = size.width() - CornerDistance;
    const int bottom = size.height() - CornerDistance;
    return {{{CornerDistance, CornerDistance},
             {right, CornerDistance},
             {right, bottom},
             {CornerDistance, bottom},
             {size.width() / 2, size.height() / 2}}};
}

CalibrationPairs pairsOf(const CalibrationRecord &record, int rotation)
{
    return pairsInOrder(record, PairOrders[static_cast<std::size_t>(rotation & 3)]);
}
