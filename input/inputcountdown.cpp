#include "input/inputcountdown.h"

#include <chrono>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds Step = 1000ms;
} // namespace

InputCountdown::InputCountdown(quint8 seconds, QObject *parent) : QObject(parent), nSeconds(seconds)
{
    timer.setObjectName(QStringLiteral("timeoutTimer"));
    connect(&timer, &QTimer::timeout, this, [this] { step(false); });
}

InputCountdown::~InputCountdown() = default;

void InputCountdown::restart()
{
    if (!isUsed()) {
        return;
    }
    nRemaining = nSeconds;
    timer.start(Step);
    step(true);
}

void InputCountdown::extend()
{
    if (timer.isActive()) {
        restart();
    }
}

void InputCountdown::stop()
{
    timer.stop();
}

void InputCountdown::step(bool showOnly)
{
    if (!showOnly && nRemaining > 0) {
        --nRemaining;
    }
    Q_EMIT remaining(nRemaining);
    if (nRemaining == 0) {
        Q_EMIT expired();
    }
}
