#pragma once

#include "app/windowphase.h"
#include "platform/firmware.h"
#include "platform/screenshotrequest.h"

#include <QStackedWidget>

#include <memory>
#include <optional>

class CalibrationRequests;
class KeyboardWatcher;
class PreviewTexts;
class QTimer;
class RestartSequence;
class ScreenHandover;

namespace Ui {
class MainWindow;
}

/// The single top-level window: start-up page while the PLC runtime comes up, preview page while it
/// does not run, the page behind the configuration wizard and the restart page. While the PLC runs
/// the window is hidden.
///
/// Everything is driven by the tick controlVisibility(), in the GUI thread. The window owns its
/// timers, the watcher and the calibration page and lives as long as the process.
class MainWindow : public QStackedWidget
{
    Q_OBJECT

public:
    /// \a screen: what the first frame does not show, waits until it has told of that frame, or for
    /// the first tick. Without, the window is complete at once.
    explicit MainWindow(QWidget *parent = nullptr, const ScreenHandover *screen = nullptr);
    ~MainWindow() override;

    /// Reads versions and address data and shows them on the preview page. Cheap when nothing
    /// changed: equal texts cause no repaint.
    void updateDeviceInfo();
    /// Shows the name of the first loaded application.
    void updateAppName();

Q_SIGNALS:
    /// Seconds to show on the restart page.
    void triggerLcd(int seconds);

public Q_SLOTS:
    void doProgressBar();
    /// The tick.
    void controlVisibility();
    void screenshotTimerEvent();
    /// Asks for the configuration wizard; it opens at the next tick. Only while the PLC is stopped.
    void configButtonPressed();
    void systemRestart_Timer();
    /// Restarts the device at once.
    void systemRestart_Button();
    void startAppButtonPressed();
    /// Looks for keyboards that came or went. \a path: folder of the input devices.
    void inputEventDirChanged(const QString &path);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    // Construction
    void adaptToScreen();
    void adaptOtherPages();
    void finishStart();
    void createTimers();
    void connectAll();
    void watchInputDevices();

    // Steps of the tick
    void showWhileStopped();
    void showWhileRunning();
    void handleFirstStatus();
    void showCalibrationMessage();
    void runConfiguration();
    void startRestartCountdown();
    void restartDevice();
    void restartStateChanged();
    void showRestartText();
    void scheduleNextTick();
    void showFullScreenOnce();
    void showPage(QWidget *page);
    void focusConfigButton();

    std::unique_ptr<Ui::MainWindow> pUi;
    std::unique_ptr<PreviewTexts> pPreviewTexts;
    std::unique_ptr<QTimer> pProgressTimer;
    std::unique_ptr<QTimer> pVisibilityTimer;
    std::unique_ptr<QTimer> pRestartTimer;
    QTimer *pScreenshotTimer = nullptr; // child of the window
    std::unique_ptr<CalibrationRequests> pCalibrationRequests;
    KeyboardWatcher *pKeyboardWatcher = nullptr; // child of the window
    RestartSequence *pRestart = nullptr; // child of the window
    ScreenshotRequest screenshotRequest;
    RuntimeLink runtimeLink;
    std::optional<PlcStatus> plcStatus; // read over the present link
    int nRestartSeconds = 10;
    WindowPhase phase;
};
