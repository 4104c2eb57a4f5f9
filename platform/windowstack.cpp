#include "platform/windowstack.h"

#include <QEvent>
#include <QWidget>
#include <private/qguiapplication_p.h>
#include <qpa/qwindowsysteminterface.h>

#include <algorithm>
#include <utility>

namespace {

WindowStack *pWindowStack = nullptr;

bool takesKeys(const QWidget &window)
{
    QWindow *pHandle = window.windowHandle();
    const Qt::WindowType type = window.windowType();
    return pHandle && (type == Qt::Window || type == Qt::Dialog)
        && !(window.windowFlags() & Qt::WindowDoesNotAcceptFocus)
        && !QGuiApplicationPrivate::instance()->isWindowBlocked(pHandle);
}

} // namespace

WindowStack::WindowStack(QObject *application) : QObject(application)
{
    pWindowStack = this;
    application->installEventFilter(this);
}

WindowStack::~WindowStack()
{
    pWindowStack = nullptr;
}

WindowStack *WindowStack::instance()
{
    return pWindowStack;
}

bool WindowStack::eventFilter(QObject *receiver, QEvent *event)
{
    const QEvent::Type type = event->type();
    if ((type != QEvent::Show && type != QEvent::Hide && type != QEvent::ZOrderChange)
        || event->spontaneous() || !receiver->isWidgetType()) {
        return false;
    }
    auto *pWindow = static_cast<QWidget *>(receiver);
    const bool bShown = pWindow->isWindow() && pWindow->isVisible();
    const bool bNone = stack.isEmpty();
    // One that is being destroyed may be no window any more.
    const bool bKnown = stack.removeOne(pWindow);
    if (bShown && type != QEvent::Hide) {
        stack.append(pWindow);
        if (bNone) {
            Q_EMIT firstShown();
        }
    } else if (!bKnown) {
        return false;
    }
    if (stack.isEmpty()) {
        Q_EMIT lastHidden();
    }
    activateTop(); // a key that comes next must find a window
    activateTopSoon();
    return false;
}

void WindowStack::activateTop() const
{
    const auto it = std::find_if(stack.crbegin(), stack.crend(),
                                 [](const QWidget *window) { return takesKeys(*window); });
    if (it == stack.crend()) {
        return;
    }
    QWidget *pWindow = *it;
    if (pWindow->windowHandle() == QGuiApplication::focusWindow() && !pWindow->isActiveWindow()) {
        // Hidden and shown again: the widgets know that the keys have gone, the window does not,
        // and would take a new activation for the old one.
        QWindowSystemInterface::handleWindowActivated(nullptr);
    }
    pWindow->activateWindow();
}

// A window that is just being shown cannot be activated yet, and what has been asked of the window
// system for one that is gone already is still to come.
void WindowStack::activateTopSoon()
{
    if (std::exchange(bActivationDue, true)) {
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            bActivationDue = false;
            activateTop();
        },
        Qt::QueuedConnection);
}

QList<QWidget *> visibleWindows()
{
    return pWindowStack ? pWindowStack->windows() : QList<QWidget *>();
}

void keepBelowOthers(QWidget *background)
{
    const QList<QWidget *> windows = visibleWindows();
    for (QWidget *pWindow : windows) {
        if (pWindow != background) {
            pWindow->raise();
        }
    }
}
