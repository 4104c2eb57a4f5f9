#include "platform/endinglimit.h"

#include <QString>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

std::atomic<const timer_t *> pArmed{nullptr};
std::atomic<bool> bStarted{false};
std::atomic<std::chrono::nanoseconds::rep> nStartTime{0}; // of the monotonic clock
static_assert(std::atomic<const timer_t *>::is_always_lock_free);
static_assert(std::atomic<std::chrono::nanoseconds::rep>::is_always_lock_free);

/// The clock of the timer, asked in the one way that a signal handler may.
std::chrono::nanoseconds now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

EndingLimit::EndingLimit()
{
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    bTimer = timer_create(CLOCK_MONOTONIC, &event, &timer) == 0;
    if (bTimer) {
        pArmed = &timer;
    } else {
        qWarning("The program ends late when a call hangs: %s", qPrintable(qt_error_string(errno)));
    }
}

EndingLimit::~EndingLimit()
{
    if (bTimer) {
        pArmed = nullptr;
        timer_delete(timer);
    }
    bStarted = false;
}

void EndingLimit::start()
{
    const timer_t *pTimer = pArmed;
    if (!pTimer || bStarted.exchange(true)) {
        return;
    }
    nStartTime = now().count();
    constexpr auto Seconds = std::chrono::floor<std::chrono::seconds>(Whole);
    itimerspec time = {};
    time.it_value.tv_sec = Seconds.count();
    time.it_value.tv_nsec = std::chrono::nanoseconds(Whole - Seconds).count();
    timer_settime(*pTimer, 0, &time, nullptr);
}

bool EndingLimit::hasStarted()
{
    return bStarted;
}

std::chrono::milliseconds EndingLimit::leftForCommands()
{
    if (!hasStarted()) {
        return ForCommands;
    }
    const auto passed = now() - std::chrono::nanoseconds(nStartTime);
    return std::max(0ms, ForCommands - std::chrono::floor<std::chrono::milliseconds>(passed));
}
