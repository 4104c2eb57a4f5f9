#include "platform/screenhandover.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformscreen.h>

#include <algorithm>
#include <utility>

namespace {

/// Behind the windows' own painting.
constexpr int AfterWindows = Qt::LowEventPriority;

/// A window that is shown but not exposed yet has nothing painted.
bool isAnyWindowSeen()
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.cbegin(), windows.cend(), [](const QWindow *window) {
        return window->isVisible() && window->isExposed();
    });
}

} // namespace

ScreenHandover::ScreenHandover(QObject *screen, QObject *parent)
    : QObject(parent), pComposing(screen)
{
    QCoreApplication::instance()->installEventFilter(this);
}

QObject *ScreenHandover::compositor()
{
    const QScreen *pScreen = QGuiApplication::primaryScreen();
    auto *pObject = pScreen ? dynamic_cast<QObject *>(pScreen->handle()) : nullptr;
    return pObject && pObject->inherits("QFbScreen") ? pObject : nullptr;
}

bool ScreenHandover::eventFilter(QObject *receiver, QEvent *event)
{
    if (event->type() == QEvent::UpdateRequest && pComposing && receiver == pComposing) {
        return filterUpdate(event);
    }
    if (event->type() == QEvent::Expose && receiver->isWindowType()) {
        noteExposure(*static_cast<QWindow *>(receiver));
    }
    return false;
}

bool ScreenHandover::filterUpdate(QEvent *event)
{
    if (!isAnyWindowSeen()) {
        bUpdateOwed = true;
        return true;
    }
    if (!bFirstFrame) {
        return false;
    }
    pComposing->event(event); // writes the screen
    noteFrame();
    return true;
}

// The window paints itself when it gets the event that has been filtered here.
void ScreenHandover::noteExposure(const QWindow &window)
{
    if (!window.isTopLevel() || !window.isVisible() || !window.isExposed()) {
        return;
    }
    if (!pComposing) {
        if (bFirstFrame) {
            QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateLater), AfterWindows);
        }
    } else if (std::exchange(bUpdateOwed, false)) {
        QCoreApplication::postEvent(pComposing, new QEvent(QEvent::UpdateRequest), AfterWindows);
    }
}

bool ScreenHandover::event(QEvent *event)
{
    if (event->type() == QEvent::UpdateLater) {
        noteFrame();
        return true;
    }
    return QObject::event(event);
}

void ScreenHandover::noteFrame()
{
    if (std::exchange(bFirstFrame, false)) {
        Q_EMIT firstFrame();
    }
}
