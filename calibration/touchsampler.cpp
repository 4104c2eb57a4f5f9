#include "calibration/touchsampler.h"

#include <QtGlobal>

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <tslib.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

/// Rest after the descriptor was readable but gave no sample: a driver that does not consume what
/// it cannot read would otherwise keep the CPU busy.
constexpr auto FruitlessRest = 10ms;

/// The sampling thread must never be caught inside a read: it would not see the order to stop.
/// Another reader of the same FIFO can take the sample between poll and read.
void makeNonBlocking(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags >= 0 && (flags & O_NONBLOCK) == 0) {
        fcntl(descriptor, F_SETFL, flags | O_NONBLOCK);
    }
}

} // namespace

TouchSampler::TouchSampler(int fruitlessReads)
    : nStopEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), nFruitlessLimit(fruitlessReads)
{ }

TouchSampler::~TouchSampler()
{
    if (nStopEvent >= 0) {
        close(nStopEvent);
    }
}

TouchSampler::Result TouchSampler::read(tsdev *touchscreen, ts_sample *sample) const
{
    // Without the event the thread could never be stopped; do not begin to wait.
    if (!touchscreen || nStopEvent < 0) {
        return Result::Failed;
    }
    const int device = ts_fd(touchscreen);
    makeNonBlocking(device);
    int nFruitless = 0;
    for (;;) {
        pollfd waited[] = {{nStopEvent, POLLIN, 0}, {device, POLLIN, 0}};
        const int ready = poll(waited, 2, nFruitless > 0 ? 0 : -1);
        if (ready < 0 && errno != EINTR) {
            return Result::Failed;
        }
        if (ready <= 0) {
            nFruitless = 0; // what could not be read has gone: wait again
            continue;
        }
        if (waited[0].revents != 0) {
            return Result::Stopped;
        }
        errno = 0;
        const int result = ts_read_raw(touchscreen, sample, 1);
        if (result > 0) {
            return Result::Sample;
        }
        const bool bNothingYet = result == 0 || errno == EAGAIN || errno == EINTR;
        const bool bGone = (waited[1].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
        if (!bNothingYet || bGone || ++nFruitless >= nFruitlessLimit) {
            return Result::Failed;
        }
        if (!pause(FruitlessRest)) {
            return Result::Stopped;
        }
    }
}

bool TouchSampler::pause(std::chrono::milliseconds time) const
{
    const auto end = std::chrono::steady_clock::now() + time;
    for (;;) {
        const auto rest =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd waited{nStopEvent, POLLIN, 0};
        const int result = poll(&waited, 1, static_cast<int>(qMax<qint64>(rest.count(), 0)));
        if (result >= 0 || errno != EINTR) {
            return result == 0;
        }
    }
}

void TouchSampler::stop() const
{
    eventfd_write(nStopEvent, 1);
}

void TouchSampler::rearm() const
{
    eventfd_t ignored = 0;
    eventfd_read(nStopEvent, &ignored);
}
