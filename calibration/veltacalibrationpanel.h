#pragma once

#include "calibration/touchcalibrationdata.h"
#include "calibration/veltacalibrationthread.h"

#include <QColor>
#include <QString>
#include <QWidget>

#include <array>

/// The screen of a calibration run: paints the crosshair and the colour that the sampling thread
/// asks for, and steps through the five points. GUI thread.
///
/// While a run samples, the window server's pointer is suspended; it is always resumed at the
/// run's end, whoever suspended it before, as the operator's next touch is the Accept button.
class VeltaCalibrationPanel : public QWidget
{
    Q_OBJECT

public:
    explicit VeltaCalibrationPanel(QWidget *parent = nullptr);
    ~VeltaCalibrationPanel() override;

    /// Begins a run at the first point, also while another run is in progress. Returns 0 or a code
    /// of the error catalogue; then nothing is sampled.
    short startCalibration();
    /// Ends a run in progress without result: nothing is signalled, the calibration stays as it is.
    void cancel();
    bool isRunning() const { return bRunning; }
    /// Five points are being handed over, maybe behind a box: CalibFinished() follows. No run may
    /// begin before it.
    bool isApplying() const { return bApplying; }

    TouchCalibrationData &calibrationData() { return data; }

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
    void startPoint();
    void stopSampling();
    /// \a text is the "%1" of the code's message.
    void reportFailure(short code, const QString &text);
    QFont fittingFont() const;

    TouchCalibrationData data;
    CalibrationRecord sampled; ///< filled by the thread, copied when a point is complete
    VeltaCalibrationThread thread; ///< a child as well: so a test finds it
    int nPoints = 0; ///< points finished in this run
    int nCrossX = 0;
    int nCrossY = 0;
    bool bRunning = false;
    bool bPointMeasured = false; ///< the record of the present point has come
    bool bApplying = false;
    QColor screenColor = Qt::black;
    std::array<QString, 3> lines;
};
