#include "calibration/veltacalibrationpanel.h"

#include "calibration/calibrationrun.h"
#include "settings/fittedfont.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <array>

namespace {

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

/// While the points are being handed over a box may be open in front of the panel.
bool isShown(CalibrationState state)
{
    return state == CalibrationState::Sampling || state == CalibrationState::Applying
        || state == CalibrationState::ApplyingLeft;
}

} // namespace

VeltaCalibrationPanel::VeltaCalibrationPanel(CalibrationRun *pOwnRun, QWidget *parent)
    : QWidget(parent), pRun(pOwnRun), lines{tr("Touch crosshair a few seconds to calibrate"),
                                            tr("screen colors: touch pressed (yellow)"),
                                            tr("touch released (green = good, red = bad)")}
{
    const VeltaCalibrationThread *pThread = pRun->samplingThread();
    connect(pThread, &VeltaCalibrationThread::updateScreenpos, this,
            &VeltaCalibrationPanel::updateScreen, Qt::QueuedConnection);
    connect(pThread, &VeltaCalibrationThread::updateCaldata, this,
            &VeltaCalibrationPanel::updateCData, Qt::QueuedConnection);
    connect(pThread, &VeltaCalibrationThread::errorCalThread, this,
            &VeltaCalibrationPanel::CalThreadError, Qt::QueuedConnection);
    connect(pThread, &QThread::finished, this, &VeltaCalibrationPanel::CalThreadControl,
            Qt::QueuedConnection);
    connect(pRun, &CalibrationRun::begun, this, &VeltaCalibrationPanel::clear);
    connect(pRun, &CalibrationRun::samplingStopped, this, &VeltaCalibrationPanel::dropSignals);
    connect(pRun, &CalibrationRun::applied, this, &VeltaCalibrationPanel::CalibFinished);
    connect(pRun, &CalibrationRun::failed, this, &VeltaCalibrationPanel::CalibError);
}

short VeltaCalibrationPanel::startCalibration()
{
    return pRun->start();
}

void VeltaCalibrationPanel::clear()
{
    updateScreen(0, 0, Qt::black);
    resize(QGuiApplication::primaryScreen()->geometry().size());
}

/// What the thread has signalled before belongs to a run that is over.
void VeltaCalibrationPanel::dropSignals()
{
    QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
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
    pRun->takePoint(*static_cast<const CalibrationRecord *>(pCalData));
}

void VeltaCalibrationPanel::CalThreadControl()
{
    pRun->endPoint();
}

void VeltaCalibrationPanel::CalThreadError(short nCode)
{
    pRun->fail(nCode);
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
    if (!isShown(pRun->state())) {
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
