#include "platform/pendinginput.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>

#include <utility>

namespace {

constexpr int LimitMs = 500;
/// What one round reads from a device is delivered by the next.
constexpr int QuietRounds = 2;

class InputFilter : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        const bool bInput = event->isInputEvent() || event->type() == QEvent::Shortcut;
        bSeen = bSeen || bInput;
        return bInput;
    }

    bool bSeen = false;
};

} // namespace

void discardPendingInput()
{
    InputFilter filter;
    QCoreApplication::instance()->installEventFilter(&filter);
    QElapsedTimer elapsed;
    elapsed.start();
    // Not until nothing at all is pending: timers may go on for ever.
    for (int nQuiet = 0; nQuiet < QuietRounds && !elapsed.hasExpired(LimitMs);) {
        QCoreApplication::processEvents();
        nQuiet = std::exchange(filter.bSeen, false) ? 0 : nQuiet + 1;
    }
}
