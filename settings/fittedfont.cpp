#include "settings/fittedfont.h"

#include <QFontMetrics>

namespace {
constexpr int SmallestPoints = 6;
constexpr int SmallestPixels = 8;
} // namespace

QFont fittedFont(const QFont &font, const QString &text, int nWidth)
{
    QFont fitted = font;
    const bool bPixels = font.pixelSize() > 0;
    const int nSmallest = bPixels ? SmallestPixels : SmallestPoints;
    int nSize = bPixels ? font.pixelSize() : font.pointSize();
    while (nSize > nSmallest && QFontMetrics(fitted).horizontalAdvance(text) > nWidth) {
        --nSize;
        if (bPixels) {
            fitted.setPixelSize(nSize);
        } else {
            fitted.setPointSize(nSize);
        }
    }
    return fitted;
}
