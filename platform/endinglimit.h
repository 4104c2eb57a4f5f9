#pragma once

#include <chrono>
#include <ctime>

/// The time that the program has for its end, from the first signal that tells it to.
///
/// An event loop that is blocked in a call of a library or waits for a command does not see that it
/// should end. So start() arms a timer of the kernel that kills the process hard: it needs no
/// thread that still runs, and no mask or handler that anybody has inherited or set holds it up.
/// What the program has started lives on. One object per process, made before anything that may
/// hang and destroyed after it; without one the functions do nothing.
class EndingLimit
{
public:
    /// From start() to the hard end.
    static constexpr std::chrono::milliseconds Whole{2500};
    /// From start(): commands that are run for the end itself are waited for no longer, so that
    /// what follows them has its time, too.
    static constexpr std::chrono::milliseconds ForCommands{1000};

    EndingLimit();
    /// Calls the end off.
    ~EndingLimit();
    EndingLimit(const EndingLimit &) = delete;
    EndingLimit &operator=(const EndingLimit &) = delete;

    /// Arms the timer; only the first call counts. For signal handlers.
    static void start();
    static bool hasStarted();
    /// What is left of ForCommands, never negative; all of it before start().
    static std::chrono::milliseconds leftForCommands();

private:
    timer_t timer{};
    bool bTimer = false;
};
