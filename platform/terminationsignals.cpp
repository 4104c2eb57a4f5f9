#include "platform/terminationsignals.h"

#include "platform/endinglimit.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

/// Written by the signal handler, watched by the event loop. A signal mask and a signalfd would do
/// too, but a mask is inherited by the commands that the program runs.
std::atomic<int> nSignalEvent{-1};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void noteSignal(int)
{
    const int nError = errno;
    EndingLimit::start();
    // Fails at worst because the event is full of signals already.
    eventfd_write(nSignalEvent.load(std::memory_order_relaxed), 1);
    errno = nError;
}

} // namespace

sigset_t TerminationSignals::allSignals()
{
    sigset_t all;
    sigemptyset(&all);
    for (const int nSignal : Signals) {
        sigaddset(&all, nSignal);
    }
    return all;
}

void TerminationSignals::letThrough()
{
    for (const int nSignal : {SIGTERM, SIGINT}) {
        std::signal(nSignal, SIG_DFL);
    }
    const sigset_t all = allSignals();
    pthread_sigmask(SIG_UNBLOCK, &all, nullptr);
}

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent)
{
    const int nEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (nEvent < 0) {
        qWarning("Signals end the program without clearing up: %s",
                 qPrintable(qt_error_string(errno)));
        return;
    }
    nSignalEvent.store(nEvent, std::memory_order_relaxed);
    pNotifier = new QSocketNotifier(nEvent, QSocketNotifier::Read, this);
    // The event is never read: it stays set, and so ends the main loop too when the signal came in
    // a modal loop before it.
    connect(pNotifier, &QSocketNotifier::activated, this, [] { QCoreApplication::exit(); });

    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < Signals.size(); ++i) {
        sigaction(Signals[i], nullptr, &previous[i]);
        if (Signals[i] != SIGHUP || previous[i].sa_handler != SIG_IGN) {
            sigaction(Signals[i], &action, nullptr);
        }
    }
    // A mask is inherited, too. Of all threads this one is enough to take them.
    const sigset_t all = allSignals();
    pthread_sigmask(SIG_UNBLOCK, &all, &previousMask);
}

TerminationSignals::~TerminationSignals()
{
    if (!pNotifier) {
        return;
    }
    for (std::size_t i = 0; i < Signals.size(); ++i) {
        sigaction(Signals[i], &previous[i], nullptr);
    }
    pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
    delete pNotifier;
    close(nSignalEvent.exchange(-1, std::memory_order_relaxed));
}
