#pragma once

#include "platform/inputdevice.h"
#include "platform/pointercalibration.h"

#include <QObject>
#include <QString>

#include <memory>

class FolderWatch;
class PointerHandler;
class TapGuard;

/// What the program needs of its window system beyond widgets: the keyboard handler, the pointer
/// handler with its calibration, the pointer's visibility and the screen's transformation.
///
/// A touchscreen that comes late, drops out and returns, or is replaced by another, is opened by
/// itself: when something changes in its device's folder and, while it is gone, every 2 s; but not
/// while the pointer is suspended. A window that has just come under the finger takes no touch (see
/// TapGuard).
///
/// While no window of the program is on the screen (see WindowStack), no input device is read or
/// grabbed; what is typed and touched then, and what is held down since, does nothing afterwards.
///
/// One object per process, created after the QGuiApplication and destroyed before it; GUI thread
/// only. Where there is no touchscreen device, there is no pointer handler and every pointer call
/// is a harmless no-op.
class WindowServer : public QObject
{
    Q_OBJECT

public:
    explicit WindowServer(QObject *parent = nullptr);
    ~WindowServer() override;

    /// The process's window server, or nullptr when there is none.
    static WindowServer *instance();

    /// Opens the touchscreen: through tslib, or through Qt's evdev handler when it is a
    /// multi-touch screen that is an event device. Returns false (after one warning line) when
    /// there is a touchscreen but it could not be opened, true otherwise. A second call replaces
    /// the handler.
    bool openPointer();

    /// Creates a keyboard handler. \a specification is a device path followed by options, as
    /// "/dev/input/keyboard0:grab=1:keymap=/etc/kbd/de.qmap"; its paths are those of the device,
    /// devicePath() is applied here. Ctrl+Alt+Backspace does not end the program, whatever the
    /// options; a key map file that is not whole is left out (one warning line). Returns nullptr
    /// when there is no driver for it, or (after one warning line) when it is no keyboard.
    static std::unique_ptr<QObject> createKeyboardHandler(const QString &specification);
    /// Makes \a handler the keyboard handler, in place of the one before it.
    void setKeyboardHandler(std::unique_ptr<QObject> handler);
    /// Closes the keyboard handler, if there is one.
    void closeKeyboard();
    bool hasKeyboard() const;

    /// Stops delivering and reading touches until resumePointer(), also those of a touchscreen that
    /// comes meanwhile. Nesting does not count. Multi-touch screens are not concerned.
    void suspendPointer();
    /// Delivers touches again. Samples that queued up while suspended are thrown away.
    void resumePointer();
    bool isPointerSuspended() const { return bPointerSuspended; }

    /// No window of the program is on the screen: keyboards and touchscreen belong to whoever has
    /// it.
    bool isInputReleased() const { return bInputReleased; }

    /// Drops the calibration in force: touches are then delivered as the touchscreen reports them.
    /// The pointer calibration file stays.
    void clearCalibration();
    /// The calibration in force with the bytes of its file, to be kept for restoreCalibration().
    SavedCalibration saveCalibration() const;
    /// Brings calibration and file back to exactly \a saved. False (one warning line) when the file
    /// could not follow; \a saved is in force all the same.
    bool restoreCalibration(const SavedCalibration &saved);
    /// Computes the calibration from \a pairs, uses it at once and writes the pointer calibration
    /// file (replaced whole). A note beside the file has the next start of the program go back to
    /// \a before, until the calibration is accepted or one is restored. When nothing is stored (one
    /// warning line) the file is as before and the calibration from before is in force, even if
    /// clearCalibration() had dropped it.
    CalibrationOutcome calibrate(const CalibrationPairs &pairs, const SavedCalibration &before);
    /// A calibration has been stored, and neither accepted nor replaced by a restored one.
    static bool isCalibrationUnaccepted();
    /// Has the stored calibration outlive the program. False (one warning line) when the next start
    /// may still take it back. Needs a directory that is writable, as calibrate() does.
    static bool acceptCalibration();

    /// Shows or hides the window system's pointer.
    void setCursorVisible(bool visible);
    bool isCursorVisible() const { return bCursorVisible; }

    /// Screen transformation in quarter turns, 0 to 3, from the platform's rotation option.
    int transformationOrientation() const { return nRotation; }
    bool isTransformed() const { return nRotation != 0; }

Q_SIGNALS:
    /// The keyboard handler is gone: no release of a key that is held will come.
    void keyboardClosed();
    /// No window of the program is left on the screen: what keeps a keyboard lets it go.
    void inputReleased();
    /// A window is about to be shown again: keyboards are the program's again.
    void inputTaken();
    /// A touchscreen is in use: the first, or one after a time without.
    void touchscreenOpened();

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    void releaseInput();
    void takeInput();
    bool createPointerHandler();
    void closeMultiTouch();
    void lookForTouchscreen();
    void updateTouchscreenWatch();

    std::unique_ptr<QObject> pKeyboardHandler;
    std::unique_ptr<PointerHandler> pPointerHandler;
    std::unique_ptr<QObject> pMultiTouchHandler;
    DeviceIdentity multiTouchDevice; ///< that it was made for
    std::unique_ptr<FolderWatch> pTouchscreenWatch;
    std::unique_ptr<TapGuard> pTapGuard; ///< there is one where there are touches
    bool bTouchscreenOpen = false;
    bool bPointerSuspended = false;
    bool bInputReleased = false;
    bool bCursorVisible = true;
    int nRotation = 0;
};
