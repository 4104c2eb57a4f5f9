#pragma once

#include "calibration/calibrationrun.h"

#include <QString>
#include <QWizardPage>

#include <memory>

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
    /// Has no parent; the caller owns it.
    explicit CalibrationPage(const CalibrationPace &pace = {});
    ~CalibrationPage() override;

    /// Shows the page full screen and counts down to a run, unless isRunning(). A calibration that
    /// waits for acceptance waits on.
    void startAutoCalibration();
    /// From startAutoCalibration() or StartCalibration() until the operator has left with "Exit
    /// Calibration".
    bool isRunning() const { return isWanted(run.state()); }

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
    void hideEvent(QHideEvent *event) override;

private:
    void adaptToScreen();
    void fitButtons(int width);
    void fitAcceptText(int width, int screenHeight);
    static QString acceptText();
    void showState();
    void showCount(int seconds);
    void setAcceptMode(bool on);
    void setPointerVisible(bool visible);

    std::unique_ptr<Ui::VeltaCalibrationInputForm> pForm;
    CalibrationRun run; ///< a child as well: so a test finds it
    std::unique_ptr<VeltaCalibrationPanelContext> pController; ///< from the first start on
    QString sStartText; ///< the start button's text without a count
};
