#include "app/mainwindow.h"

#include "app/cursor.h"
#include "calibration/calibrationpage.h"
#include "infobox/veltainfobox.h"
#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/firmwaretext.h"
#include "platform/macaddress.h"
#include "platform/screengrab.h"
#include "platform/touchtype.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "settings/errorcatalogue.h"
#include "settings/fittedfont.h"
#include "settings/inifile.h"
#include "settings/settingsrecord.h"
#include "settings/veltautils.h"
#include "ui_mainwindow.h"
#include "wizard/veltawizard.h"

#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
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
constexpr auto RebootLimit = 120s; // a hanging command must not freeze the panel
constexpr quint8 CalMessageSeconds = 15;

constexpr auto CalibrationRequestFile = CalibrationPage::RequestFile;
constexpr auto CalMessageFile = QLatin1String("/flash/local/cal_message");
constexpr auto RebootCommand = QLatin1String("/sbin/reboot");
constexpr auto InputFolder = QLatin1String("/dev/input");
constexpr auto KeyMapFile = QLatin1String("/etc/kbd/de.qmap");
constexpr int MaxKeyboards = 2;

constexpr auto BlankLabel = QLatin1String("    ");
constexpr auto UnknownMac = QLatin1String("00:00:00:00:00:00");
constexpr auto DhcpModeText = QLatin1String("dhcp");
constexpr auto StaticModeText = QLatin1String("static");
constexpr int PageMargin = 9; // pixels, as in the form
constexpr int ButtonSpacing = 6; // pixels between a button and the texts beside it
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

// A version of the firmware, empty when it is not known.
QString firmwareInfo(QLatin1String key)
{
    constexpr auto Path = QLatin1String("/etc/fwinfo.ini");
    static bool bTold = false; // it is read again and again
    const IniFile info(Path);
    const bool bUnreadable = info.state() == IniFile::Unreadable;
    if (bUnreadable && !bTold) {
        qWarning("%s %s", Path.data(), qPrintable(info.problem()));
    }
    bTold = bUnreadable;
    return info.value(key).toString();
}

QByteArray interfaceName(int nInterface)
{
    return "eth" + QByteArray::number(nInterface);
}

} // namespace

MainWindow::MainWindow(QWidget *pParent)
    : QStackedWidget(pParent), pUi(std::make_unique<Ui::MainWindow>())
{
    registerResources();
    pUi->setupUi(this);
    createTimers();
    adaptToScreen();
    bKeyboardMapping = readKeyboardMapping();
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
    pUi->pushButtonConfig->setFocus();
    pUi->label_dummy->setText(BlankLabel);
    showPage(pUi->startupPage);
    show();
    updateAppName();
    pScreenshotTimer->start();
    watchInputDevices();
}

MainWindow::~MainWindow()
{
    if (nPlcHandle > 0) {
        closeRuntimeLink();
    }
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
    }
    VeltaUtils utils;
    const int nIndex = utils.resolutionIndex(screen.width(), screen.height());
    utils.scaleFont(pUi->label_restartText, nIndex);
    utils.scaleFont(pUi->label_restartSeconds, nIndex);
    utils.scaleFont(pUi->buttonRestart, nIndex);
    utils.scaleWidth(pUi->pushButtonConfig, true);
    utils.scaleWidth(pUi->pushButtonStartApp, true);
    fitTexts({pUi->label_stopped});
    fitTexts({pUi->label_startpage});
    fitTexts({pUi->label_ip, pUi->label_mask, pUi->label_mac});
}

void MainWindow::showPage(QWidget *pPage)
{
    setCurrentWidget(pPage);
}

void MainWindow::showFullScreenOnce()
{
    // Showing again what is shown would take the activation from an open box.
    if (!isVisible() || !isFullScreen()) {
        showFullScreen();
        keepOverlaysOnTop();
    }
}

// The window comes up over what has been opened meanwhile: a box, the calibration.
void MainWindow::keepOverlaysOnTop()
{
    QWidgetList windows = visibleWindows();
    windows.removeOne(this);
    for (QWidget *pWindow : std::as_const(windows)) {
        pWindow->raise();
    }
    if (!windows.isEmpty()) {
        windows.constLast()->activateWindow();
    }
}

void MainWindow::doProgressBar()
{
    pUi->sp_progressBar01->setValue(pUi->sp_progressBar01->value() + 1);
}

void MainWindow::controlVisibility()
{
    if (nPlcHandle < 1) {
        openRuntimeLink();
        bStatusKnown = false;
        bConfigRequested = false;
        scheduleNextTick();
        return;
    }
    if (!readRuntimeStatus()) {
        if (!isVisible()) {
            show();
            keepOverlaysOnTop();
        }
        closeRuntimeLink();
        pVisibilityTimer->setInterval(TickInterval);
        return;
    }
    if (bCheckCalMessage) {
        // First: ticks go on while the message is open, and it is to be shown once even when its
        // file cannot be deleted.
        bCheckCalMessage = false;
        showCalibrationMessage();
        if (nPlcHandle < 1) {
            return; // lost meanwhile: the status is not worth acting on
        }
    }
    if (plcStatus.isPlcStopped()) {
        showWhileStopped();
    } else {
        showWhileRunning();
    }
    handleCalibrationRequest();
    // Ticks rest around the wizard: a calibration page above it would never go.
    const bool bCalibrating = pCalibrationPage && pCalibrationPage->isVisible();
    if (bConfigRequested && !bKeepVisible && !bCalibrating) {
        runConfiguration();
    }
    scheduleNextTick();
}

void MainWindow::showWhileStopped()
{
    if (ipText.contains(NoAddress)) {
        updateDeviceInfo(); // a late lease becomes visible
    }
    showFullScreenOnce();
    showPage(pUi->previewPage);
    pProgressTimer->stop();
    updateAppName();
    pUi->pushButtonStartApp->setVisible(plcStatus.state == PlcStateStopped);
}

void MainWindow::showWhileRunning()
{
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
    QFile request(devicePath(CalibrationRequestFile));
    if (!request.open(QIODevice::ReadOnly)) {
        if (pCalibrationPage) {
            pCalibrationPage->hide();
        }
        return;
    }
    request.close();
    if (bNoCalibration) {
        request.remove();
        return;
    }
    if (QApplication::activeModalWidget()) {
        return; // it would cover a box that takes all input
    }
    if (!pCalibrationPage) {
        pCalibrationPage = std::make_unique<CalibrationPage>(); // rarely needed, and not small
    }
    if (!pCalibrationPage->isRunning()) {
        if (WindowServer *pServer = WindowServer::instance()) {
            pServer->resumePointer();
        }
        pCalibrationPage->startAutoCalibration();
    }
}

void MainWindow::showCalibrationMessage()
{
    QFile message(devicePath(CalMessageFile));
    if (!message.exists()) {
        return;
    }
    message.remove();
    if (WindowServer *pServer = WindowServer::instance()) {
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
    if (bStatusKnown && plcStatus.isPlcStopped()) {
        bConfigRequested = true;
    }
}

void MainWindow::systemRestart_Timer()
{
    Q_EMIT triggerLcd(pUi->lcdRestart->intValue() - 1);
    if (pUi->lcdRestart->intValue() == 0) {
        qDebug("Rebooting");
        pRestartTimer->stop();
        runCommand(devicePath(RebootCommand), {}, RebootLimit);
    }
}

void MainWindow::systemRestart_Button()
{
    pRestartTimer->stop(); // one reboot is enough
    runCommand(devicePath(RebootCommand), {}, RebootLimit);
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
    if (pEvent->type() == QEvent::LanguageChange) {
        pUi->retranslateUi(this);
        pUi->label_dummy->setText(BlankLabel);
        updateDeviceInfo();
        appName.clear();
        updateAppName();
    }
}

// Device status

void MainWindow::updateDeviceInfo()
{
    pUi->label_fw->setText(tr("Firmware Version: ") + readFirmwareVersion());
    pUi->label_rts->setText(tr("Codesys RTS Version: ") + readRuntimeVersion());
    fitTexts({pUi->label_fw, pUi->label_rts});
    const int nInterface = interfaceToShow();
    if (nInterface < 0) {
        return;
    }
    const InterfaceTexts &texts = interfaceTexts[nInterface];
    const QString ip = interfaceIp(nInterface);
    pUi->label_ip->setText(modeText.contains(StaticModeText) ? tr(texts.staticIp).arg(ip)
                                                             : tr(texts.dhcpIp).arg(ip, modeText));
    pUi->label_mask->setText(tr(texts.netmask).arg(interfaceNetmask(nInterface)));
    pUi->label_mac->setText(tr(texts.mac).arg(interfaceMac(nInterface)));
    fitTexts({pUi->label_ip, pUi->label_mask, pUi->label_mac});
}

int MainWindow::interfaceToShow()
{
    if (interfaceQualifies(0)) {
        return 0;
    }
    if (sysif_IsEth1Present() && interfaceQualifies(1)) {
        return 1;
    }
    if (sysif_IsEth2Present() && interfaceQualifies(2)) {
        return 2;
    }
    return -1;
}

bool MainWindow::interfaceQualifies(int nInterface)
{
    const QString mode = interfaceMode(nInterface);
    return mode.contains(DhcpModeText) || mode.contains(StaticModeText);
}

QString MainWindow::readFirmwareVersion()
{
    firmwareVersion = firmwareInfo(QLatin1String("firmware/version"));
    return firmwareVersion;
}

QString MainWindow::readRuntimeVersion()
{
    runtimeVersion = firmwareInfo(QLatin1String("codesys/version"));
    return runtimeVersion;
}

QString MainWindow::interfaceIp(int nInterface)
{
    ipBuffer.fill('\0');
    const int nResult =
        sysif_GetInterfaceIp(ipBuffer.data(), interfaceName(nInterface).constData());
    ipText = nResult == 0 ? firmwareText(ipBuffer) : NoAddress;
    return ipText;
}

QString MainWindow::interfaceNetmask(int nInterface)
{
    netmaskBuffer.fill('\0');
    const int nResult =
        sysif_GetInterfaceNetmask(netmaskBuffer.data(), interfaceName(nInterface).constData());
    netmaskText = nResult == 0 ? firmwareText(netmaskBuffer) : NoAddress;
    return netmaskText;
}

QString MainWindow::interfaceMode(int nInterface)
{
    const auto call = nInterface == 1 ? sysdb_GetEth1Mode
        : nInterface == 2             ? sysdb_GetEth2Mode
                                      : sysdb_GetEth0Mode;
    modeBuffer.fill('\0');
    modeText = call(modeBuffer.data()) == 0 ? firmwareText(modeBuffer) : QString();
    if (modeText.contains(DhcpModeText)) {
        modeText = QStringLiteral(" (dhcp)");
    }
    return modeText;
}

QString MainWindow::interfaceMac(int nInterface)
{
    const QString mac = interfaceMacAddress(QStringLiteral("eth%1").arg(nInterface));
    macText = mac.isEmpty() ? UnknownMac : mac;
    return macText;
}

// Texts that would be cut off are shown in a smaller font; those of a group stay alike.
void MainWindow::fitTexts(std::initializer_list<QLabel *> labels)
{
    QFont smallest = formFont(*labels.begin());
    for (QLabel *pLabel : labels) {
        int nWidth = primaryScreenSize().width() - 2 * PageMargin;
        if (pLabel->alignment() & Qt::AlignRight) { // beside a button
            nWidth -= pUi->pushButtonConfig->maximumWidth() + ButtonSpacing;
        }
        smallest = fittedFont(smallest, pLabel->text(), nWidth);
    }
    for (QLabel *pLabel : labels) {
        pLabel->setFont(smallest);
    }
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

void MainWindow::openRuntimeLink()
{
    nPlcHandle = rctrl_init_communication();
}

bool MainWindow::readRuntimeStatus()
{
    PlcStatus status{};
    if (rctrl_get_status(nPlcHandle, &status) != 0) {
        return false; // whatever it has left in the record
    }
    plcStatus = status;
    bStatusKnown = true;
    return true;
}

void MainWindow::closeRuntimeLink()
{
    rctrl_exit_communication(nPlcHandle);
    nPlcHandle = 0;
    bStatusKnown = false;
}

void MainWindow::updateAppName()
{
    QString name;
    if (nPlcHandle != 0 && plcStatus.state != PlcStateNoApplication) {
        name = plcStatus.firstAppName().simplified(); // one line
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
    if (nPlcHandle > 0 && rctrl_start_all_applications(nPlcHandle) != 0) {
        pUi->pushButtonStartApp->setEnabled(false); // shows the error icon from now on
    }
}

// Input devices

bool MainWindow::readKeyboardMapping() const
{
    const IniFile settings(SettingsPath);
    if (!settings.problem().isEmpty()) {
        qWarning("%s %s", SettingsPath.data(), qPrintable(settings.problem()));
    }
    return settings.value(QLatin1String("input/kbd_mapping"), QString()).toString()
        == QLatin1String("DE")
        && QFile::exists(devicePath(KeyMapFile));
}

void MainWindow::detectTouchType()
{
    bNoCalibration = readTouchType() != TouchType::Single;
}

void MainWindow::watchInputDevices()
{
    pInputWatcher = new QFileSystemWatcher(this);
    connect(pInputWatcher, &QFileSystemWatcher::directoryChanged, this,
            &MainWindow::inputEventDirChanged);
    releaseKeyboard();
    watchInputFolder();
    inputEventDirChanged(devicePath(InputFolder));
}

// False while there is no folder: it comes with the first device and goes with the last.
bool MainWindow::watchInputFolder()
{
    const QString folder = devicePath(InputFolder);
    return QFileInfo::exists(folder) && pInputWatcher->addPath(folder);
}

void MainWindow::inputEventDirChanged(const QString &path)
{
    const QFileInfoList entries = QDir(path).entryInfoList(
        {QStringLiteral("keyboard*")}, QDir::Files | QDir::System, QDir::Unsorted);
    if (entries.size() > MaxKeyboards || entries.size() == nKeyboardCount) {
        return;
    }
    if (nKeyboardCount > 0) {
        releaseKeyboard();
    }
    for (const QFileInfo &entry : entries) {
        if (entry.isSymLink()) {
            setKeyboard(entry.baseName());
        }
    }
    nKeyboardCount = int(entries.size());
}

void MainWindow::setKeyboard(const QString &deviceName)
{
    QString specification = QStringLiteral("/dev/input/%1:grab=1").arg(deviceName);
    if (bKeyboardMapping) {
        specification += QLatin1String(":keymap=") + KeyMapFile;
    }
    WindowServer *pServer = WindowServer::instance();
    std::unique_ptr<QObject> pKeyboardHandler = WindowServer::createKeyboardHandler(specification);
    if (pServer && pKeyboardHandler) {
        pServer->setKeyboardHandler(std::move(pKeyboardHandler));
    } else {
        qWarning("MainWindow::setKeyboard: found null pointer on pKeyboardHandler and/or "
                 "pQwsServer !\n");
    }
}

void MainWindow::releaseKeyboard()
{
    if (WindowServer *pServer = WindowServer::instance()) {
        pServer->closeKeyboard();
    } else {
        qWarning("MainWindow::releaseKeyboard: found null pointer on pQwsServer !\n");
    }
}

void MainWindow::screenshotTimerEvent()
{
    if (pInputWatcher->directories().isEmpty() && watchInputFolder()) {
        inputEventDirChanged(devicePath(InputFolder));
    }
    const QString request = devicePath(QStringLiteral("/tmp/makeScreenshot"));
    if (QFile::exists(request)) {
        grabScreen().save(devicePath(QStringLiteral("/tmp/screenshot.png")), "PNG");
        QFile::remove(request);
    }
}
