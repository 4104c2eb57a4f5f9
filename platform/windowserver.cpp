#include "platform/windowserver.h"

#include "platform/devicepath.h"
#include "platform/folderwatch.h"
#include "platform/keymapfile.h"
#include "platform/pointerhandler.h"
#include "platform/screenrotation.h"
#include "platform/tapguard.h"
#include "platform/touchscreenpaths.h"
#include "platform/touchtype.h"
#include "platform/windowstack.h"

#include <QCursor>
#include <QFileInfo>
#include <QGenericPluginFactory>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointingDevice>
#include <QScreen>
#include <QStringList>
#include <QWindow>

#include <qpa/qplatformcursor.h>
#include <qpa/qplatformscreen.h>
#include <qpa/qwindowsysteminterface.h>

#include <utility>

namespace {

WindowServer *pServer = nullptr;

/// \a path as Qt's evdev plugins take it: they know a device by its "/dev/" in front.
QString evdevPath(const QString &path)
{
    return path.startsWith(QLatin1String("/dev/")) ? path : QStringLiteral("/dev/..") + path;
}

std::unique_ptr<QObject> createPlugin(const QString &key, const QString &specification)
{
    return std::unique_ptr<QObject>(QGenericPluginFactory::create(key, specification));
}

/// Whether the touchscreen is one for Qt's driver for multi-touch screens, which corrupts the heap
/// with any other than an event device (a FIFO, for one).
bool hasMultiTouchDevice()
{
    return readTouchType() == TouchType::Multi && isEventDevice(touchscreenDevice());
}

/// Ends the touches of a screen that has been unplugged with a finger on it: their end will not
/// come, and Qt would turn no other touch into a press.
void cancelTouches()
{
    const QList<const QInputDevice *> devices = QInputDevice::devices();
    for (const QInputDevice *pDevice : devices) {
        if (pDevice->type() == QInputDevice::DeviceType::TouchScreen) {
            QWindowSystemInterface::handleTouchCancelEvent<
                QWindowSystemInterface::SynchronousDelivery>(
                nullptr, static_cast<ulong>(TapGuard::eventClock()),
                static_cast<const QPointingDevice *>(pDevice));
        }
    }
}

std::unique_ptr<QObject> createMultiTouchHandler(int quarterTurns)
{
    // Made by Qt at their first use, which would be in the thread that reads the touches.
    QPointingDevice::primaryPointingDevice();
    QInputDevice::primaryKeyboard();
    return createPlugin(QStringLiteral("EvdevTouch"),
                        QStringLiteral("%1:rotate=%2")
                            .arg(evdevPath(touchscreenDevice()))
                            .arg(QuarterTurnDegrees * quarterTurns));
}

} // namespace

WindowServer::WindowServer(QObject *parent) : QObject(parent), nRotation(screenRotation())
{
    pServer = this;
    if (const WindowStack *pWindows = WindowStack::instance()) {
        connect(pWindows, &WindowStack::lastHidden, this, &WindowServer::releaseInput);
        connect(pWindows, &WindowStack::firstShown, this, &WindowServer::takeInput);
    }
}

WindowServer::~WindowServer()
{
    if (pServer == this) {
        pServer = nullptr;
    }
}

WindowServer *WindowServer::instance()
{
    return pServer;
}

bool WindowServer::openPointer()
{
    pTouchscreenWatch = std::make_unique<FolderWatch>(QFileInfo(touchscreenDevice()).path(), this);
    connect(pTouchscreenWatch.get(), &FolderWatch::changed, this,
            &WindowServer::lookForTouchscreen);
    const bool bDone = createPointerHandler();
    updateTouchscreenWatch();
    return bDone;
}

bool WindowServer::createPointerHandler()
{
    // The device has one reader: the old handler goes first.
    pPointerHandler.reset();
    closeMultiTouch();
    if (readTouchType() == TouchType::None && qEnvironmentVariableIsEmpty("TSLIB_TSDEVICE")) {
        return true;
    }
    if (!pTapGuard) {
        pTapGuard = std::make_unique<TapGuard>();
    }
    // Whatever is no event device is tslib's, several fingers or not.
    if (hasMultiTouchDevice()) {
        multiTouchDevice = deviceIdentity(touchscreenDevice());
        pMultiTouchHandler = createMultiTouchHandler(nRotation);
        if (!pMultiTouchHandler) {
            qWarning("There is no driver for the multi-touch screen");
        }
        return pMultiTouchHandler != nullptr;
    }
    pPointerHandler = std::make_unique<PointerHandler>(nRotation);
    if (bPointerSuspended) {
        pPointerHandler->suspend();
    }
    connect(pPointerHandler.get(), &PointerHandler::lost, this,
            &WindowServer::updateTouchscreenWatch);
    return pPointerHandler->open();
}

void WindowServer::closeMultiTouch()
{
    if (pMultiTouchHandler) {
        cancelTouches();
        pMultiTouchHandler.reset();
    }
    multiTouchDevice = {};
}

void WindowServer::releaseInput()
{
    bInputReleased = true;
    if (pPointerHandler) {
        pPointerHandler->release();
    }
    // Qt's driver reads as long as it lives.
    closeMultiTouch();
    Q_EMIT inputReleased();
    if (pTouchscreenWatch) {
        updateTouchscreenWatch();
    }
}

void WindowServer::takeInput()
{
    if (!std::exchange(bInputReleased, false)) {
        return;
    }
    if (pPointerHandler) {
        pPointerHandler->take();
    }
    if (pTouchscreenWatch) {
        lookForTouchscreen();
    }
    QCoreApplication::instance()->installEventFilter(this);
    Q_EMIT inputTaken();
}

// A key that is held down since another program had the keyboard still repeats.
bool WindowServer::eventFilter(QObject *receiver, QEvent *event)
{
    if (event->type() != QEvent::KeyPress) {
        return QObject::eventFilter(receiver, event);
    }
    const bool bRepeat = static_cast<QKeyEvent *>(event)->isAutoRepeat();
    if (!bRepeat) {
        QCoreApplication::instance()->removeEventFilter(this);
    }
    return bRepeat;
}

void WindowServer::lookForTouchscreen()
{
    // A multi-touch screen has no calibration that could be wrong.
    if (bInputReleased || (bPointerSuspended && !hasMultiTouchDevice())) {
        return;
    }
    const bool bNone = !pPointerHandler && !pMultiTouchHandler;
    const DeviceIdentity present = deviceIdentity(touchscreenDevice());
    if (pMultiTouchHandler && !present.exists()) {
        cancelTouches();
    }
    const bool bNewMultiTouch =
        present.exists() && present != multiTouchDevice && hasMultiTouchDevice();
    if (bNewMultiTouch || (bNone && present.exists() && !multiTouchDevice.exists())) {
        createPointerHandler();
    } else if (pPointerHandler) {
        pPointerHandler->reopen();
    }
    updateTouchscreenWatch();
}

void WindowServer::updateTouchscreenWatch()
{
    // A folder does not tell of everything: a link may lead out of it, a device may come to life
    // behind its node.
    const bool bMultiTouchOpen =
        pMultiTouchHandler && deviceIdentity(touchscreenDevice()) == multiTouchDevice;
    const bool bOpen = bMultiTouchOpen || (pPointerHandler && pPointerHandler->isOpen());
    const bool bAwaited = pMultiTouchHandler || (pPointerHandler && !bPointerSuspended);
    const bool bWanting = !bOpen || (pPointerHandler && pPointerHandler->isGrabMissing());
    pTouchscreenWatch->setPolled(bAwaited && bWanting && !bInputReleased);
    if (!std::exchange(bTouchscreenOpen, bOpen) && bOpen) {
        Q_EMIT touchscreenOpened();
    }
}

std::unique_ptr<QObject> WindowServer::createKeyboardHandler(const QString &specification)
{
    const QStringList given = specification.split(u':');
    const QString device = devicePath(given.first());
    if (!isKeyboard(device)) {
        qWarning("%s is not used: it is no keyboard", qPrintable(device));
        return nullptr;
    }
    // Without the option Ctrl+Alt+Backspace ends the program.
    QStringList parts{evdevPath(device), QStringLiteral("disable-zap")};
    const QString keymap = QStringLiteral("keymap=");
    for (const QString &option : given.sliced(1)) {
        if (!option.startsWith(keymap)) {
            parts += option;
        } else if (const QString file = devicePath(option.mid(keymap.size()));
                   isKeyMapUsable(file)) {
            parts += keymap + file;
        }
    }
    return createPlugin(QStringLiteral("EvdevKeyboard"), parts.join(u':'));
}

void WindowServer::setKeyboardHandler(std::unique_ptr<QObject> handler)
{
    closeKeyboard();
    pKeyboardHandler = std::move(handler);
}

void WindowServer::closeKeyboard()
{
    if (pKeyboardHandler) {
        pKeyboardHandler.reset();
        Q_EMIT keyboardClosed();
    }
}

bool WindowServer::hasKeyboard() const
{
    return pKeyboardHandler != nullptr;
}

void WindowServer::suspendPointer()
{
    bPointerSuspended = true; // also for a touchscreen that is still to come
    if (pPointerHandler) {
        pPointerHandler->suspend();
        updateTouchscreenWatch();
    }
}

void WindowServer::resumePointer()
{
    bPointerSuspended = false;
    if (pPointerHandler) {
        pPointerHandler->resume();
        updateTouchscreenWatch();
    } else if (pTouchscreenWatch) {
        lookForTouchscreen();
    }
}

void WindowServer::clearCalibration()
{
    if (pPointerHandler) {
        pPointerHandler->clearCalibration();
    }
}

SavedCalibration WindowServer::saveCalibration() const
{
    return pPointerHandler ? pPointerHandler->saveCalibration() : SavedCalibration();
}

bool WindowServer::restoreCalibration(const SavedCalibration &saved)
{
    return !pPointerHandler || pPointerHandler->restoreCalibration(saved);
}

CalibrationOutcome WindowServer::calibrate(const CalibrationPairs &pairs,
                                           const SavedCalibration &before)
{
    return pPointerHandler ? pPointerHandler->calibrate(pairs, before) : CalibrationOutcome::Stored;
}

bool WindowServer::isCalibrationUnaccepted()
{
    return PointerCalibration::isUnaccepted();
}

bool WindowServer::acceptCalibration()
{
    return PointerCalibration::accept();
}

void WindowServer::setCursorVisible(bool visible)
{
    bCursorVisible = visible;
    const QCursor *pOverride = QGuiApplication::overrideCursor();
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (QWindow *pWindow : windows) {
        QPlatformCursor *pCursor =
            pWindow->screen() ? pWindow->screen()->handle()->cursor() : nullptr;
        if (!pCursor || !pWindow->handle()) {
            continue;
        }
        QCursor shape(Qt::BlankCursor);
        if (visible) {
            shape = pOverride ? *pOverride : pWindow->cursor();
        }
        pCursor->changeCursor(&shape, pWindow);
    }
}
