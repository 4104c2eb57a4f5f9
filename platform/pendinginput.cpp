#include "platform/pendinginput.h"

#include <QCoreApplication>
#include <QEvent>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds Limit = 500ms;

class InputFilter : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *pEvent) override
    {
        return pEvent->isInputEvent() || pEvent->type() == QEvent::Shortcut;
    }
};

} // namespace

void discardPendingInput()
{
    InputFilter filter;
    QCoreApplication::instance()->installEventFilter(&filter);
    QCoreApplication::processEvents(QEventLoop::AllEvents, int(Limit.count()));
}
