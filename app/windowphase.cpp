#include "app/windowphase.h"

#include "app/transition.h"

void WindowPhase::handle(Event event)
{
    // What is not here changes nothing.
    static constexpr Transition<State, Event> Transitions[] = {
        {State::Starting, Event::MessageDue, State::ShowingMessage},
        {State::Starting, Event::NoMessageDue, State::Watching},
        {State::ShowingMessage, Event::MessageClosed, State::Watching},
        {State::Watching, Event::ConfigurationAsked, State::Asked},
        {State::Asked, Event::ConfigurationDropped, State::Watching},
        {State::Asked, Event::ConfigurationOpened, State::Configuring},
        {State::Configuring, Event::ConfigurationLeft, State::Watching},
        {State::Configuring, Event::ConfigurationSaved, State::Restarting},
    };
    current = nextState(Transitions, current, event).value_or(current);
}
