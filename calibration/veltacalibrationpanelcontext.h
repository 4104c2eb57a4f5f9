#pragma once

#include <QWidget>

#include <memory>

class VeltaCalibrationPanel;

/// The frameless full-screen window of a calibration run: shows the panel for the time of the run,
/// reports its outcome, and restores the calibration from before. GUI thread.
class VeltaCalibrationPanelContext : public QWidget
{
    Q_OBJECT

public:
    /// \a pPage becomes the parent; the window stays a window of its own.
    explicit VeltaCalibrationPanelContext(QWidget *pPage);
    ~VeltaCalibrationPanelContext() override;

    /// Ends a run in progress without result and hides the window.
    void cancel();
    /// The operator keeps the calibration of the last run, and is told when a power cut may still
    /// undo that.
    void acceptCalibration();
    /// For the end of the program: without a word to the operator, restores the old calibration
    /// when the new one is \a bUnaccepted or an earlier restore is still due.
    void restoreSilently(bool bUnaccepted);

Q_SIGNALS:
    /// A run has measured its five points; the operator has yet to accept the calibration.
    void calibration_done();
    /// A run has failed and the operator has read why; the calibration is as before.
    void calibration_failed();

public Q_SLOTS:
    void showCalibrationPanel();
    void RestoreOldCalibrationData();
    void CalibrationFinished();
    void CalibrationError(short nCode);

private:
    /// Hides the window and makes the page, where it is shown, the active one again.
    void leaveScreen();
    void activatePage();

    std::unique_ptr<VeltaCalibrationPanel> pPanel;
};
