#include "settings/fittedfont.h"

#include <QFontMetrics>
#include <QSize>
#include <QWidget>

namespace {
constexpr int SmallestPoints = 6;
constexpr int SmallestPixels = 8;
} // namespace

QFont fittedFont(const QFont &font, const QString &text, int nWidth)
{
    return fittedFont(font, text, QSize(nWidth, QWIDGETSIZE_MAX));
}

QFont fittedFont(const QFont &font, const QString &text, const QSize &room)
{
    QFont fitted = font;
    const bool bPixels = font.pixelSize() > 0;
    const int nSmallest = bPixels ? SmallestPixels : SmallestPoints;
    int nSize = bPixels ? font.pixelSize() : font.pointSize();
    const auto fits = [&fitted, &text, &room] {
        const QFontMetrics metrics(fitted);
        return metrics.horizontalAdvance(text) <= room.width() && metrics.height() <= room.height();
    };
    while (nSize > nSmallest && !fits()) {
        --nSize;
        if (bPixels) {
            fitted.setPixelSize(nSize);
        } else {
            fitted.setPointSize(nSize);
        }
    }
    return fitted;
}
