#include "platform/windowserver.h"

#include "platform/devicepath.h"
#include "platform/inputdevice.h"
#include "platform/keymapfile.h"
#include "platform/pointerhandler.h"
#include "platform/screenrotation.h"
#include "platform/touchscreenpaths.h"
#include "platform/touchtype.h"

#include <QCursor>
#include <QGenericPluginFactory>
#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <QWindow>

#include <qpa/qplatformcursor.h>
#include <qpa/qplatformscreen.h>

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

std::unique_ptr<QObject> createMultiTouchHandler(int quarterTurns)
{
    return createPlugin(
        QStringLiteral("EvdevTouch"),
        QStringLiteral("%1:rotate=%2").arg(evdevPath(touchscreenDevice())).arg(90 * quarterTurns));
}

} // namespace

WindowServer::WindowServer(QObject *parent) : QObject(parent), nRotation(screenRotation())
{
    pServer = this;
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
    // The device has one reader: the old handler goes first.
    pPointerHandler.reset();
    pMultiTouchHandler.reset();
    const TouchType type = readTouchType();
    if (type == TouchType::None && qEnvironmentVariableIsEmpty("TSLIB_TSDEVICE")) {
        return true;
    }
    // Whatever is no event device is tslib's, several fingers or not: Qt's driver corrupts the heap
    // with it.
    if (type == TouchType::Multi && isEventDevice(touchscreenDevice())) {
        pMultiTouchHandler = createMultiTouchHandler(nRotation);
        if (!pMultiTouchHandler) {
            qWarning("There is no driver for the multi-touch screen");
        }
        return pMultiTouchHandler != nullptr;
    }
    pPointerHandler = std::make_unique<PointerHandler>(nRotation);
    return pPointerHandler->open();
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
    if (pPointerHandler) {
        pPointerHandler->suspend();
    }
}

void WindowServer::resumePointer()
{
    if (pPointerHandler) {
        pPointerHandler->resume();
    }
}

bool WindowServer::isPointerSuspended() const
{
    return pPointerHandler && pPointerHandler->isSuspended();
}

void WindowServer::clearCalibration()
{
    if (pPointerHandler) {
        pPointerHandler->clearCalibration();
    }
}

bool WindowServer::calibrate(const PointerCalibrationData &data, bool bRestore)
{
    return !pPointerHandler || pPointerHandler->calibrate(data, bRestore);
}

void WindowServer::getCalibration(PointerCalibrationData *data) const
{
    if (pPointerHandler) {
        pPointerHandler->getCalibration(data);
    }
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
