#include "calibration/veltacalibrationpanelcontext.h"

#include "calibration/calibrationrun.h"
#include "calibration/veltacalibrationpanel.h"
#include "infobox/veltainfobox.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

/// Seconds after which any other box closes by itself: the touchscreen that should press its button
/// may be uncalibrated at that moment, or not be there.
constexpr quint8 BoxSeconds = 10;
/// Seconds after which the box about the restored calibration closes by itself.
constexpr quint8 RestoredBoxSeconds = 5;

} // namespace

VeltaCalibrationPanelContext::VeltaCalibrationPanelContext(CalibrationRun *run, QWidget *page)
    : QWidget(page), pRun(run), pPanel(std::make_unique<VeltaCalibrationPanel>(pRun, this))
{
    pPanel->setAttribute(Qt::WA_InputMethodEnabled);
    setWindowFlags(Qt::Window | Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint
                   | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint
                   | Qt::BypassGraphicsProxyWidget);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    setFixedSize(screen.size());
    move(screen.topLeft());
    connect(pPanel.get(), &VeltaCalibrationPanel::CalibFinished, this,
            &VeltaCalibrationPanelContext::CalibrationFinished);
    connect(pPanel.get(), &VeltaCalibrationPanel::CalibError, this,
            &VeltaCalibrationPanelContext::CalibrationError);
    connect(pRun, &CalibrationRun::stateChanged, this, &VeltaCalibrationPanelContext::showState);
    connect(pRun, &CalibrationRun::boxDue, this, &VeltaCalibrationPanelContext::showBox);
}

VeltaCalibrationPanelContext::~VeltaCalibrationPanelContext() = default;

void VeltaCalibrationPanelContext::showState()
{
    const CalibrationState state = pRun->state();
    if (state == CalibrationState::Sampling) {
        show();
    } else if (isVisible() && state != CalibrationState::Applying) {
        hide();
    }
}

/// The one place that shows a box about a calibration.
void VeltaCalibrationPanelContext::showBox(short code, const QString &text)
{
    if (code != 0) {
        const VeltaInfoBox box(code, text, BoxSeconds, this, true, true);
    } else {
        const VeltaInfoBox box(tr("old calibration data restored"), RestoredBoxSeconds, this, true,
                               true);
    }
}

void VeltaCalibrationPanelContext::showCalibrationPanel()
{
    if (const short code = pPanel->startCalibration(); code != 0) {
        CalibrationError(code);
    }
}

void VeltaCalibrationPanelContext::RestoreOldCalibrationData()
{
    pRun->handle(CalibrationEvent::Restore);
}

void VeltaCalibrationPanelContext::CalibrationFinished()
{
    hide();
    Q_EMIT calibration_done();
}

void VeltaCalibrationPanelContext::CalibrationError(short code)
{
    hide();
    if (code != 0) {
        showBox(code, QString());
    }
    update();
    Q_EMIT calibration_failed();
}
