#include "settings/fittedfont.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>
#include <QSize>
#include <QWidget>

#include <algorithm>

namespace {
constexpr int SmallestPixels = 8;
} // namespace

int smallestPoints()
{
    constexpr double PointsPerInch = 72;
    const double dDpi = QGuiApplication::primaryScreen()->logicalDotsPerInchY();
    return std::max(1, qRound(SmallestPixels * PointsPerInch / dDpi));
}

QFont fittedFont(const QFont &font, const QString &text, int nWidth)
{
    return fittedFont(font, text, QSize(nWidth, QWIDGETSIZE_MAX));
}

QFont fittedFont(const QFont &font, const QString &text, const QSize &room)
{
    return fittedFont(font, [&text, &room](const QFont &fitted) {
        const QFontMetrics metrics(fitted);
        return metrics.horizontalAdvance(text) <= room.width() && metrics.height() <= room.height();
    });
}

QFont fittedFont(const QFont &font, const std::function<bool(const QFont &)> &fits)
{
    QFont fitted = font;
    const bool bPixels = font.pixelSize() > 0;
    const int nSmallest = bPixels ? SmallestPixels : smallestPoints();
    int nSize = bPixels ? font.pixelSize() : font.pointSize();
    while (!fits(fitted) && nSize > nSmallest) {
        --nSize;
        if (bPixels) {
            fitted.setPixelSize(nSize);
        } else {
            fitted.setPointSize(nSize);
        }
    }
    return fitted;
}
