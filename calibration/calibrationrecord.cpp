#include "calibration/calibrationrecord.h"

#include "platform/screenrotation.h"

namespace {

/// Which point of the record stands at each place of the pairs, by quarter turns.
struct PairOrder
{
    std::array<std::size_t, CalibrationRecord::PointCount> device;
    std::array<std::size_t, CalibrationRecord::PointCount> screen;
    bool bExchangeAxes;
};

constexpr std::array<PairOrder, QuarterTurns> PairOrders{{
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

CalibrationPairs pairsOf(const CalibrationRecord &record, int rotation)
{
    return pairsInOrder(record, PairOrders[static_cast<std::size_t>(rotation % QuarterTurns)]);
}
