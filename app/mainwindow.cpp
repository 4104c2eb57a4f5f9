#include "app/mainwindow.h"

#include "app/calibrationrequests.h"
#include "app/cursor.h"
#include "app/focusmark.h"
#include "app/keyboardwatcher.h"
#include "app/previewtexts.h"
#include "app/restartsequence.h"
#include "app/rowfit.h"
#include "infobox/veltainfobox.h"
#include "platform/devicepath.h"
#include "platform/screenhandover.h"
#include "platform/servicenotifier.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "settings/errorcatalogue.h"
#include "settings/fittedfont.h"
#include "settings/veltautils.h"
#include "ui_mainwindow.h"
#include "wizard/veltawizard.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QIcon>
#include <QKeyEvent>
#include <QScreen>
#include <QTimer>

using namespace std::chrono_literals;

// Resources of a static library are registered by whoever needs them.
static void registerResources()
{
    Q_INIT_RESOURCE(resources);
}

namespace {

constexpr auto ProgressInterval = 2000ms;
constexpr auto FirstTickDelay = 5000ms;
constexpr auto TickInterval = 500ms;
constexpr auto RestartStep = 1000ms;
constexpr quint8 CalMessageSeconds = 15;

constexpr auto RebootCommand = QLatin1String("/sbin/reboot");

constexpr int ButtonPadding = 20; // pixels of a button's width without text

QSize primaryScreenSize()
{
    return QGuiApplication::primaryScreen()->geometry().size();
}

void setPointSize(QWidget *widget, int points)
{
    QFont font = widget->font();
    font.setPointSize(points);
    font.setBold(true);
    widget->setFont(font);
}

} // namespace

MainWindow::MainWindow(QWidget *parent, const ScreenHandover *screen)
    : QStackedWidget(parent), pUi(std::make_unique<Ui::MainWindow>()),
      pCalibrationRequests(std::make_unique<CalibrationRequests>()),
      pRestart(new RestartSequence(devicePath(RebootCommand), this))
{
    registerResources();
    pUi->setupUi(this);
    createTimers();
    adaptToScreen();
    pUi->sp_progressBar01->setRange(0, 0);
    connectAll();
    if (screen) {
        connect(screen, &ScreenHandover::firstFrame, this, &MainWindow::finishStart,
                Qt::QueuedConnection);
    } else {
        adaptOtherPages();
    }
    pProgressTimer->start();
    pVisibilityTimer->start();
    hide();
    for (QWidget *pButton : {static_cast<QWidget *>(pUi->pushButtonConfig),
                             static_cast<QWidget *>(pUi->pushButtonStartApp),
                             static_cast<QWidget *>(pUi->buttonRestart)}) {
        pButton->setAttribute(Qt::WA_AcceptTouchEvents);
    }
    new FocusMark(pUi->pushButtonConfig, false);
    new FocusMark(pUi->pushButtonStartApp, true); // a PLC is started by a deliberate press alone
    focusConfigButton();
    showPage(pUi->startupPage);
    show();
    pScreenshotTimer->start();
    if (!screen) {
        finishStart();
    }
}

MainWindow::~MainWindow()
{
    pCalibrationRequests.reset();
    if (gCursorHidden) {
        QApplication::restoreOverrideCursor();
        gCursorHidden = false;
    }
}

void MainWindow::createTimers()
{
    pProgressTimer = std::make_unique<QTimer>();
    pProgressTimer->setInterval(ProgressInterval);
    pVisibilityTimer = std::make_unique<QTimer>(this);
    pVisibilityTimer->setObjectName("visibilityTimer");
    pVisibilityTimer->setInterval(FirstTickDelay);
    pRestartTimer = std::make_unique<QTimer>(this);
    pRestartTimer->setObjectName("restartTimer");
    pRestartTimer->setInterval(RestartStep);
    pScreenshotTimer = new QTimer(this);
    pScreenshotTimer->setInterval(ProgressInterval);
}

void MainWindow::connectAll()
{
    connect(pProgressTimer.get(), &QTimer::timeout, this, &MainWindow::doProgressBar);
    connect(pVisibilityTimer.get(), &QTimer::timeout, this, &MainWindow::controlVisibility);
    connect(pUi->pushButtonConfig, &QPushButton::clicked, this, &MainWindow::configButtonPressed);
    connect(pRestartTimer.get(), &QTimer::timeout, this, &MainWindow::systemRestart_Timer);
    connect(this, &MainWindow::triggerLcd, pUi->lcdRestart, qOverload<int>(&QLCDNumber::display));
    connect(pUi->buttonRestart, &QPushButton::clicked, this, &MainWindow::systemRestart_Button);
    connect(pRestart, &RestartSequence::stateChanged, this, &MainWindow::restartStateChanged);
    connect(pUi->pushButtonStartApp, &QPushButton::clicked, this,
            &MainWindow::startAppButtonPressed);
    connect(pScreenshotTimer, &QTimer::timeout, this, &MainWindow::screenshotTimerEvent);
}

void MainWindow::adaptToScreen()
{
    const QSize screen = primaryScreenSize();
    setWindowFlags(Qt::FramelessWindowHint | Qt::MSWindowsFixedSizeDialogHint);
    // The smallest screens are narrower than the form's minimum.
    setMinimumSize(minimumSize().boundedTo(screen));
    for (QWidget *pPage :
         {pUi->previewPage, pUi->startupPage, pUi->rebootPage, pUi->localConfigPage}) {
        pPage->resize(screen);
    }
    resize(screen);
    if (screen == QSize(320, 240)) {
        setPointSize(pUi->label_startpage, 28);
        for (QLabel *pLabel : {pUi->label_fw, pUi->label_ip, pUi->label_dummy, pUi->label_mask,
                               pUi->label_rts, pUi->label_mac}) {
            setPointSize(pLabel, 9);
        }
        setPointSize(pUi->label_stopped, 28);
        setPointSize(pUi->label_appname, 14);
    }
    const WindowServer *pServer = WindowServer::instance();
    if (pServer && pServer->isTransformed() && screen.width() < 480 && screen.height() < 640
        && pServer->transformationOrientation() != 0) {
        pUi->pushButtonConfig->hide();
        pUi->pushButtonStartApp->setFocusPolicy(Qt::NoFocus); // it would be the only one to get it
    }
    RowFit(pUi->startupPage).fit({pUi->label_startpage});
}

void MainWindow::adaptOtherPages()
{
    QIcon startIcon(QStringLiteral(":/main/img/play-button.png"));
    startIcon.addFile(QStringLiteral(":/main/img/error.png"), {}, QIcon::Disabled);
    pUi->pushButtonStartApp->setIcon(startIcon);
    pUi->pushButtonConfig->setIcon(QIcon(QStringLiteral(":/main/img/settings-icon.png")));
    for (QPushButton *pButton : {pUi->pushButtonStartApp, pUi->pushButtonConfig}) {
        pButton->setStyleSheet(QStringLiteral("border: none;\noutline: none;"));
    }
    const QSize screen = primaryScreenSize();
    VeltaUtils utils;
    const int nIndex = utils.resolutionIndex(screen.width(), screen.height());
    utils.scaleFont(pUi->label_restartText, nIndex);
    utils.scaleFont(pUi->label_restartSeconds, nIndex);
    utils.scaleFont(pUi->buttonRestart, nIndex);
    const QMargins margins = pUi->rebootPage->layout()->contentsMargins();
    pUi->buttonRestart->setFont(
        fittedFont(pUi->buttonRestart->font(), pUi->buttonRestart->text(),
                   screen.width() - margins.left() - margins.right() - ButtonPadding));
    utils.scaleWidth(pUi->pushButtonConfig, true);
    utils.scaleWidth(pUi->pushButtonStartApp, true);
    // The texts beside it must fit whether it is there or not.
    QSizePolicy policy = pUi->pushButtonStartApp->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    pUi->pushButtonStartApp->setSizePolicy(policy);
    pPreviewTexts = std::make_unique<PreviewTexts>(pUi.get());
    pPreviewTexts->updateDeviceInfo();
    pPreviewTexts->updateAppName(plcStatus);
}

// Pages that are not shown yet, drivers that are plug-ins: what takes as long as the first frame.
void MainWindow::finishStart()
{
    if (pKeyboardWatcher) {
        return;
    }
    if (!pPreviewTexts) {
        adaptOtherPages();
    }
    pCalibrationRequests->detectTouchType();
    watchInputDevices();
}

void MainWindow::showPage(QWidget *page)
{
    if (page == currentWidget()) {
        return;
    }
    setCurrentWidget(page);
    if (page == pUi->previewPage) {
        focusConfigButton();
    }
}

// Of its own accord Qt would give the focus to the button that starts the PLC application.
void MainWindow::focusConfigButton()
{
    if (!pUi->pushButtonConfig->isHidden()) {
        pUi->pushButtonConfig->setFocus();
    } else if (QWidget *pFocused = focusWidget()) {
        pFocused->clearFocus();
    }
}

void MainWindow::showFullScreenOnce()
{
    // Showing again what is shown would take the activation from an open box.
    if (!isVisible() || !isFullScreen()) {
        showFullScreen();
        keepBelowOthers(this); // a box, the calibration
        focusConfigButton();
    }
}

void MainWindow::doProgressBar()
{
    pUi->sp_progressBar01->setValue(pUi->sp_progressBar01->value() + 1);
}

void MainWindow::controlVisibility()
{
    finishStart();
    if (!runtimeLink.isOpen()) {
        ServiceNotifier::setStatus(QStringLiteral("Waiting for the PLC runtime"));
        runtimeLink = RuntimeLink::open();
        phase.handle(WindowPhase::Event::ConfigurationDropped);
        scheduleNextTick();
        return;
    }
    plcStatus = runtimeLink.status();
    if (!plcStatus) {
        if (!isVisible()) {
            show();
            keepBelowOthers(this);
            focusConfigButton();
        }
        runtimeLink.close();
        pVisibilityTimer->setInterval(TickInterval);
        return;
    }
    if (phase.state() == WindowPhase::State::Starting) {
        handleFirstStatus();
        if (!plcStatus) {
            return; // lost meanwhile
        }
    }
    if (plcStatus->isPlcStopped()) {
        showWhileStopped();
    } else {
        showWhileRunning();
    }
    pCalibrationRequests->serve();
    // Ticks rest around the wizard: a calibration page above it would never go.
    if (phase.state() == WindowPhase::State::Asked && !pCalibrationRequests->isPageVisible()
        && !QApplication::activeModalWidget()) {
        runConfiguration();
    }
    scheduleNextTick();
}

void MainWindow::showWhileStopped()
{
    ServiceNotifier::setStatus(QStringLiteral("PLC stopped, the panel has the screen"));
    if (pPreviewTexts->isAddressDue()) {
        updateDeviceInfo(); // a late lease becomes visible
    }
    showFullScreenOnce();
    showPage(pUi->previewPage);
    pProgressTimer->stop();
    updateAppName();
    pUi->pushButtonStartApp->setVisible(plcStatus->state == PlcStateStopped);
}

void MainWindow::showWhileRunning()
{
    ServiceNotifier::setStatus(QStringLiteral("PLC running, its visualisation has the screen"));
    if (phase.state() == WindowPhase::State::ShowingMessage) {
        showFullScreenOnce();
    } else {
        hide();
    }
    pProgressTimer->stop();
    phase.handle(WindowPhase::Event::ConfigurationDropped);
}

// Ticks go on while the message is open, and it is to be shown once even when its file cannot be
// deleted: the phase goes on before it.
void MainWindow::handleFirstStatus()
{
    if (!CalibrationRequests::takeTimeoutMessage()) {
        phase.handle(WindowPhase::Event::NoMessageDue);
        return;
    }
    phase.handle(WindowPhase::Event::MessageDue);
    showCalibrationMessage();
    phase.handle(WindowPhase::Event::MessageClosed);
}

void MainWindow::showCalibrationMessage()
{
    // A timer does not fire inside its own slot: started anew, it ticks while the box is open.
    pVisibilityTimer->start(TickInterval);
    const VeltaInfoBox box(ERR_CAL_TIMEOUT, QString(), tr("Autoclose in"), CalMessageSeconds, this,
                           true, true);
}

void MainWindow::runConfiguration()
{
    pVisibilityTimer->stop();
    phase.handle(WindowPhase::Event::ConfigurationOpened);
    ServiceNotifier::setStatus(QStringLiteral("Configuration open"));
    VeltaWizard wizard(this);
    showPage(pUi->localConfigPage);
    if (wizard.Run()) {
        qDebug("Configuration changed - please reboot system");
        startRestartCountdown();
    } else {
        phase.handle(WindowPhase::Event::ConfigurationLeft);
        showPage(pUi->previewPage);
        pVisibilityTimer->start();
    }
}

void MainWindow::startRestartCountdown()
{
    phase.handle(WindowPhase::Event::ConfigurationSaved);
    ServiceNotifier::setStatus(QStringLiteral("Configuration saved, restarting the device"));
    showPage(pUi->rebootPage);
    Q_EMIT triggerLcd(nRestartSeconds);
    pRestartTimer->start();
}

void MainWindow::scheduleNextTick()
{
    // Setting the interval restarts the timer: only when it changes.
    if (phase.state() != WindowPhase::State::Restarting
        && pVisibilityTimer->intervalAsDuration() != TickInterval) {
        pVisibilityTimer->setInterval(TickInterval);
    }
}

void MainWindow::configButtonPressed()
{
    if (plcStatus && plcStatus->isPlcStopped()) {
        phase.handle(WindowPhase::Event::ConfigurationAsked);
    }
}

void MainWindow::systemRestart_Timer()
{
    Q_EMIT triggerLcd(pUi->lcdRestart->intValue() - 1);
    if (pUi->lcdRestart->intValue() == 0) {
        qDebug("Rebooting");
        restartDevice();
    }
}

void MainWindow::systemRestart_Button()
{
    restartDevice();
}

void MainWindow::restartDevice()
{
    pRestartTimer->stop(); // one restart is enough
    Q_EMIT triggerLcd(0);
    // On the screen before the command may end the program: painted, then brought to the display.
    pUi->lcdRestart->repaint();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
    pRestart->restart();
}

void MainWindow::restartStateChanged()
{
    if (!pRestart->isCommandRunning()) { // else until it is known what comes of it
        showRestartText();
    }
    if (pRestart->isRetryDue()) {
        Q_EMIT triggerLcd(nRestartSeconds);
        pRestartTimer->start();
    }
}

void MainWindow::showRestartText()
{
    const RestartSequence::State state = pRestart->state();
    pUi->label_restartText->setText(
        state == RestartSequence::State::Failed        ? tr("Restart failed, next attempt in")
            : state == RestartSequence::State::Overdue ? tr("Not restarted yet, next attempt in")
                                                       : tr("Restart in"));
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        configButtonPressed();
        event->accept();
    } else {
        event->ignore();
    }
}

void MainWindow::changeEvent(QEvent *event)
{
    QStackedWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()
        && currentWidget() == pUi->previewPage) {
        focusConfigButton(); // a box, the calibration or another program had the keys
    }
    if (event->type() == QEvent::LanguageChange) {
        pUi->retranslateUi(this); // puts the form's texts also where code has put others
        showRestartText();
        if (pPreviewTexts) {
            pPreviewTexts->restore(plcStatus);
        }
    }
}

void MainWindow::updateDeviceInfo()
{
    if (pPreviewTexts) { // else it is done at the end of the start
        pPreviewTexts->updateDeviceInfo();
    }
}

void MainWindow::updateAppName()
{
    if (pPreviewTexts) {
        pPreviewTexts->updateAppName(plcStatus);
    }
}

void MainWindow::startAppButtonPressed()
{
    if (runtimeLink.isOpen() && !runtimeLink.startAllApplications()) {
        focusConfigButton();
        pUi->pushButtonStartApp->setEnabled(false); // shows the error icon from now on
    }
}

void MainWindow::watchInputDevices()
{
    if (const WindowServer *pServer = WindowServer::instance()) {
        connect(pServer, &WindowServer::touchscreenOpened, this,
                [this] { pCalibrationRequests->detectTouchType(); });
    }
    pKeyboardWatcher = new KeyboardWatcher(this);
    pKeyboardWatcher->start();
}

void MainWindow::inputEventDirChanged(const QString &path)
{
    if (pKeyboardWatcher) { // else they are looked for at the end of the start
        pKeyboardWatcher->rescan(path);
    }
}

void MainWindow::screenshotTimerEvent()
{
    screenshotRequest.serve();
}
