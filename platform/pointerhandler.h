#pragma once

#include "platform/inputdevice.h"
#include "platform/pointercalibration.h"

#include <QDeadlineTimer>
#include <QEvent>
#include <QObject>
#include <QPoint>
#include <QString>

#include <memory>

class QSocketNotifier;
struct ts_sample;
struct tsdev;

/// Delivers the touches of a single-touch screen as mouse events.
///
/// tslib reads, filters and calibrates the samples; press, move and release go to the topmost
/// window at their position and stay with it until the release, which has the position of the last
/// touch. Nothing here blocks: the device is read when it has data. A device that vanishes is
/// closed; resume() and reopen() try to open it again. Of all that goes wrong from the last touch
/// to the next, only the first gets a warning line. GUI thread only.
class PointerHandler : public QObject
{
    Q_OBJECT

public:
    /// \a quarterTurns is the screen's transformation, 0 to 3.
    explicit PointerHandler(int quarterTurns, QObject *parent = nullptr);
    ~PointerHandler() override;

    /// Loads the calibration and opens the touchscreen. Returns false after one warning line.
    bool open();

    /// Stops reading, so that someone else can read the device; a touch that is down is released.
    /// The device stays open and configured, but a grab of it is given up, also when nobody else is
    /// going to read: until resume() any program can have the touches.
    void suspend();
    /// Reads again, with the grab that suspend() has given up. Samples from before are thrown away.
    /// A device that is closed, replaced, or found to have vanished now, is opened anew.
    void resume();
    bool isSuspended() const { return bSuspended; }
    /// Leaves the touches to other programs, with the grab, as long as no window of this one is on
    /// the screen. A touch that is down ends without pressing anything. Independent of suspend().
    void release();
    /// Ends release(), as resume() ends suspend().
    void take();
    /// Opens a device that is closed, and the one that has come in the place of the open one. Does
    /// nothing while suspended or released: somebody else may have the device. Tries again to take
    /// a grab that another program had.
    void reopen();
    bool isOpen() const { return pDevice != nullptr; }
    /// Another program has grabbed the device, and so all touches.
    bool isGrabMissing() const { return bGrabReleased && isReading(); }

    /// See the functions of WindowServer with these names.
    void clearCalibration();
    SavedCalibration saveCalibration() const { return calibration.save(); }
    bool restoreCalibration(const SavedCalibration &saved);
    CalibrationOutcome calibrate(const CalibrationPairs &pairs, const SavedCalibration &before);

Q_SIGNALS:
    /// The device has vanished, and touches with it.
    void lost();

private Q_SLOTS:
    void readSamples();

private:
    struct DeviceCloser
    {
        void operator()(tsdev *device) const;
    };

    bool openDevice();
    bool configureDevice();
    void closeDevice();
    bool isReading() const { return !bSuspended && !bReleased; }
    void startReading();
    void stopReading();
    void retakeGrab();
    bool isReplaced() const;
    void warnOnce(const QString &message);
    /// Has tslib take over the calibration in force.
    void reconfigure();
    /// Reads what the device has, at most \a limit samples; without \a deliver into the void, but
    /// for whether a finger is left on the screen.
    void drain(int limit, bool deliver);
    void handleSample(const ts_sample &sample);
    void sendMove();
    void sendRelease();
    void cancelPress();
    void send(Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type) const;

    int nRotation;
    PointerCalibration calibration;
    std::unique_ptr<tsdev, DeviceCloser> pDevice;
    std::unique_ptr<QSocketNotifier> pNotifier;
    bool bSuspended = false;
    bool bReleased = false;
    bool bPressed = false;
    bool bAwaitsLift = false; ///< a finger has come down while nothing was delivered
    bool bMoved = false; ///< lastPosition has not been sent yet
    bool bGrabReleased = false; ///< by stopReading(), for other readers, and not taken back yet
    int nFruitlessReads = 0; ///< in a row, although the device said it had data
    QString sPath; ///< of the device, as it was opened
    DeviceIdentity identity; ///< that it had then
    QDeadlineTimer fruitlessRest; ///< of that one, which gave no samples
    bool bOutageReported = false; ///< and no sample has come since
    QPoint lastPosition;
    qint64 nLastTime = 0; ///< of the sample behind lastPosition, TapGuard::eventClock()
};
