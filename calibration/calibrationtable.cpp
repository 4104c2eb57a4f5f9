#include "calibration/calibrationtable.h"

#include <array>
#include <cstddef>

namespace {

using enum CalibrationState;
using Event = CalibrationEvent;
using Action = CalibrationAction;

struct Row
{
    CalibrationState state;
    Event event;
    CalibrationState next;
    Action action;
};

/// A pair that is not here is ignored.
constexpr Row Rows[]{
    {Idle, Event::Request, CountingDown, Action::BeginCountdown},
    {Idle, Event::Start, Sampling, Action::Begin},
    {Idle, Event::Applied, Awaiting, Action::BeginAcceptance},
    {Idle, Event::Restore, Idle, Action::Restore},

    {Resting, Event::Start, Sampling, Action::Begin},
    {Resting, Event::Applied, Awaiting, Action::BeginAcceptance},
    {Resting, Event::Restore, Resting, Action::Restore},
    {Resting, Event::Withdraw, Idle, Action::None},

    {CountingDown, Event::Start, Sampling, Action::Begin},
    {CountingDown, Event::StopCountdown, Resting, Action::None},
    {CountingDown, Event::StartTick, CountingDown, Action::Count},
    {CountingDown, Event::Expired, CountingDown, Action::AskToStart},
    {CountingDown, Event::Applied, Awaiting, Action::BeginAcceptance},
    {CountingDown, Event::Restore, Restoring, Action::Restore},
    {CountingDown, Event::Withdraw, Idle, Action::None},

    {Sampling, Event::Start, Sampling, Action::Begin},
    {Sampling, Event::PointMeasured, Sampling, Action::NextPoint},
    {Sampling, Event::AllMeasured, Applying, Action::Apply},
    {Sampling, Event::TouchscreenFailed, Resting, Action::StopSampling},
    {Sampling, Event::Withdraw, Idle, Action::StopSampling},

    {Applying, Event::Applied, Awaiting, Action::BeginAcceptance},
    {Applying, Event::Withdraw, ApplyingLeft, Action::None},

    {ApplyingLeft, Event::Applied, AwaitingLeft, Action::BeginAcceptance},
    {ApplyingLeft, Event::Request, Applying, Action::None},

    {Awaiting, Event::AcceptTick, Awaiting, Action::Count},
    {Awaiting, Event::Expired, Restoring, Action::Restore},
    {Awaiting, Event::Applied, Awaiting, Action::BeginAcceptance},
    {Awaiting, Event::Accept, Resting, Action::Accept},
    {Awaiting, Event::Restore, Restoring, Action::Restore},
    {Awaiting, Event::Withdraw, AwaitingLeft, Action::None},

    {AwaitingLeft, Event::Request, Awaiting, Action::None},
    {AwaitingLeft, Event::AcceptTick, AwaitingLeft, Action::Count},
    {AwaitingLeft, Event::Expired, RestoringLeft, Action::Restore},
    {AwaitingLeft, Event::Applied, AwaitingLeft, Action::BeginAcceptance},
    {AwaitingLeft, Event::Accept, Idle, Action::Accept},
    {AwaitingLeft, Event::Restore, RestoringLeft, Action::Restore},

    {Restoring, Event::Start, Sampling, Action::Begin},
    {Restoring, Event::Restored, CountingDown, Action::BeginCountdown},
    {Restoring, Event::Withdraw, RestoringLeft, Action::None},

    {RestoringLeft, Event::Request, Restoring, Action::None},
    {RestoringLeft, Event::Start, Sampling, Action::Begin},
    {RestoringLeft, Event::Restored, Idle, Action::None},
};

static_assert(static_cast<int>(RestoringLeft) + 1 == CalibrationStates);
static_assert(static_cast<int>(Event::Withdraw) + 1 == CalibrationEvents);

using Table = std::array<std::array<CalibrationStep, CalibrationEvents>, CalibrationStates>;

constexpr Table table()
{
    Table result{};
    for (const Row &row : Rows) {
        CalibrationStep &step =
            result[static_cast<std::size_t>(row.state)][static_cast<std::size_t>(row.event)];
        if (step.bMeant) {
            throw "a pair has two rows"; // does not compile
        }
        step = {true, row.next, row.action};
    }
    return result;
}

constexpr Table Steps = table();

} // namespace

CalibrationStep calibrationStep(CalibrationState state, CalibrationEvent event)
{
    return Steps[static_cast<std::size_t>(state)][static_cast<std::size_t>(event)];
}

bool isWanted(CalibrationState state)
{
    switch (state) {
    case Idle:
    case ApplyingLeft:
    case AwaitingLeft:
    case RestoringLeft:
        return false;
    case Resting:
    case CountingDown:
    case Sampling:
    case Applying:
    case Awaiting:
    case Restoring:
        return true;
    }
    return false;
}
