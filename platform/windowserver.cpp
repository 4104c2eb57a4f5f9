#include "platform/windowserver.h"

#include "platform/devicepath.h"
#include "platform/pointerhandler.h"
#include "platform/screenrotation.h"
#include "platform/touchscreenpaths.h"
#include "platform/touchtype.h"

#include <QCursor>
#include <QFile>
#include <QGenericPluginFactory>
#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <QWindow>

#include <qpa/qplatformcursor.h>
#include <qpa/qplatformscreen.h>

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

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

/// Whether \a path speaks the kernel's input protocol. Qt's driver for multi-touch screens corrupts
/// the heap with any other device (a FIFO, for one).
bool isEventDevice(const QString &path)
{
    const int fd = open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    int version = 0;
    const bool bSpeaksIt = ioctl(fd, EVIOCGVERSION, &version) == 0;
    close(fd);
    return bSpeaksIt;
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
    // Whatever is no event device is tslib's, several fingers or not.
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
    QStringList parts = specification.split(u':');
    parts.first() = evdevPath(devicePath(parts.first()));
    const QString keymap = QStringLiteral("keymap=");
    for (QString &option : parts) {
        if (option.startsWith(keymap)) {
            option = keymap + devicePath(option.mid(keymap.size()));
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

SavedCalibration WindowServer::saveCalibration() const
{
    return pPointerHandler ? pPointerHandler->saveCalibration() : SavedCalibration();
}

bool WindowServer::restoreCalibration(const SavedCalibration &saved)
{
    return !pPointerHandler || pPointerHandler->restoreCalibration(saved);
}

CalibrationOutcome WindowServer::calibrate(const PointerCalibrationData &data,
                                           const SavedCalibration &before)
{
    return pPointerHandler ? pPointerHandler->calibrate(data, before) : CalibrationOutcome::Stored;
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
