#include "input/keyrepeat.h"

#include <utility>

KeyRepeat::KeyRepeat(QObject *parent) : QObject(parent)
{
    timer.setObjectName(QStringLiteral("repeatTimer"));
    connect(&timer, &QTimer::timeout, this, &KeyRepeat::repeat);
}

KeyRepeat::~KeyRepeat() = default;

void KeyRepeat::start(std::function<void()> effect)
{
    if (timer.isActive()) {
        return;
    }
    again = std::move(effect);
    nCount = 0;
    timer.start(First);
}

void KeyRepeat::stop()
{
    timer.stop();
    again = {};
}

void KeyRepeat::repeat()
{
    ++nCount;
    timer.setInterval(nCount < FastFromCount ? Slow : Fast);
    const auto effect = again; // it may stop the repeat
    if (effect) {
        effect();
    }
}
