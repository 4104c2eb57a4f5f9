#include "calibration/calibrationpage.h"

#include "app/cursor.h"
#include "calibration/veltacalibrationpanelcontext.h"
#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/requestfiles.h"
#include "platform/windowserver.h"
#include "settings/fittedfont.h"
#include "settings/veltautils.h"
#include "ui_veltacalibrationinputform.h"

#include <QGuiApplication>
#include <QHideEvent>
#include <QScreen>
#include <QStyle>

namespace {

/// Pixels that the frame of the group box takes from the width inside, with some to spare.
constexpr int GroupBoxFrame = 8;

int horizontalMargins(const QLayout *layout)
{
    return layout->contentsMargins().left() + layout->contentsMargins().right();
}

} // namespace

CalibrationPage::CalibrationPage(const CalibrationPace &pace)
    : pForm(std::make_unique<Ui::VeltaCalibrationInputForm>()), run(pace, this)
{
    pForm->setupUi(this);
    adaptToScreen();
    connect(pForm->startCalibrationButton, &QPushButton::clicked, this,
            &CalibrationPage::StartCalibration);
    connect(pForm->acceptCalibrationButton, &QPushButton::clicked, this,
            &CalibrationPage::CancelTimer);
    connect(pForm->cancelCalibrationButton, &QPushButton::clicked, this,
            &CalibrationPage::CancelCalibration);
    connect(&run, &CalibrationRun::stateChanged, this, &CalibrationPage::showState);
    connect(&run, &CalibrationRun::counted, this, &CalibrationPage::showCount);
    connect(&run, &CalibrationRun::startDue, this, &CalibrationPage::StartCalibration);
    sStartText = pForm->startCalibrationButton->text();
    setAcceptMode(false);
}

CalibrationPage::~CalibrationPage() = default;

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
    // Nothing may stick out of a screen that is smaller than the form's minimum sizes.
    setMinimumSize(minimumSize().boundedTo(screen));
    const int width =
        qMin(screen.width() - horizontalMargins(layout()), pForm->groupBox->maximumWidth())
        - GroupBoxFrame;
    const QFont common = pForm->groupBox->font();
    pForm->groupBox->setFont(fittedFont(common, pForm->groupBox->title(), width));
    fitButtons(width - horizontalMargins(pForm->verticalLayout_3));
    fitAcceptText(width - horizontalMargins(pForm->verticalLayout_3)
                      - pForm->horizontalLayout_2->spacing() - pForm->acceptTimeout->minimumWidth(),
                  screen.height());
}

// All three alike, and with room for the count-down that the first one shows.
void CalibrationPage::fitButtons(int width)
{
    QPushButton *const buttons[] = {pForm->startCalibrationButton, pForm->acceptCalibrationButton,
                                    pForm->cancelCalibrationButton};
    const int padding = 2 * style()->pixelMetric(QStyle::PM_ButtonMargin, nullptr, this);
    QFont fitted = buttons[0]->font();
    for (const QPushButton *pButton : buttons) {
        const bool bCounts = pButton == pForm->startCalibrationButton;
        fitted = fittedFont(fitted, pButton->text() + (bCounts ? QLatin1String(" (5)") : QString()),
                            width - padding);
    }
    for (QPushButton *pButton : buttons) {
        pButton->setFont(fitted);
    }
}

// The text takes the height that it needs, so that the buttons are as high as can be; where they
// leave less, its font gets smaller.
void CalibrationPage::fitAcceptText(int width, int screenHeight)
{
    QPlainTextEdit *pText = pForm->acceptCalTextEdit;
    pText->setMinimumWidth(qMin(pText->minimumWidth(), width));
    const int leastHeight = pText->minimumHeight();
    const int margins = 2 * static_cast<int>(pText->document()->documentMargin());
    fittedFont(pText->font(), [&](const QFont &font) {
        pText->setFont(font);
        const QRect text = QFontMetrics(font).boundingRect(
            QRect(0, 0, width - margins, screenHeight), Qt::TextWordWrap, acceptText());
        // A rounding more: a text that ends with its room can be scrolled.
        pText->setMinimumHeight(qMax(leastHeight, text.height() + margins + 2));
        layout()->invalidate();
        return layout()->totalMinimumSize().height() <= screenHeight;
    });
}

QString CalibrationPage::acceptText()
{
    return tr("Press ''Accept Calibration'' button within 10 seconds or wait till timer reaches 0 "
              "to automatically restore the old values.");
}

void CalibrationPage::startAutoCalibration()
{
    if (isRunning()) {
        return;
    }
    run.handle(CalibrationEvent::Request);
    showFullScreen();
}

void CalibrationPage::showState()
{
    const CalibrationState state = run.state();
    const bool bAccept =
        state == CalibrationState::Awaiting || state == CalibrationState::AwaitingLeft;
    if (bAccept != pForm->acceptCalibrationButton->isEnabled()) {
        setAcceptMode(bAccept);
        setPointerVisible(bAccept);
    }
    if (bAccept || state == CalibrationState::Sampling) {
        pForm->startCalibrationButton->setText(sStartText);
    }
}

void CalibrationPage::showCount(int seconds)
{
    if (run.state() == CalibrationState::CountingDown) {
        pForm->startCalibrationButton->setText(sStartText + QStringLiteral(" (%1)").arg(seconds));
    } else {
        pForm->acceptTimeout->display(seconds);
    }
}

void CalibrationPage::setAcceptMode(bool on)
{
    pForm->acceptCalibrationButton->setEnabled(on);
    pForm->startCalibrationButton->setEnabled(!on);
    pForm->cancelCalibrationButton->setEnabled(!on);
    pForm->acceptCalTextEdit->setPlainText(on ? acceptText() : QString());
    pForm->acceptTimeout->setVisible(on);
}

void CalibrationPage::StartCalibration()
{
    CancelTimer();
    CancelStartTimer();
    if (!pController) {
        pController = std::make_unique<VeltaCalibrationPanelContext>(&run, this);
        connect(pController.get(), &VeltaCalibrationPanelContext::calibration_done, this,
                &CalibrationPage::CalibrationDone);
        connect(pController.get(), &VeltaCalibrationPanelContext::calibration_failed, this,
                &CalibrationPage::CalibrationFailed);
    }
    pController->showCalibrationPanel();
}

void CalibrationPage::CalibrationDone()
{
    run.handle(CalibrationEvent::Applied);
}

void CalibrationPage::CalibrationFailed()
{
    showState();
}

void CalibrationPage::updateLCD()
{
    run.handle(CalibrationEvent::AcceptTick);
}

void CalibrationPage::CancelTimer()
{
    run.handle(CalibrationEvent::Accept);
}

void CalibrationPage::updateStartCalibrationScreen()
{
    run.handle(CalibrationEvent::StartTick);
}

void CalibrationPage::CancelStartTimer()
{
    run.handle(CalibrationEvent::StopCountdown);
}

void CalibrationPage::CancelCalibration()
{
    removeName(devicePath(CalibrationRequestFile)); // who polls it sees whether it has gone
    run.handle(CalibrationEvent::Withdraw);
}

void CalibrationPage::showFullScreen()
{
    // An X server without a window manager leaves a full-screen window the size that it has.
    setGeometry(QGuiApplication::primaryScreen()->geometry());
    QWizardPage::showFullScreen();
}

void CalibrationPage::hideEvent(QHideEvent *event)
{
    QWizardPage::hideEvent(event);
    if (!event->spontaneous()) {
        run.handle(CalibrationEvent::Withdraw);
    }
}

void CalibrationPage::setPointerVisible(bool visible)
{
    if (gCursorHidden) {
        QGuiApplication::changeOverrideCursor(visible ? Qt::ArrowCursor : Qt::BlankCursor);
    }
    if (WindowServer *pServer = WindowServer::instance()) {
        pServer->setCursorVisible(visible);
    }
}
