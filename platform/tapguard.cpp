#include "platform/tapguard.h"

#include "platform/windowstack.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPlatformSurfaceEvent>
#include <QPointer>
#include <QPointingDevice>
#include <QTouchEvent>
#include <QWidget>
#include <QWindow>
#include <qpa/qwindowsysteminterface_p.h>

#include <algorithm>
#include <utility>

namespace {

/// Behind all that paints: widgets, and the composition of windows on the embedded platforms.
constexpr int AfterPainting = Qt::LowEventPriority - 1;

/// The event loop has come round, so that all changes up to a number have been painted.
class PaintedEvent : public QEvent
{
public:
    explicit PaintedEvent(int change) : QEvent(eventType()), nNumber(change) { }
    static Type eventType()
    {
        static const int nType = registerEventType();
        return static_cast<Type>(nType);
    }

    int nNumber;
};

} // namespace

TapGuard::TapGuard(QObject *parent, Clock ownClock) : QObject(parent), clock(std::move(ownClock))
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (const QWindow *pWindow : windows) {
        if (pWindow->isExposed()) {
            places.insert(pWindow, pWindow->geometry());
        }
    }
    QCoreApplication::instance()->installEventFilter(this);
}

qint64 TapGuard::eventClock()
{
    return QWindowSystemInterfacePrivate::eventTime.elapsed();
}

const QPointingDevice *TapGuard::tapDevice()
{
    // Not the handler's own: events on their way would outlive it.
    static QPointer<QPointingDevice> pDevice;
    if (!pDevice) {
        pDevice = new QPointingDevice(
            QStringLiteral("touchscreen"), 0, QInputDevice::DeviceType::Mouse,
            QPointingDevice::PointerType::Generic, QInputDevice::Capability::Position, 1, 1,
            QString(), QPointingDeviceUniqueId(), QCoreApplication::instance());
    }
    return pDevice;
}

bool TapGuard::eventFilter(QObject *receiver, QEvent *event)
{
    if (event->type() == QEvent::ZOrderChange && receiver->isWidgetType()) {
        noteRaise(static_cast<QWidget *>(receiver)->windowHandle());
        return false;
    }
    if (!receiver->isWindowType()) {
        return false;
    }
    auto *pWindow = static_cast<QWindow *>(receiver);
    switch (event->type()) {
    case QEvent::Expose:
        noteExposure(pWindow);
        return false;
    case QEvent::Move:
    case QEvent::Resize:
        notePlace(pWindow);
        return false;
    case QEvent::Hide:
        noteDeparture(pWindow);
        return false;
    case QEvent::PlatformSurface:
        if (static_cast<QPlatformSurfaceEvent *>(event)->surfaceEventType()
            == QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed) {
            noteDeparture(pWindow);
        }
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return filterMouse(pWindow, static_cast<QMouseEvent *>(event));
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return filterTouch(pWindow, static_cast<QTouchEvent *>(event));
    default:
        return false;
    }
}

bool TapGuard::event(QEvent *event)
{
    if (event->type() != PaintedEvent::eventType()) {
        return QObject::event(event);
    }
    const int nNumber = static_cast<PaintedEvent *>(event)->nNumber;
    for (Change &change : changes) {
        if (!change.painted && change.nNumber <= nNumber) {
            change.painted = clock();
        }
    }
    return true;
}

// The filter sees the event in front of the painting that it causes.
void TapGuard::noteExposure(QWindow *window)
{
    if (!window->isExposed()) {
        noteDeparture(window);
    } else if (window->isTopLevel() && !places.contains(window)) {
        places.insert(window, window->geometry());
        addChange(window->geometry(), window);
    }
}

void TapGuard::notePlace(QWindow *window)
{
    const auto place = places.find(window);
    if (place != places.end() && *place != window->geometry()) {
        addChange(QRegion(*place).xored(window->geometry()) - areaAbove(window), nullptr);
        *place = window->geometry();
    }
}

void TapGuard::noteDeparture(QWindow *window)
{
    droppedTouches.remove(window);
    const auto place = places.constFind(window);
    if (place != places.cend()) {
        addChange(QRegion(*place) - areaAbove(window), nullptr);
        places.erase(place);
    }
    // Another window may get the same address.
    std::erase_if(changes, [window](const Change &change) { return change.pShown == window; });
}

// Seen in front of the window stack, which was made first: it still has the order from before.
void TapGuard::noteRaise(const QWindow *window)
{
    const auto place = places.constFind(window);
    if (place != places.cend()) {
        addChange(areaAbove(window) & *place, window);
    }
}

QRegion TapGuard::areaAbove(const QWindow *window) const
{
    const QList<QWidget *> windows = visibleWindows();
    const auto it = std::find_if(windows.cbegin(), windows.cend(), [window](const QWidget *p) {
        return p->windowHandle() == window;
    });
    QRegion area;
    for (auto above = it; above != windows.cend(); ++above) {
        if (above != it) {
            area += places.value((*above)->windowHandle());
        }
    }
    return area;
}

void TapGuard::addChange(const QRegion &area, const QWindow *shown)
{
    if (area.isEmpty()) {
        return;
    }
    const qint64 nOldest = clock() - LongestWaitMs - Delay.count();
    std::erase_if(changes, [nOldest](const Change &change) {
        return change.painted && *change.painted < nOldest;
    });
    changes.push_back({area, shown, ++nLastNumber, std::nullopt});
    // Windows below one that has left are composed anew, with no event of theirs.
    QCoreApplication::postEvent(this, new PaintedEvent(nLastNumber), AfterPainting);
}

bool TapGuard::isTooEarly(QWindow *window, QPoint position, qint64 pressed)
{
    if (!window->isTopLevel()) {
        return false;
    }
    if (!places.contains(window)) {
        noteExposure(window);
        return true; // shown, but not seen yet
    }
    // A stamp of another clock, or a clock that has been set, says nothing.
    const qint64 nNow = clock();
    const qint64 nTime = std::clamp(pressed, nNow - LongestWaitMs, nNow);
    return std::any_of(changes.cbegin(), changes.cend(), [&](const Change &change) {
        return change.area.contains(position) && (!change.pShown || change.pShown == window)
            && (!change.painted || nTime - *change.painted < Delay.count());
    });
}

bool TapGuard::filterMouse(QWindow *window, QMouseEvent *event)
{
    if (event->pointingDevice() != tapDevice()) {
        return false;
    }
    const bool bRelease = event->type() == QEvent::MouseButtonRelease;
    // A double click comes behind the press that it consists of.
    if (event->type() == QEvent::MouseButtonPress
        || (event->type() == QEvent::MouseButtonDblClick && !bPressed)) {
        bPressed = true;
        bPressDropped = isTooEarly(window, event->globalPosition().toPoint(),
                                   static_cast<qint64>(event->timestamp()));
    }
    const bool bDropped = bPressDropped;
    if (bRelease) {
        bPressed = bPressDropped = false;
    }
    return bDropped;
}

bool TapGuard::filterTouch(QWindow *window, QTouchEvent *event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::TouchBegin) {
        droppedTouches.remove(window);
        if (isTooEarly(window, event->points().constFirst().globalPosition().toPoint(),
                       static_cast<qint64>(event->timestamp()))) {
            droppedTouches.insert(window);
        }
    }
    if (!droppedTouches.contains(window)) {
        return false;
    }
    if (type == QEvent::TouchEnd || type == QEvent::TouchCancel) {
        droppedTouches.remove(window);
    }
    event->accept(); // Qt makes mouse events of touches that nobody wants
    return true;
}
