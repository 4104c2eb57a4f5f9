#include "app/restartsequence.h"

#include "app/transition.h"
#include "platform/command.h"

#include <QEventLoop>

RestartSequence::RestartSequence(const QString &command, QObject *parent)
    : QObject(parent), sCommand(command)
{
    timer.setInterval(Limit);
    connect(&timer, &QTimer::timeout, this, [this] { handle(Event::TimeUp); });
}

RestartSequence::~RestartSequence() = default;

bool RestartSequence::isCommandRunning() const
{
    return current == State::Commanded || current == State::CommandedAgain;
}

void RestartSequence::restart()
{
    if (isCommandRunning()) {
        return;
    }
    QEventLoop loop;
    connect(this, &RestartSequence::stateChanged, &loop, [this, &loop] {
        if (!isCommandRunning()) {
            loop.quit();
        }
    });
    handle(Event::Asked);
    if (isCommandRunning()) {
        loop.exec();
    }
}

void RestartSequence::handle(Event event)
{
    // What is not here changes nothing.
    static constexpr Transition<State, Event> Transitions[] = {
        {State::Idle, Event::Asked, State::Commanded},
        {State::Commanded, Event::Succeeded, State::Awaited},
        {State::Commanded, Event::Failed, State::Failed},
        {State::Commanded, Event::TimeUp, State::Overdue},
        {State::Awaited, Event::Asked, State::Commanded},
        {State::Awaited, Event::TimeUp, State::Overdue},
        {State::Failed, Event::Asked, State::Commanded},
        {State::Overdue, Event::Asked, State::CommandedAgain},
        // It has been waited for once: the next attempt follows soon.
        {State::CommandedAgain, Event::Succeeded, State::Overdue},
        {State::CommandedAgain, Event::Failed, State::Failed},
        {State::CommandedAgain, Event::TimeUp, State::Overdue},
    };
    if (const auto next = nextState(Transitions, current, event)) {
        enter(*next);
    }
}

void RestartSequence::enter(State next)
{
    current = next;
    switch (next) {
    case State::Commanded:
    case State::CommandedAgain:
    case State::Awaited:
        timer.start();
        break;
    case State::Idle:
    case State::Failed:
    case State::Overdue:
        timer.stop();
        break;
    }
    Q_EMIT stateChanged(next);
    if (isCommandRunning()) {
        runCommand();
    }
}

void RestartSequence::runCommand()
{
    // One that is still running, though its time is up, goes on unheard.
    pCommand = std::make_unique<Command>();
    connect(pCommand.get(), &Command::ended, this,
            [this](int result) { handle(result == 0 ? Event::Succeeded : Event::Failed); });
    pCommand->start(sCommand, {});
}
