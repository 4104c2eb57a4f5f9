#pragma once

#include <QWidget>

#include <memory>

class CalibrationRun;
class VeltaCalibrationPanel;

/// The frameless full-screen window of a calibration run: shows the panel for the time of the run,
/// and whatever is to be told about a calibration in boxes. GUI thread.
class VeltaCalibrationPanelContext : public QWidget
{
    Q_OBJECT

public:
    /// Shows \a run, which is not owned and outlives this. \a page becomes the parent; the
    /// window stays a window of its own.
    VeltaCalibrationPanelContext(CalibrationRun *run, QWidget *page);
    ~VeltaCalibrationPanelContext() override;

Q_SIGNALS:
    /// A run has measured its five points; the operator has yet to accept the calibration.
    void calibration_done();
    /// A run has failed and the operator has read why; the calibration is as before.
    void calibration_failed();

public Q_SLOTS:
    void showCalibrationPanel();
    void RestoreOldCalibrationData();
    void CalibrationFinished();
    void CalibrationError(short code);

private:
    void showState();
    void showBox(short code, const QString &text);

    CalibrationRun *pRun;
    std::unique_ptr<VeltaCalibrationPanel> pPanel;
};
