#pragma once

#include "app/plcstatus.h"

#include <QFont>
#include <QHash>
#include <QStackedWidget>

#include <array>
#include <memory>

class CalibrationPage;
class QFileSystemWatcher;
class QLabel;
class QTimer;

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
    explicit MainWindow(QWidget *pParent = nullptr);
    ~MainWindow() override;

    /// Reads versions and address data and shows them on the preview page. Cheap when nothing
    /// changed: equal texts cause no repaint.
    void updateDeviceInfo();
    /// Shows the name of the first loaded application.
    void updateAppName();

Q_SIGNALS:
    /// Seconds to show on the restart page.
    void triggerLcd(int nSeconds);

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
    void keyPressEvent(QKeyEvent *pEvent) override;
    void changeEvent(QEvent *pEvent) override;

private:
    // Construction
    void adaptToScreen();
    void createTimers();
    void connectAll();
    void watchInputDevices();

    // Steps of the tick
    void showWhileStopped();
    void showWhileRunning();
    void handleCalibrationRequest();
    void showCalibrationMessage();
    void runConfiguration();
    void startRestartCountdown();
    void scheduleNextTick();
    void showFullScreenOnce();
    void showPage(QWidget *pPage);
    void focusConfigButton();

    // Device status
    QString readFirmwareVersion();
    QString readRuntimeVersion();
    QString interfaceIp(int nInterface);
    QString interfaceNetmask(int nInterface);
    QString interfaceMode(int nInterface);
    QString interfaceMac(int nInterface);
    bool interfaceQualifies(int nInterface);
    int interfaceToShow();
    void fitTexts(std::initializer_list<QLabel *> labels);
    QFont formFont(const QLabel *pLabel);

    // Input devices
    bool watchInputFolder();
    void setKeyboard(const QString &deviceName);
    void releaseKeyboard();
    bool readKeyboardMapping() const;
    void detectTouchType();

    // PLC runtime link
    void openRuntimeLink();
    bool readRuntimeStatus();
    void closeRuntimeLink();

    std::unique_ptr<Ui::MainWindow> pUi;
    QHash<const QLabel *, QFont> formFonts; // before a text was fitted into its width
    std::unique_ptr<QTimer> pProgressTimer;
    std::unique_ptr<QTimer> pVisibilityTimer;
    std::unique_ptr<QTimer> pRestartTimer;
    QTimer *pScreenshotTimer = nullptr; // child of the window
    std::unique_ptr<CalibrationPage> pCalibrationPage;
    QFileSystemWatcher *pInputWatcher = nullptr; // child of the window
    int nPlcHandle = 0; // below 1: no link
    PlcStatus plcStatus{};
    QString firmwareVersion;
    QString runtimeVersion;
    QString ipText; // of the interface shown, empty when none is
    QString netmaskText;
    QString modeText;
    QString macText;
    QString appName; // as shown
    QString loadedName; // as the runtime reports it
    std::array<char, 20> ipBuffer{};
    std::array<char, 20> netmaskBuffer{};
    std::array<char, 84> modeBuffer{};
    int nRestartSeconds = 10;
    bool bCheckCalMessage = true; // due at the first good status
    bool bKeepVisible = false; // stay on the screen although the PLC runs
    bool bStatusKnown = false; // plcStatus was read over the present link
    bool bConfigRequested = false;
    bool bNoCalibration = false;
    bool bRestartPending = false;
    bool bKeyboardMapping = false;
    int nKeyboardCount = 0; // entries last seen
};
