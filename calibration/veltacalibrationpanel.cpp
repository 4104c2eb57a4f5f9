#include "calibration/veltacalibrationpanel.h"

#include "infobox/veltainfobox.h"
#include "platform/touchscreenpaths.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"
#include "settings/fittedfont.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <array>

namespace {

constexpr std::array<const char *, CalibrationRecord::PointCount> PointNames{
    "Top left", "Top right", "Bot right", "Bot left", CenterPointName};

constexpr int CrossPenWidth = 2;
/// The twelve lines of the crosshair, relative to its centre.
constexpr std::array<QLine, 12> CrossLines{{
    {-10, 0, -2, 0},
    {2, 0, 10, 0},
    {0, -10, 0, -2},
    {0, 2, 0, 10},
    {-6, -9, -9, -9},
    {-9, -8, -9, -6},
    {-9, 6, -9, 9},
    {-8, 9, -6, 9},
    {6, 9, 9, 9},
    {9, 8, 9, 6},
    {9, -6, 9, -9},
    {8, -9, 6, -9},
}};

/// Margins in pixels of the text where it ends above the upper crosshairs, and where it reaches
/// further down and stays between them.
constexpr int MarginAboveCrosses = 4;
constexpr int MarginBesideCrosses = 64;
/// Height of a line in pixels with which the text ends above the upper crosshairs.
constexpr int LineAboveCrosses = 13;

void setPointerSuspended(bool bSuspended)
{
    if (WindowServer *pServer = WindowServer::instance()) {
        if (bSuspended) {
            pServer->suspendPointer();
        } else {
            pServer->resumePointer();
        }
    }
}

} // namespace

VeltaCalibrationPanel::VeltaCalibrationPanel(QWidget *parent)
    : QWidget(parent), thread(this), lines{tr("Touch crosshair a few seconds to calibrate"),
                                           tr("screen colors: touch pressed (yellow)"),
                                           tr("touch released (green = good, red = bad)")}
{
    connect(&thread, &VeltaCalibrationThread::updateScreenpos, this,
            &VeltaCalibrationPanel::updateScreen, Qt::QueuedConnection);
    connect(&thread, &VeltaCalibrationThread::updateCaldata, this,
            &VeltaCalibrationPanel::updateCData, Qt::QueuedConnection);
    connect(&thread, &VeltaCalibrationThread::errorCalThread, this,
            &VeltaCalibrationPanel::CalThreadError, Qt::QueuedConnection);
    connect(&thread, &QThread::finished, this, &VeltaCalibrationPanel::CalThreadControl,
            Qt::QueuedConnection);
}

VeltaCalibrationPanel::~VeltaCalibrationPanel()
{
    cancel();
}

short VeltaCalibrationPanel::startCalibration()
{
    cancel();
    bRunning = true;
    nPoints = nCrossX = nCrossY = 0;
    data.releaseBackup();
    screenColor = Qt::black;

    const QSize size = QGuiApplication::primaryScreen()->geometry().size();
    data.nScreenWidth = size.width();
    data.nScreenHeight = size.height();
    data.backupCalibration();
    resize(size);

    setPointerSuspended(true);
    const short code = data.openTouchscreen();
    if (code != 0) {
        bRunning = false;
        setPointerSuspended(false);
        return code;
    }
    startPoint();
    return 0;
}

void VeltaCalibrationPanel::cancel()
{
    stopSampling();
    if (bRunning) {
        bRunning = false;
        data.closeTouchscreen();
        setPointerSuspended(false);
    }
}

void VeltaCalibrationPanel::startPoint()
{
    bPointMeasured = false;
    const QPoint target = crosshairTargets({data.nScreenWidth, data.nScreenHeight})[nPoints];
    thread.setup(data.pTouchscreen, &sampled, nPoints, target.x(), target.y(),
                 QLatin1String(PointNames[nPoints]));
    thread.start();
}

/// Joins the thread. What it has signalled before belongs to a run that is over: dropped.
void VeltaCalibrationPanel::stopSampling()
{
    thread.stop();
    QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
}

void VeltaCalibrationPanel::CalThreadControl()
{
    if (!bRunning || !thread.isFinished()) {
        return;
    }
    thread.join();
    if (!bPointMeasured) {
        // It has ended without a word, so something keeps it from waiting for touches.
        CalThreadError(ERR_TS_READ_PRESS);
        return;
    }
    if (++nPoints < CalibrationRecord::PointCount) {
        startPoint();
        return;
    }
    bRunning = false;
    // No one samples any more, and a box that appears now needs the pointer.
    data.shareTouchscreen();
    setPointerSuspended(false);
    bApplying = true;
    reportFailure(data.applyCalibration(data.points), pointerCalibrationName());
    reportFailure(data.closeTouchscreen(), QStringLiteral("closeTouchscreen"));
    bApplying = false;
    Q_EMIT CalibFinished();
}

void VeltaCalibrationPanel::reportFailure(short code, const QString &text)
{
    if (code != 0 && code != TouchCalibrationData::RemountFailed) {
        const VeltaInfoBox box(code, text, CalibrationBoxSeconds, this, true, true);
    }
}

void VeltaCalibrationPanel::CalThreadError(short nCode)
{
    qDebug("CalibrationPanel CalThreadError\n");
    cancel();
    Q_EMIT CalibError(nCode);
}

void VeltaCalibrationPanel::updateScreen(int x, int y, QColor eBrush)
{
    nCrossX = x;
    nCrossY = y;
    screenColor = eBrush;
    update();
}

void VeltaCalibrationPanel::updateCData(void *pCalData)
{
    thread.join();
    data.points = *static_cast<const CalibrationRecord *>(pCalData);
    bPointMeasured = true;
}

/// The widget's font, smaller where the lines would be cut off or run through a crosshair.
QFont VeltaCalibrationPanel::fittingFont() const
{
    const QFontMetrics metrics = fontMetrics();
    const QString widest = *std::ranges::max_element(
        lines, {}, [&metrics](const QString &line) { return metrics.horizontalAdvance(line); });
    const QFont above =
        fittedFont(font(), widest, QSize(width() - 2 * MarginAboveCrosses, LineAboveCrosses));
    const QFont beside = fittedFont(font(), widest, width() - 2 * MarginBesideCrosses);
    return QFontMetrics(above).height() > QFontMetrics(beside).height() ? above : beside;
}

void VeltaCalibrationPanel::paintEvent(QPaintEvent * /*event*/)
{
    // While the points are being handed over a box may be open in front of this.
    if (!bRunning && !bApplying) {
        return;
    }
    QPainter painter(this);
    painter.fillRect(rect(), screenColor == QColor(Qt::black) ? QColor(Qt::white) : screenColor);

    painter.setPen(QPen(Qt::black, CrossPenWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.translate(nCrossX, nCrossY);
    painter.drawLines(CrossLines.data(), static_cast<int>(CrossLines.size()));
    painter.translate(-nCrossX, -nCrossY);

    painter.setFont(fittingFont());
    const int height = painter.fontMetrics().height();
    for (int k = 0; k < static_cast<int>(lines.size()); ++k) {
        painter.drawText(QRect(0, k * height, width(), height),
                         Qt::AlignHCenter | Qt::TextSingleLine, lines[static_cast<std::size_t>(k)]);
    }
}
