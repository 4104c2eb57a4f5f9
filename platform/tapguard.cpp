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

/// No press waits longer for its delivery; an older change concerns none.
constexpr qint64 LongestWaitMs = 10'000;

/// Behind all that paints: widgets, and the composition of windows on the embedded platforms.
constexpr int AfterPainting = Qt::LowEventPriority - 1;

/// The event loop has come round, so that all changes up to a number have been painted.
class PaintedEvent : public QEvent
{
public:
    explicit PaintedEvent(int nChange) : QEvent(eventType()), nNumber(nChange) { }
    static Type eventType()
    {
        static const int nType = registerEventType();
        return static_cast<Type>(nType);
    }

    int nNumber;
};

} // namespace

TapGuard::TapGuard(QObject *pParent, Clock ownClock) : QObject(pParent), clock(std::move(ownClock))
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

bool TapGuard::eventFilter(QObject *pReceiver, QEvent *pEvent)
{
    if (pEvent->type() == QEvent::ZOrderChange && pReceiver->isWidgetType()) {
        noteRaise(static_cast<QWidget *>(pReceiver)->windowHandle());
        return false;
    }
    if (!pReceiver->isWindowType()) {
        return false;
    }
    auto *pWindow = static_cast<QWindow *>(pReceiver);
    switch (pEvent->type()) {
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
        if (static_cast<QPlatformSurfaceEvent *>(pEvent)->surfaceEventType()
            == QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed) {
            noteDeparture(pWindow);
        }
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return filterMouse(pWindow, static_cast<QMouseEvent *>(pEvent));
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return filterTouch(pWindow, static_cast<QTouchEvent *>(pEvent));
    default:
        return false;
    }
}

bool TapGuard::event(QEvent *pEvent)
{
    if (pEvent->type() != PaintedEvent::eventType()) {
        return QObject::event(pEvent);
    }
    const int nNumber = static_cast<PaintedEvent *>(pEvent)->nNumber;
    for (Change &change : changes) {
        if (!change.painted && change.nNumber <= nNumber) {
            change.painted = clock();
        }
    }
    return true;
}

// The filter sees the event in front of the painting that it causes.
void TapGuard::noteExposure(QWindow *pWindow)
{
    if (!pWindow->isExposed()) {
        noteDeparture(pWindow);
    } else if (pWindow->isTopLevel() && !places.contains(pWindow)) {
        places.insert(pWindow, pWindow->geometry());
        addChange(pWindow->geometry(), pWindow);
    }
}

void TapGuard::notePlace(QWindow *pWindow)
{
    const auto place = places.find(pWindow);
    if (place != places.end() && *place != pWindow->geometry()) {
        addChange(QRegion(*place).xored(pWindow->geometry()) - areaAbove(pWindow), nullptr);
        *place = pWindow->geometry();
    }
}

void TapGuard::noteDeparture(QWindow *pWindow)
{
    droppedTouches.remove(pWindow);
    const auto place = places.constFind(pWindow);
    if (place != places.cend()) {
        addChange(QRegion(*place) - areaAbove(pWindow), nullptr);
        places.erase(place);
    }
    // Another window may get the same address.
    std::erase_if(changes, [pWindow](const Change &change) { return change.pShown == pWindow; });
}

// Seen in front of the window stack, which was made first: it still has the order from before.
void TapGuard::noteRaise(const QWindow *pWindow)
{
    const auto place = places.constFind(pWindow);
    if (place != places.cend()) {
        addChange(areaAbove(pWindow) & *place, pWindow);
    }
}

QRegion TapGuard::areaAbove(const QWindow *pWindow) const
{
    const QList<QWidget *> windows = visibleWindows();
    const auto it = std::find_if(windows.cbegin(), windows.cend(), [pWindow](const QWidget *p) {
        return p->windowHandle() == pWindow;
    });
    QRegion area;
    for (auto above = it; above != windows.cend(); ++above) {
        if (above != it) {
            area += places.value((*above)->windowHandle());
        }
    }
    return area;
}

void TapGuard::addChange(const QRegion &area, const QWindow *pShown)
{
    if (area.isEmpty()) {
        return;
    }
    const qint64 nOldest = clock() - LongestWaitMs - Delay.count();
    std::erase_if(changes, [nOldest](const Change &change) {
        return change.painted && *change.painted < nOldest;
    });
    changes.push_back({area, pShown, ++nLastNumber, std::nullopt});
    // Windows below one that has left are composed anew, with no event of theirs.
    QCoreApplication::postEvent(this, new PaintedEvent(nLastNumber), AfterPainting);
}

bool TapGuard::isTooEarly(QWindow *pWindow, QPoint position, qint64 nPressed)
{
    if (!pWindow->isTopLevel()) {
        return false;
    }
    if (!places.contains(pWindow)) {
        noteExposure(pWindow);
        return true; // shown, but not seen yet
    }
    // A stamp of another clock, or a clock that has been set, says nothing.
    const qint64 nNow = clock();
    const qint64 nTime = std::clamp(nPressed, nNow - LongestWaitMs, nNow);
    return std::any_of(changes.cbegin(), changes.cend(), [&](const Change &change) {
        return change.area.contains(position) && (!change.pShown || change.pShown == pWindow)
            && (!change.painted || nTime - *change.painted < Delay.count());
    });
}

bool TapGuard::filterMouse(QWindow *pWindow, QMouseEvent *pEvent)
{
    if (pEvent->pointingDevice() != tapDevice()) {
        return false;
    }
    const bool bRelease = pEvent->type() == QEvent::MouseButtonRelease;
    // A double click comes behind the press that it consists of.
    if (pEvent->type() == QEvent::MouseButtonPress
        || (pEvent->type() == QEvent::MouseButtonDblClick && !bPressed)) {
        bPressed = true;
        bPressDropped = isTooEarly(pWindow, pEvent->globalPosition().toPoint(),
                                   static_cast<qint64>(pEvent->timestamp()));
    }
    const bool bDropped = bPressDropped;
    if (bRelease) {
        bPressed = bPressDropped = false;
    }
    return bDropped;
}

bool TapGuard::filterTouch(QWindow *pWindow, QTouchEvent *pEvent)
{
    const QEvent::Type type = pEvent->type();
    if (type == QEvent::TouchBegin) {
        droppedTouches.remove(pWindow);
        if (isTooEarly(pWindow, pEvent->points().constFirst().globalPosition().toPoint(),
                       static_cast<qint64>(pEvent->timestamp()))) {
            droppedTouches.insert(pWindow);
        }
    }
    if (!droppedTouches.contains(pWindow)) {
        return false;
    }
    if (type == QEvent::TouchEnd || type == QEvent::TouchCancel) {
        droppedTouches.remove(pWindow);
    }
    pEvent->accept(); // Qt makes mouse events of touches that nobody wants
    return true;
}
