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
    leaveScreen();
}

void VeltaCalibrationPanelContext::restoreSilently(bool bUnaccepted)
{
    TouchCalibrationData &record = pPanel->calibrationData();
    record.setSilent();
    if (bUnaccepted || record.isRestoreDue()) {
        record.restoreOldCalibration();
    } else if (record.isAcceptDue()) {
        record.acceptCalibration();
    }
}

void VeltaCalibrationPanelContext::leaveScreen()
{
    hide();
    activatePage();
}

/// When this window or a box of it has closed, no window is active on some platforms, and no key
/// would reach the page.
void VeltaCalibrationPanelContext::activatePage()
{
    if (parentWidget()->isVisible()) {
        parentWidget()->activateWindow();
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

void VeltaCalibrationPanelContext::acceptCalibration()
{
    const short code = pPanel->calibrationData().acceptCalibration();
    if (code != 0 && code != TouchCalibrationData::RemountFailed) {
        const VeltaInfoBox box(code, pointerCalibrationName(), CalibrationBoxSeconds, this, true,
                               true);
    }
    activatePage();
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
    activatePage();
}

void VeltaCalibrationPanelContext::CalibrationFinished()
{
    leaveScreen();
    Q_EMIT calibration_done();
}

void VeltaCalibrationPanelContext::CalibrationError(short nCode)
{
    leaveScreen();
    if (nCode != 0) {
        const VeltaInfoBox box(nCode, CalibrationBoxSeconds, this, true, true);
    }
    activatePage();
    update();
    Q_EMIT calibration_failed();
}
