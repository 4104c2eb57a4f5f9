#pragma once

/// What the main window is about. Without widgets: the window tells it what has happened, and asks.
class WindowPhase
{
public:
    enum class State {
        Starting, ///< no status of the PLC runtime so far
        ShowingMessage, ///< a box is open that keeps the window on the screen while the PLC runs
        Watching, ///< each tick shows the window or hides it
        Asked, ///< the configuration opens at the next tick at which the PLC does not run
        Configuring, ///< the wizard is open; ticks rest
        Restarting, ///< the count-down to the restart; ticks rest for good
    };
    enum class Event {
        MessageDue, ///< with the first status
        NoMessageDue, ///< likewise
        MessageClosed,
        ConfigurationAsked, ///< by the operator, while the PLC does not run
        ConfigurationDropped, ///< it would be as invisible as the window
        ConfigurationOpened,
        ConfigurationLeft, ///< without anything to restart for
        ConfigurationSaved,
    };

    State state() const { return current; }
    /// An event that means nothing in this state changes nothing.
    void handle(Event event);

private:
    State current = State::Starting;
};
