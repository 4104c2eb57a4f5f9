#include "calibration/calibrationpage.h"

#include "app/cursor.h"
#include "calibration/veltacalibrationpanelcontext.h"
#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/windowserver.h"
#include "settings/veltautils.h"
#include "ui_veltacalibrationinputform.h"

#include <QGuiApplication>
#include <QHideEvent>
#include <QScreen>
#include <QTimer>

#include <cerrno>
#include <chrono>

namespace {

using namespace std::chrono_literals;

constexpr int AcceptSeconds = 10;
constexpr int StartSeconds = 5;
constexpr auto CountInterval = 1s;

/// Pixels that the frame of the group box takes from the width inside, with some to spare.
constexpr int GroupBoxFrame = 8;

int horizontalMargins(const QLayout *pLayout)
{
    return pLayout->contentsMargins().left() + pLayout->contentsMargins().right();
}

} // namespace

CalibrationPage::CalibrationPage() : pForm(std::make_unique<Ui::VeltaCalibrationInputForm>())
{
    pForm->setupUi(this);
    adaptToScreen();
    connect(pForm->startCalibrationButton, &QPushButton::clicked, this,
            &CalibrationPage::StartCalibration);
    connect(pForm->cancelCalibrationButton, &QPushButton::clicked, this,
            &CalibrationPage::CancelCalibration);
    setAcceptMode(false);
}

CalibrationPage::~CalibrationPage()
{
    if (pController) {
        pController->restoreSilently(pAcceptTimer != nullptr);
    }
}

void CalibrationPage::adaptToScreen()
{
    const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
    const int resolution = VeltaUtils::resolutionIndex(screen.width(), screen.height());
    QWidget *const touched[] = {pForm->startCalibrationButton, pForm->acceptCalibrationButton,
                                pForm->cancelCalibrationButton, pForm->acceptCalTextEdit};
    VeltaUtils utils;
    for (QWidget *pWidget : touched) {
        pWidget->setAttribute(Qt::WA_AcceptTouchEvents);
        utils.scaleFont(pWidget, resolution);
    }
    utils.scaleFont(pForm->acceptTimeout, resolution);
    utils.scaleFont(pForm->groupBox, resolution);

    // A display of segments has no use for a font; its size follows the one it would have.
    const int line = pForm->acceptTimeout->fontMetrics().height();
    pForm->acceptTimeout->setMinimumSize(3 * line, 2 * line);
    // Nothing may stick out of a screen that is smaller than the form's minimum sizes, and the
    // text takes the height that it needs, so that the buttons are as high as can be.
    setMinimumSize(minimumSize().boundedTo(screen));
    QPlainTextEdit *pText = pForm->acceptCalTextEdit;
    const int width =
        qMin(screen.width() - horizontalMargins(layout()), pForm->groupBox->maximumWidth())
        - horizontalMargins(pForm->verticalLayout_3) - pForm->horizontalLayout_2->spacing()
        - pForm->acceptTimeout->minimumWidth() - GroupBoxFrame;
    pText->setMinimumWidth(qMin(pText->minimumWidth(), width));
    const int margin = static_cast<int>(pText->document()->documentMargin());
    const QRect text = pText->fontMetrics().boundingRect(
        QRect(0, 0, width - 2 * margin, screen.height()), Qt::TextWordWrap, acceptText());
    pText->setMinimumHeight(qMax(pText->minimumHeight(), text.height() + 2 * margin));
}

QString CalibrationPage::acceptText()
{
    return tr("Press ''Accept Calibration'' button within 10 seconds or wait till timer reaches 0 "
              "to automatically restore the old values.");
}

void CalibrationPage::startAutoCalibration()
{
    if (bRunning) {
        return;
    }
    bRunning = true;
    // A calibration that waits for acceptance still counts down; its restore starts the next run.
    if (!pAcceptTimer) {
        startCountdown();
    }
    showFullScreen();
}

void CalibrationPage::setAcceptMode(bool bOn)
{
    pForm->acceptCalibrationButton->setEnabled(bOn);
    pForm->startCalibrationButton->setEnabled(!bOn);
    pForm->cancelCalibrationButton->setEnabled(!bOn);
    pForm->acceptCalTextEdit->setPlainText(bOn ? acceptText() : QString());
    pForm->acceptTimeout->setVisible(bOn);
}

void CalibrationPage::StartCalibration()
{
    // By the operator's hand, too: while isRunning() the main window leaves the pointer suspended.
    bRunning = true;
    CancelTimer();
    stopCountdown();
    if (!pController) {
        pController = std::make_unique<VeltaCalibrationPanelContext>(this);
        connect(pController.get(), &VeltaCalibrationPanelContext::calibration_done, this,
                &CalibrationPage::CalibrationDone);
        connect(pForm->acceptCalibrationButton, &QPushButton::clicked, this,
                &CalibrationPage::CancelTimer);
        connect(pController.get(), &VeltaCalibrationPanelContext::calibration_failed, this,
                &CalibrationPage::CalibrationFailed);
    }
    pController->showCalibrationPanel();
}

void CalibrationPage::stopCountdown()
{
    CancelStartTimer();
    if (!sStartText.isEmpty()) {
        pForm->startCalibrationButton->setText(sStartText);
    }
}

void CalibrationPage::CalibrationDone()
{
    stopCountdown(); // of a page that was hidden and raised behind a box of the run's end
    setAcceptMode(true);
    nAcceptCount = AcceptSeconds;
    removeTimer(pAcceptTimer);
    pAcceptTimer = new QTimer(this);
    setPointerVisible(true);
    connect(pAcceptTimer, &QTimer::timeout, this, &CalibrationPage::updateLCD);
    pForm->acceptTimeout->display(nAcceptCount);
    pAcceptTimer->start(CountInterval);
}

void CalibrationPage::updateLCD()
{
    if (nAcceptCount >= 1) {
        pForm->acceptTimeout->display(--nAcceptCount);
        return;
    }
    leaveAcceptMode();
    if (pController) {
        pController->RestoreOldCalibrationData();
    }
    if (!bWithdrawn) {
        startCountdown();
    }
}

void CalibrationPage::CancelTimer()
{
    const bool bAccepted = pAcceptTimer != nullptr;
    leaveAcceptMode();
    if (bAccepted && pController) {
        pController->acceptCalibration();
    }
}

void CalibrationPage::leaveAcceptMode()
{
    setAcceptMode(false);
    removeTimer(pAcceptTimer);
    setPointerVisible(false);
}

void CalibrationPage::CalibrationFailed()
{
    setAcceptMode(false);
}

void CalibrationPage::startCountdown()
{
    if (!pStartTimer) {
        pStartTimer = new QTimer(this);
        connect(pStartTimer, &QTimer::timeout, this,
                &CalibrationPage::updateStartCalibrationScreen);
    }
    if (sStartText.isEmpty()) {
        sStartText = pForm->startCalibrationButton->text();
    }
    nStartCount = StartSeconds;
    showStartCount();
    pStartTimer->start(CountInterval);
}

void CalibrationPage::showStartCount()
{
    pForm->startCalibrationButton->setText(sStartText + QStringLiteral(" (%1)").arg(nStartCount));
}

void CalibrationPage::updateStartCalibrationScreen()
{
    if (nStartCount >= 1) {
        --nStartCount;
        showStartCount();
        return;
    }
    bRunning = true;
    CancelStartTimer();
    StartCalibration();
}

void CalibrationPage::CancelStartTimer()
{
    removeTimer(pStartTimer);
}

void CalibrationPage::CancelCalibration()
{
    CancelStartTimer();
    if (!removeName(devicePath(RequestFile))) {
        qWarning("Cannot remove the request %s: %s", qPrintable(devicePath(RequestFile)),
                 qPrintable(qt_error_string(errno)));
    }
    bRunning = false;
}

void CalibrationPage::showFullScreen()
{
    // An X server without a window manager leaves a full-screen window the size that it has.
    setGeometry(QGuiApplication::primaryScreen()->geometry());
    QWizardPage::showFullScreen();
}

void CalibrationPage::showEvent(QShowEvent *event)
{
    bWithdrawn = false;
    QWizardPage::showEvent(event);
}

void CalibrationPage::hideEvent(QHideEvent *event)
{
    QWizardPage::hideEvent(event);
    if (event->spontaneous()) {
        return;
    }
    bWithdrawn = true;
    bRunning = false;
    CancelStartTimer();
    if (pController) {
        pController->cancel();
    }
}

void CalibrationPage::setPointerVisible(bool bVisible)
{
    if (gCursorHidden) {
        QGuiApplication::changeOverrideCursor(bVisible ? Qt::ArrowCursor : Qt::BlankCursor);
    }
    if (WindowServer *pServer = WindowServer::instance()) {
        pServer->setCursorVisible(bVisible);
    }
}

/// Called from the timer's own signal, too: it goes when control is back in the event loop.
void CalibrationPage::removeTimer(QTimer *&pTimer)
{
    if (pTimer) {
        pTimer->stop();
        pTimer->disconnect();
        pTimer->deleteLater();
        pTimer = nullptr;
    }
}
