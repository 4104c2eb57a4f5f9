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

int fontSize(const QFont &font)
{
    return font.pixelSize() > 0 ? font.pixelSize() : font.pointSize();
}

void setFontSize(QFont *font, int size)
{
    if (font->pixelSize() > 0) {
        font->setPixelSize(size);
    } else {
        font->setPointSize(size);
    }
}

QFont fittedFont(const QFont &font, const QString &text, int width)
{
    return fittedFont(font, text, QSize(width, QWIDGETSIZE_MAX));
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
    const int nSmallest = font.pixelSize() > 0 ? SmallestPixels : smallestPoints();
    int nSize = fontSize(font);
    while (!fits(fitted) && nSize > nSmallest) {
        setFontSize(&fitted, --nSize);
    }
    return fitted;
}
