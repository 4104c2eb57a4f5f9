#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

#include <array>

class CalibrationRun;

/// The screen of a calibration run: paints the crosshair and the colour that the sampling thread
/// asks for, and hands what the thread has to say on to the run. GUI thread.
class VeltaCalibrationPanel : public QWidget
{
    Q_OBJECT

public:
    /// Shows \a pOwnRun, which is not owned and outlives this.
    explicit VeltaCalibrationPanel(CalibrationRun *pOwnRun, QWidget *parent = nullptr);

    /// CalibrationRun::start().
    short startCalibration();

Q_SIGNALS:
    /// Five points were measured and handed over.
    void CalibFinished();
    /// The run ended at a touchscreen that cannot be read; the calibration is as before.
    void CalibError(short nCode);

public Q_SLOTS:
    void updateScreen(int x, int y, QColor eBrush);
    /// \a pCalData is a CalibrationRecord that the thread has completed: for its signal alone, as
    /// this waits for the thread, which would wait for the operator.
    void updateCData(void *pCalData);
    /// Goes on to the next point, or ends the run. Does nothing while the thread is sampling.
    void CalThreadControl();
    void CalThreadError(short nCode);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void clear();
    void dropSignals();
    QFont fittingFont() const;

    CalibrationRun *pRun;
    int nCrossX = 0;
    int nCrossY = 0;
    QColor screenColor = Qt::black;
    std::array<QString, 3> lines;
};
