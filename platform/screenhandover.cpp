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
    return std::any_of(windows.cbegin(), windows.cend(), [](const QWindow *pWindow) {
        return pWindow->isVisible() && pWindow->isExposed();
    });
}

} // namespace

ScreenHandover::ScreenHandover(QObject *pScreen, QObject *pParent)
    : QObject(pParent), pComposing(pScreen)
{
    QCoreApplication::instance()->installEventFilter(this);
}

QObject *ScreenHandover::compositor()
{
    const QScreen *pScreen = QGuiApplication::primaryScreen();
    auto *pObject = pScreen ? dynamic_cast<QObject *>(pScreen->handle()) : nullptr;
    return pObject && pObject->inherits("QFbScreen") ? pObject : nullptr;
}

bool ScreenHandover::eventFilter(QObject *pReceiver, QEvent *pEvent)
{
    if (pEvent->type() == QEvent::UpdateRequest && pComposing && pReceiver == pComposing) {
        return filterUpdate(pEvent);
    }
    if (pEvent->type() == QEvent::Expose && pReceiver->isWindowType()) {
        noteExposure(*static_cast<QWindow *>(pReceiver));
    }
    return false;
}

bool ScreenHandover::filterUpdate(QEvent *pEvent)
{
    if (!isAnyWindowSeen()) {
        bUpdateOwed = true;
        return true;
    }
    if (!bFirstFrame) {
        return false;
    }
    pComposing->event(pEvent); // writes the screen
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

bool ScreenHandover::event(QEvent *pEvent)
{
    if (pEvent->type() == QEvent::UpdateLater) {
        noteFrame();
        return true;
    }
    return QObject::event(pEvent);
}

void ScreenHandover::noteFrame()
{
    if (std::exchange(bFirstFrame, false)) {
        Q_EMIT firstFrame();
    }
}
