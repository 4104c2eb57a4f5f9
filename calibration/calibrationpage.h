#pragma once

#include <QString>
#include <QWizardPage>

#include <memory>

class QTimer;
class VeltaCalibrationPanelContext;

namespace Ui {
class VeltaCalibrationInputForm;
}

/// The screen from which a touchscreen calibration is started and then confirmed: a stand-alone
/// full-screen window that counts down to a run, and after the run to the restore of the old
/// calibration unless the operator accepts the new one. GUI thread.
///
/// Hiding the page withdraws the request: a count-down to a run or a run in progress ends. At its
/// destruction a calibration that nobody has accepted yet is replaced by the one before.
class CalibrationPage : public QWizardPage
{
    Q_OBJECT

public:
    /// The request file that raises the page, as the device knows it. "Exit Calibration" removes
    /// it.
    static constexpr QLatin1String RequestFile{"/tmp/.system/TouchCalibration"};

    /// Has no parent; the caller owns it.
    CalibrationPage();
    ~CalibrationPage() override;

    /// Shows the page full screen and counts down to a run, unless isRunning(). A calibration that
    /// waits for acceptance waits on.
    void startAutoCalibration();
    /// From startAutoCalibration() or StartCalibration() until the operator has left with "Exit
    /// Calibration".
    bool isRunning() const { return bRunning; }

public Q_SLOTS:
    void StartCalibration();
    void CancelCalibration();
    void CalibrationDone();
    void CalibrationFailed();
    void updateLCD();
    void CancelTimer();
    void CancelStartTimer();
    void updateStartCalibrationScreen();
    void showFullScreen();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void adaptToScreen();
    static QString acceptText();
    void setAcceptMode(bool bOn);
    void leaveAcceptMode();
    void setPointerVisible(bool bVisible);
    void startCountdown();
    void stopCountdown();
    void showStartCount();
    static void removeTimer(QTimer *&pTimer);

    std::unique_ptr<Ui::VeltaCalibrationInputForm> pForm;
    std::unique_ptr<VeltaCalibrationPanelContext> pController; ///< from the first start on
    QTimer *pAcceptTimer = nullptr; ///< only while counting down to the restore
    QTimer *pStartTimer = nullptr; ///< only while counting down to a run
    QString sStartText; ///< the start button's text without a count
    int nAcceptCount = 0; ///< seconds left to accept
    int nStartCount = 0; ///< seconds left before the run
    bool bRunning = false;
    bool bWithdrawn = false; ///< hidden since it was last shown
};
