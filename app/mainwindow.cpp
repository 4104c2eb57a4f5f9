#include "app/mainwindow.h"

#include "app/cursor.h"
#include "app/deviceinformation.h"
#include "app/focusmark.h"
#include "app/keyboardwatcher.h"
#include "calibration/calibrationpage.h"
#include "infobox/veltainfobox.h"
#include "platform/devicepath.h"
#include "platform/requestfiles.h"
#include "platform/servicenotifier.h"
#include "platform/touchtype.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "settings/errorcatalogue.h"
#include "settings/fittedfont.h"
#include "settings/settingsrecord.h"
#include "settings/veltautils.h"
#include "ui_mainwindow.h"
#include "wizard/veltawizard.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QKeyEvent>
#include <QLayout>
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

constexpr auto BlankLabel = QLatin1String("    ");
constexpr int AppNameMargin = 50; // pixels by which a long name stays short of the screen

// Texts of one Ethernet interface on the preview page.
struct InterfaceTexts
{
    const char *staticIp;
    const char *dhcpIp;
    const char *netmask;
    const char *mac;
};

constexpr InterfaceTexts interfaceTexts[] = {
    {QT_TRANSLATE_NOOP("MainWindow", "ETH0 IP: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH0 IP: %1%2"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH0 Mask: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH0 MAC: %1")},
    {QT_TRANSLATE_NOOP("MainWindow", "ETH1 IP: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH1 IP: %1%2"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH1 Mask: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH1 MAC: %1")},
    {QT_TRANSLATE_NOOP("MainWindow", "ETH2 IP: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH2 IP: %1%2"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH2 Mask: %1"),
     QT_TRANSLATE_NOOP("MainWindow", "ETH2 MAC: %1")},
};

QSize primaryScreenSize()
{
    return QGuiApplication::primaryScreen()->geometry().size();
}

void setPointSize(QWidget *pWidget, int nPoints)
{
    QFont font = pWidget->font();
    font.setPointSize(nPoints);
    font.setBold(true);
    pWidget->setFont(font);
}

bool holds(QLayoutItem *pItem, const QWidget &widget)
{
    if (QLayout *pLayout = pItem->layout()) {
        for (int i = 0; i < pLayout->count(); ++i) {
            if (holds(pLayout->itemAt(i), widget)) {
                return true;
            }
        }
    }
    return pItem->widget() == &widget;
}

// What stands beside and with the widget on a page.
QLayoutItem *rowOf(const QLayout &pageLayout, const QWidget &widget)
{
    int i = 0;
    while (!holds(pageLayout.itemAt(i), widget)) {
        ++i;
    }
    return pageLayout.itemAt(i);
}

// A label that changes makes the page's own layout measure anew, but not those between them.
void forgetSizes(QLayoutItem *pItem)
{
    if (QLayout *pLayout = pItem->layout()) {
        for (int i = 0; i < pLayout->count(); ++i) {
            forgetSizes(pLayout->itemAt(i));
        }
    }
    pItem->invalidate();
}

} // namespace

MainWindow::MainWindow(QWidget *pParent)
    : QStackedWidget(pParent), pUi(std::make_unique<Ui::MainWindow>()),
      pRestart(new RestartSequence(devicePath(RebootCommand), this)),
      calibrationRequest(CalibrationRequestFile)
{
    registerResources();
    pUi->setupUi(this);
    createTimers();
    adaptToScreen();
    pUi->sp_progressBar01->setRange(0, 0);
    connectAll();
    updateDeviceInfo();
    detectTouchType();
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
    pUi->label_dummy->setText(BlankLabel);
    showPage(pUi->startupPage);
    show();
    updateAppName();
    pScreenshotTimer->start();
    watchInputDevices();
}

MainWindow::~MainWindow()
{
    pCalibrationPage.reset();
    if (gCursorHidden) {
        QApplication::restoreOverrideCursor();
        gCursorHidden = false;
    }
}

void MainWindow::createTimers()
{
    pProgressTimer = std::make_unique<QTimer>();
    pProgressTimer->setInterval(ProgressInterval);
    pVisibilityTimer = std::make_unique<QTimer>();
    pVisibilityTimer->setInterval(FirstTickDelay);
    pRestartTimer = std::make_unique<QTimer>();
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
        for (QLabel *pLabel : {pUi->label_fw, pUi->label_ip, pUi->label_dummy, pUi->label_mask,
                               pUi->label_rts, pUi->label_mac}) {
            setPointSize(pLabel, 9);
        }
        setPointSize(pUi->label_stopped, 28);
        setPointSize(pUi->label_startpage, 28);
        setPointSize(pUi->label_appname, 14);
    }
    const WindowServer *pServer = WindowServer::instance();
    if (pServer && pServer->isTransformed() && screen.width() < 480 && screen.height() < 640
        && pServer->transformationOrientation() != 0) {
        pUi->pushButtonConfig->hide();
        pUi->pushButtonStartApp->setFocusPolicy(Qt::NoFocus); // it would be the only one to get it
    }
    VeltaUtils utils;
    const int nIndex = utils.resolutionIndex(screen.width(), screen.height());
    utils.scaleFont(pUi->label_restartText, nIndex);
    utils.scaleFont(pUi->label_restartSeconds, nIndex);
    utils.scaleFont(pUi->buttonRestart, nIndex);
    utils.scaleWidth(pUi->pushButtonConfig, true);
    utils.scaleWidth(pUi->pushButtonStartApp, true);
    // The texts beside it must fit whether it is there or not.
    QSizePolicy policy = pUi->pushButtonStartApp->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    pUi->pushButtonStartApp->setSizePolicy(policy);
    fitTexts({pUi->label_stopped});
    fitTexts({pUi->label_startpage});
    fitTexts({pUi->label_appname});
    fitTexts({pUi->label_ip, pUi->label_mask, pUi->label_mac});
}

void MainWindow::showPage(QWidget *pPage)
{
    if (pPage == currentWidget()) {
        return;
    }
    setCurrentWidget(pPage);
    if (pPage == pUi->previewPage) {
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
    if (!runtimeLink.isOpen()) {
        ServiceNotifier::setStatus(QStringLiteral("Waiting for the PLC runtime"));
        runtimeLink = RuntimeLink::open();
        bConfigRequested = false;
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
    if (bCheckCalMessage) {
        // First: ticks go on while the message is open, and it is to be shown once even when its
        // file cannot be deleted.
        bCheckCalMessage = false;
        showCalibrationMessage();
        if (!plcStatus) {
            return; // lost meanwhile
        }
    }
    if (plcStatus->isPlcStopped()) {
        showWhileStopped();
    } else {
        showWhileRunning();
    }
    handleCalibrationRequest();
    // Ticks rest around the wizard: a calibration page above it would never go.
    const bool bCalibrating = pCalibrationPage && pCalibrationPage->isVisible();
    if (bConfigRequested && !bCalibrating && !QApplication::activeModalWidget()) {
        runConfiguration();
    }
    scheduleNextTick();
}

void MainWindow::showWhileStopped()
{
    ServiceNotifier::setStatus(QStringLiteral("PLC stopped, the panel has the screen"));
    if (sIpShown.contains(NoAddress)) {
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
    if (bKeepVisible) {
        showFullScreenOnce();
    } else {
        hide();
    }
    pProgressTimer->stop();
    bConfigRequested = false; // the wizard would be as invisible as this window
}

void MainWindow::handleCalibrationRequest()
{
    if (!calibrationRequest.isPending()) {
        if (pCalibrationPage) {
            pCalibrationPage->hide();
        }
        return;
    }
    if (bNoCalibration) {
        calibrationRequest.finish();
        return;
    }
    if (QApplication::activeModalWidget()) {
        return; // it would cover a box that takes all input
    }
    if (!pCalibrationPage) {
        pCalibrationPage = std::make_unique<CalibrationPage>(); // rarely needed, and not small
    }
    if (pCalibrationPage->isRunning()) {
        return;
    }
    if (pCalibrationPage->isVisible() && calibrationRequest.isBegun()) {
        // The operator has left the page, but the request could not be removed.
        calibrationRequest.finish();
        pCalibrationPage->hide();
        return;
    }
    calibrationRequest.begin();
    if (WindowServer *pServer = WindowServer::instance()) {
        pServer->resumePointer();
    }
    pCalibrationPage->startAutoCalibration();
}

void MainWindow::showCalibrationMessage()
{
    RequestFile message(CalMessageFile);
    if (!message.isPending()) {
        return;
    }
    // A message that stays would shut touch off at every start, and with it the way to calibrate.
    const bool bOnce = message.finish();
    if (WindowServer *pServer = WindowServer::instance(); pServer && bOnce) {
        pServer->suspendPointer(); // until a calibration resumes it
    }
    bKeepVisible = true;
    // A timer does not fire inside its own slot: started anew, it ticks while the box is open.
    pVisibilityTimer->start(TickInterval);
    const VeltaInfoBox box(ERR_CAL_TIMEOUT, QString(), tr("Autoclose in"), CalMessageSeconds, this,
                           true, true);
    bKeepVisible = false;
}

void MainWindow::runConfiguration()
{
    pVisibilityTimer->stop();
    ServiceNotifier::setStatus(QStringLiteral("Configuration open"));
    VeltaWizard wizard(this);
    showPage(pUi->localConfigPage);
    const bool bSaved = wizard.Run();
    bConfigRequested = false;
    if (bSaved) {
        qDebug("Configuration changed - please reboot system");
        startRestartCountdown();
    } else {
        showPage(pUi->previewPage);
        pVisibilityTimer->start();
    }
}

void MainWindow::startRestartCountdown()
{
    ServiceNotifier::setStatus(QStringLiteral("Configuration saved, restarting the device"));
    showPage(pUi->rebootPage);
    bRestartPending = true;
    Q_EMIT triggerLcd(nRestartSeconds);
    pRestartTimer->start();
}

void MainWindow::scheduleNextTick()
{
    // Setting the interval restarts the timer: only when it changes.
    if (!bRestartPending && pVisibilityTimer->intervalAsDuration() != TickInterval) {
        pVisibilityTimer->setInterval(TickInterval);
    }
}

void MainWindow::configButtonPressed()
{
    if (plcStatus && plcStatus->isPlcStopped()) {
        bConfigRequested = true;
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

void MainWindow::keyPressEvent(QKeyEvent *pEvent)
{
    if (pEvent->key() == Qt::Key_Return || pEvent->key() == Qt::Key_Enter) {
        configButtonPressed();
        pEvent->accept();
    } else {
        pEvent->ignore();
    }
}

void MainWindow::changeEvent(QEvent *pEvent)
{
    QStackedWidget::changeEvent(pEvent);
    if (pEvent->type() == QEvent::ActivationChange && isActiveWindow()
        && currentWidget() == pUi->previewPage) {
        focusConfigButton(); // a box, the calibration or another program had the keys
    }
    if (pEvent->type() == QEvent::LanguageChange) {
        pUi->retranslateUi(this);
        showRestartText();
        pUi->label_dummy->setText(BlankLabel);
        updateDeviceInfo();
        appName.clear();
        updateAppName();
    }
}

// Device status

void MainWindow::updateDeviceInfo()
{
    const FirmwareVersions versions = readFirmwareVersions();
    pUi->label_fw->setText(tr("Firmware Version: ") + versions.firmware);
    pUi->label_rts->setText(tr("Codesys RTS Version: ") + versions.runtime);
    fitTexts({pUi->label_fw, pUi->label_rts});
    const auto interface = readInterfaceInformation();
    if (!interface) {
        return; // what is shown stays
    }
    const InterfaceTexts &texts = interfaceTexts[interface->nInterface];
    sIpShown = interface->ip;
    pUi->label_ip->setText(interface->bStatic
                               ? tr(texts.staticIp).arg(sIpShown)
                               : tr(texts.dhcpIp).arg(sIpShown, QLatin1String(" (dhcp)")));
    pUi->label_mask->setText(tr(texts.netmask).arg(interface->netmask));
    pUi->label_mac->setText(tr(texts.mac).arg(interface->mac));
    fitTexts({pUi->label_ip, pUi->label_mask, pUi->label_mac});
}

// Texts that would be cut off are shown in a smaller font; those of a group stay alike.
void MainWindow::fitTexts(std::initializer_list<QLabel *> labels)
{
    const QLabel *pFirst = *labels.begin();
    const QLayout *pPageLayout = pUi->startupPage->isAncestorOf(pFirst)
        ? pUi->startupPage->layout()
        : pUi->previewPage->layout();
    QLayoutItem *pRow = rowOf(*pPageLayout, *pFirst);
    const QMargins margins = pPageLayout->contentsMargins();
    const int nWidth = primaryScreenSize().width() - margins.left() - margins.right();
    fittedFont(formFont(pFirst), [&](const QFont &font) {
        for (QLabel *pLabel : labels) {
            pLabel->setFont(font);
        }
        forgetSizes(pRow);
        return pRow->minimumSize().width() <= nWidth;
    });
}

QFont MainWindow::formFont(const QLabel *pLabel)
{
    auto it = formFonts.constFind(pLabel);
    if (it == formFonts.cend()) {
        it = formFonts.insert(pLabel, pLabel->font());
    }
    return *it;
}

// PLC runtime link

void MainWindow::updateAppName()
{
    QString name;
    if (plcStatus && plcStatus->state != PlcStateNoApplication) {
        name = plcStatus->firstAppName().simplified(); // one line
    }
    if (name == loadedName && !appName.isEmpty()) {
        return; // as at nearly every tick: shaping a text costs more than all the rest of it
    }
    loadedName = name;
    appName = name.isEmpty()
        ? tr("no codesys application")
        : QFontMetrics(pUi->label_appname->font())
              .elidedText(name, Qt::ElideRight, primaryScreenSize().width() - AppNameMargin);
    pUi->label_appname->setText(appName);
}

void MainWindow::startAppButtonPressed()
{
    if (runtimeLink.isOpen() && !runtimeLink.startAllApplications()) {
        focusConfigButton();
        pUi->pushButtonStartApp->setEnabled(false); // shows the error icon from now on
    }
}

// Input devices

void MainWindow::detectTouchType()
{
    bNoCalibration = readTouchType() != TouchType::Single;
}

void MainWindow::watchInputDevices()
{
    if (const WindowServer *pServer = WindowServer::instance()) {
        connect(pServer, &WindowServer::touchscreenOpened, this, &MainWindow::detectTouchType);
    }
    pKeyboardWatcher = new KeyboardWatcher(this);
    pKeyboardWatcher->start();
}

void MainWindow::inputEventDirChanged(const QString &path)
{
    pKeyboardWatcher->rescan(path);
}

void MainWindow::screenshotTimerEvent()
{
    screenshotRequest.serve();
}
