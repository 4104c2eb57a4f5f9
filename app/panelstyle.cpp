#include "app/panelstyle.h"

#include <QAbstractButton>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStyleOptionProgressBar>

#include <algorithm>

namespace {

constexpr int BusySteps = 12; // values from one end of the bar to the other
constexpr int BusyChunkDivisor = 4; // the moving piece takes this part of the bar
constexpr qsizetype MostPalettes = 8;

// Where the piece stands: it goes to the right end and back.
QRect busyChunk(const QRect &bar, int value)
{
    const int nPhase = qMax(0, value) % (2 * BusySteps);
    const int nStep = nPhase <= BusySteps ? nPhase : 2 * BusySteps - nPhase;
    const int nWidth = qMax(1, bar.width() / BusyChunkDivisor);
    const int nLeft = bar.left() + (bar.width() - nWidth) * nStep / BusySteps;
    return {nLeft, bar.top(), nWidth, bar.height()};
}

} // namespace

PanelStyle::PanelStyle() : QProxyStyle(QStringLiteral("Fusion"))
{ }

void PanelStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QAbstractButton *>(widget)) {
        widget->setAttribute(Qt::WA_Hover, false); // nothing to repaint
    }
}

void PanelStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                               QPainter *painter, const QWidget *widget) const
{
    const auto *pButton = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (!pButton || element != PE_PanelButtonCommand) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    QStyleOptionButton button(*pButton);
    button.palette = sharedPalette(pButton->palette);
    button.state &= ~State_MouseOver; // after a touch it would mark a password's last digit
    QProxyStyle::drawPrimitive(element, &button, painter, widget);
}

// The palette of the same colours that was seen first. Fusion keeps the picture of a button under
// the number of its palette, of which every widget has its own: no opening of a dialog would find
// the pictures of an earlier one, and the cache never forgets their names.
QPalette PanelStyle::sharedPalette(const QPalette &palette) const
{
    auto it = std::find(palettes.cbegin(), palettes.cend(), palette);
    if (it == palettes.cend()) {
        if (palettes.size() == MostPalettes) {
            palettes.removeFirst();
        }
        it = palettes.insert(palettes.cend(), palette);
    }
    QPalette shared = *it;
    shared.setCurrentColorGroup(palette.currentColorGroup()); // equal palettes may differ in it
    return shared;
}

void PanelStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                             const QWidget *widget) const
{
    const auto *pBar = qstyleoption_cast<const QStyleOptionProgressBar *>(option);
    const bool bBusy = pBar && pBar->minimum == 0 && pBar->maximum == 0;
    if (bBusy && element == CE_ProgressBarGroove) {
        // Plain rectangles: Fusion's blended lines keep several threads at work for each frame.
        painter->fillRect(pBar->rect, pBar->palette.color(QPalette::Dark));
        painter->fillRect(pBar->rect.adjusted(1, 1, -1, -1), pBar->palette.color(QPalette::Base));
    } else if (bBusy && element == CE_ProgressBarContents) {
        painter->fillRect(busyChunk(pBar->rect.adjusted(2, 2, -2, -2), pBar->progress),
                          pBar->palette.color(QPalette::Highlight));
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}
