#include "app/windowphase.h"

#include <algorithm>
#include <iterator>

namespace {

using State = WindowPhase::State;
using Event = WindowPhase::Event;

struct Transition
{
    State from;
    Event event;
    State to;
};

constexpr Transition Transitions[] = {
    {State::Starting, Event::MessageDue, State::ShowingMessage},
    {State::Starting, Event::NoMessageDue, State::Watching},
    {State::ShowingMessage, Event::MessageClosed, State::Watching},
    {State::Watching, Event::ConfigurationAsked, State::Asked},
    {State::Asked, Event::ConfigurationDropped, State::Watching},
    {State::Asked, Event::ConfigurationOpened, State::Configuring},
    {State::Configuring, Event::ConfigurationLeft, State::Watching},
    {State::Configuring, Event::ConfigurationSaved, State::Restarting},
};

} // namespace

void WindowPhase::handle(Event event)
{
    const auto *pDue = std::ranges::find_if(Transitions, [this, event](const Transition &row) {
        return row.from == current && row.event == event;
    });
    if (pDue != std::end(Transitions)) {
        current = pDue->to;
    }
}
