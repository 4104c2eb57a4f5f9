#include "calibration/veltacalibrationpanelcontext.h"

#include "calibration/veltacalibrationpanel.h"
#include "infobox/veltainfobox.h"
#include "platform/touchscreenpaths.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

/// Seconds after which the box about the restored calibration closes by itself.
constexpr quint8 RestoredBoxSeconds = 5;

} // namespace

VeltaCalibrationPanelContext::VeltaCalibrationPanelContext(QWidget *pPage)
    : QWidget(pPage), pPanel(std::make_unique<VeltaCalibrationPanel>(this))
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
}

VeltaCalibrationPanelContext::~VeltaCalibrationPanelContext() = default;

void VeltaCalibrationPanelContext::cancel()
{
    pPanel->cancel();
    hide();
}

void VeltaCalibrationPanelContext::restoreSilently(bool bUnaccepted)
{
    TouchCalibrationData &record = pPanel->calibrationData();
    record.setSilent();
    if (bUnaccepted || record.isRestoreDue()) {
        record.restoreOldCalibration();
    }
}

void VeltaCalibrationPanelContext::showCalibrationPanel()
{
    if (pPanel->isApplying()) {
        return; // a box of the last run is open, and its outcome follows
    }
    show();
    if (const short code = pPanel->startCalibration(); code != 0) {
        CalibrationError(code);
    }
}

void VeltaCalibrationPanelContext::RestoreOldCalibrationData()
{
    if (const short code = pPanel->calibrationData().restoreOldCalibration(); code != 0) {
        const VeltaInfoBox box(code, pointerCalibrationName(), CalibrationBoxSeconds, this, true,
                               true);
    } else {
        const VeltaInfoBox box(tr("old calibration data restored"), RestoredBoxSeconds, this, true,
                               true);
    }
}

void VeltaCalibrationPanelContext::CalibrationFinished()
{
    hide();
    Q_EMIT calibration_done();
}

void VeltaCalibrationPanelContext::CalibrationError(short nCode)
{
    hide();
    if (nCode != 0) {
        const VeltaInfoBox box(nCode, 0, this, true, true);
    }
    update();
    Q_EMIT calibration_failed();
}
