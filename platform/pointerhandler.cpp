#include "platform/pointerhandler.h"

#include "platform/screenrotation.h"
#include "platform/tapguard.h"
#include "platform/touchscreenpaths.h"
#include "platform/tslibdevice.h"
#include "platform/tslibenvironment.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSocketNotifier>
#include <QWindow>
#include <private/qguiapplication_p.h>
#include <qpa/qwindowsysteminterface.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <poll.h>
#include <tslib.h>
#include <utility>

namespace {

/// Samples handled before other events get their turn: seconds of touching.
constexpr int BatchLimit = 512;
/// More than any device queues up while nobody reads; a babbling one is left after so many.
constexpr int DiscardLimit = 65536;
/// Reads without a sample after which a device that always claims to have data counts as gone.
/// tslib's filters swallow some samples of every touch, but never this many in a row. Low, because
/// a device that is none costs a line of tslib's at every read, which nobody can keep it from.
constexpr int FruitlessLimit = 256;
/// Until such a device gets another try, if it is still the same.
constexpr std::chrono::minutes FruitlessRest{5};

/// Outside of every window.
constexpr QPointF Outside(-1, -1);

short readiness(int fd)
{
    pollfd descriptor{fd, POLLIN, 0};
    return poll(&descriptor, 1, 0) < 0 ? POLLNVAL : descriptor.revents;
}

/// When the finger was where \a sample says, on TapGuard::eventClock(): the program may have been
/// busy since, if the clock of the sample's time stamp can be believed.
qint64 timeOf(const ts_sample &sample)
{
    const qint64 nStamp = qint64{sample.tv.tv_sec} * 1000 + sample.tv.tv_usec / 1000;
    const qint64 nAge = QDateTime::currentMSecsSinceEpoch() - nStamp;
    return TapGuard::eventClock() - (nAge > 0 && nAge < TapGuard::LongestWaitMs ? nAge : 0);
}

int ignoreError(const char * /*format*/, va_list /*arguments*/)
{
    return 0;
}

} // namespace

void PointerHandler::DeviceCloser::operator()(tsdev *device) const
{
    ts_close(device);
}

PointerHandler::PointerHandler(int quarterTurns, QObject *parent)
    : QObject(parent), nRotation(quarterTurns)
{ }

PointerHandler::~PointerHandler()
{
    sendRelease();
}

bool PointerHandler::open()
{
    calibration.load();
    return openDevice();
}

bool PointerHandler::openDevice()
{
    sPath = touchscreenDevice();
    identity = deviceIdentity(sPath);
    if (identity.exists() && !canBeTouchscreen(sPath)) {
        warnOnce(QStringLiteral("%1 is not used: it is no touchscreen").arg(sPath));
        return false;
    }
    errno = 0;
    pDevice.reset(openTslibDevice(true));
    if (!pDevice) {
        warnOnce(QStringLiteral("Cannot open the touchscreen %1: %2")
                     .arg(sPath, qt_error_string(errno)));
        return false;
    }
    if (!configureDevice()) {
        pDevice.reset();
        return false;
    }
    pNotifier = std::make_unique<QSocketNotifier>(ts_fd(pDevice.get()), QSocketNotifier::Read);
    connect(pNotifier.get(), &QSocketNotifier::activated, this, &PointerHandler::readSamples);
    pNotifier->setEnabled(isReading());
    nFruitlessReads = 0;
    bGrabReleased = false;
    bAwaitsLift = false;
    return true;
}

bool PointerHandler::configureDevice()
{
    const TslibEnvironment environment(calibration.contentInForce());
    // tslib has lines of its own for every try.
    const QScopedValueRollback quiet(ts_error_fn, bOutageReported ? ignoreError : ts_error_fn);
    if (ts_config(pDevice.get()) == 0) {
        return true;
    }
    warnOnce(QStringLiteral("tslib cannot configure the touchscreen %1%2")
                 .arg(sPath, environment.problem()));
    return false;
}

void PointerHandler::warnOnce(const QString &message)
{
    if (!std::exchange(bOutageReported, true)) {
        qWarning("%s", qPrintable(message));
    }
}

bool PointerHandler::isReplaced() const
{
    const DeviceIdentity present = deviceIdentity(sPath);
    return present.exists() && present != identity;
}

void PointerHandler::reopen()
{
    if (!isReading()) {
        return;
    }
    const bool bSame = !isReplaced();
    if (pDevice && bSame) {
        retakeGrab();
        return;
    }
    if (bSame && !fruitlessRest.hasExpired()) {
        return;
    }
    if (pDevice) {
        closeDevice();
    }
    openDevice();
}

void PointerHandler::closeDevice()
{
    sendRelease();
    // May be called by the notifier's own signal.
    pNotifier->setEnabled(false);
    pNotifier.release()->deleteLater();
    pDevice.reset();
    Q_EMIT lost();
}

void PointerHandler::reconfigure()
{
    if (!pDevice) {
        return;
    }
    bool bDone = false;
    bGrabReleased = false; // tslib forgets its grab, too
    {
        const TslibEnvironment environment(calibration.contentInForce());
        bDone = ts_reconfig(pDevice.get()) == 0;
    }
    if (!bDone) {
        // tslib is left without modules and would crash at the next read.
        warnOnce(
            QStringLiteral("tslib cannot reload its configuration: the touchscreen is closed"));
        closeDevice();
    }
}

void PointerHandler::suspend()
{
    bSuspended = true;
    bAwaitsLift = bAwaitsLift || bPressed;
    sendRelease();
    stopReading();
}

void PointerHandler::release()
{
    bReleased = true;
    bAwaitsLift = bAwaitsLift || bPressed;
    cancelPress();
    stopReading();
}

void PointerHandler::stopReading()
{
    if (pNotifier) {
        pNotifier->setEnabled(false);
    }
    if (pDevice && releaseGrab(pDevice.get())) {
        bGrabReleased = true;
    }
}

void PointerHandler::resume()
{
    if (std::exchange(bSuspended, false) || !pDevice) {
        startReading();
    }
}

void PointerHandler::take()
{
    if (std::exchange(bReleased, false)) {
        startReading();
    }
}

void PointerHandler::startReading()
{
    if (!isReading()) {
        return;
    }
    if (pDevice && isReplaced()) {
        closeDevice();
    }
    if (!pDevice && !openDevice()) {
        return;
    }
    retakeGrab();
    drain(DiscardLimit, false);
    // One that has been plugged in anew meanwhile is another device.
    if (pDevice || openDevice()) {
        // What went to another program that had the grab was not there to be drained.
        bAwaitsLift = isTouched(pDevice.get()).value_or(bAwaitsLift);
        pNotifier->setEnabled(true);
    }
}

void PointerHandler::retakeGrab()
{
    if (!bGrabReleased) {
        return;
    }
    bGrabReleased = !takeGrab(pDevice.get());
    if (bGrabReleased) {
        warnOnce(QStringLiteral("Cannot take the touches back from other readers: %1")
                     .arg(qt_error_string(errno)));
    }
}

void PointerHandler::clearCalibration()
{
    calibration.clear();
    reconfigure();
}

CalibrationOutcome PointerHandler::calibrate(const CalibrationPairs &pairs,
                                             const SavedCalibration &before)
{
    const CalibrationOutcome outcome = calibration.calibrate(pairs, before);
    reconfigure();
    return outcome;
}

bool PointerHandler::restoreCalibration(const SavedCalibration &saved)
{
    const bool bDone = calibration.restore(saved);
    reconfigure();
    return bDone;
}

void PointerHandler::readSamples()
{
    drain(BatchLimit, true);
    sendMove();
}

void PointerHandler::drain(int limit, bool deliver)
{
    for (int i = 0; i < limit; ++i) {
        ts_sample sample{};
        const int count = ts_read(pDevice.get(), &sample, 1);
        if (count > 0) {
            nFruitlessReads = 0;
            bOutageReported = false;
            if (deliver) {
                handleSample(sample);
            } else {
                bAwaitsLift = sample.pressure != 0;
            }
            continue;
        }
        const short state = readiness(ts_fd(pDevice.get()));
        const bool bFailed = count < 0 && (state & (POLLERR | POLLHUP | POLLNVAL));
        const bool bFruitless = (state & POLLIN) && ++nFruitlessReads >= FruitlessLimit;
        if (bFailed || bFruitless) {
            fruitlessRest = QDeadlineTimer(bFruitless ? FruitlessRest : FruitlessRest.zero());
            warnOnce(QStringLiteral("The touchscreen is gone: no touches until it is back"));
            closeDevice();
            return;
        }
        if (!(state & POLLIN)) {
            nFruitlessReads = 0;
            return;
        }
    }
}

void PointerHandler::handleSample(const ts_sample &sample)
{
    nLastTime = timeOf(sample);
    if (sample.pressure == 0) {
        bAwaitsLift = false;
        sendRelease();
        return;
    }
    if (bAwaitsLift) {
        return;
    }
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    const QPoint position = panelToScreen({sample.x, sample.y}, nRotation, screen.size());
    lastPosition = screen.topLeft()
        + QPoint(std::clamp(position.x(), 0, screen.width() - 1),
                 std::clamp(position.y(), 0, screen.height() - 1));
    if (bPressed) {
        // Only the last of several moves in one go is sent.
        bMoved = true;
        return;
    }
    bPressed = true;
    send(Qt::LeftButton, Qt::LeftButton, QEvent::MouseButtonPress);
}

void PointerHandler::sendMove()
{
    if (bMoved) {
        bMoved = false;
        send(Qt::LeftButton, Qt::NoButton, QEvent::MouseMove);
    }
}

void PointerHandler::sendRelease()
{
    if (bPressed) {
        sendMove();
        bPressed = false;
        send(Qt::NoButton, Qt::LeftButton, QEvent::MouseButtonRelease);
    }
}

// The window has gone from under the finger: a release at its place would find no window at all,
// and leave a button pressed and Qt in the belief that the touch goes on.
void PointerHandler::cancelPress()
{
    if (!std::exchange(bPressed, false)) {
        return;
    }
    bMoved = false;
    if (QWindow *pWindow =
            std::exchange(QGuiApplicationPrivate::currentMousePressWindow, nullptr)) {
        QWindowSystemInterface::handleMouseEvent(
            pWindow, static_cast<ulong>(nLastTime), TapGuard::tapDevice(), Outside, Outside,
            Qt::NoButton, Qt::LeftButton, QEvent::MouseButtonRelease);
    }
}

void PointerHandler::send(Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type) const
{
    // Without a window Qt finds the topmost one and keeps to it until the release.
    QWindowSystemInterface::handleMouseEvent(nullptr, static_cast<ulong>(nLastTime),
                                             TapGuard::tapDevice(), lastPosition, lastPosition,
                                             buttons, button, type);
}
