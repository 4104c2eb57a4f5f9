#include "simulator/touchmapping.h"

#include <QFile>
#include <QPoint>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

const QString MappingFile = QStringLiteral("/simulator/touch.conf");
constexpr int Scale = 65536;
constexpr int LargestRaw = 65535;

// A 12-bit resistive panel, glued on a little askew: it never uses its whole range.
constexpr double Span = 3650;
constexpr double OffsetX = 215;
constexpr double OffsetY = 190;
constexpr double SkewX = 45;
constexpr double SkewY = -30;
// The share of the range that a coarse one uses.
constexpr double CoarseShare = 0.1;

} // namespace

const QStringList &TouchMapping::variants()
{
    static const QStringList names{QStringLiteral("skewed"),   QStringLiteral("plain"),
                                   QStringLiteral("coarse"),   QStringLiteral("swapped"),
                                   QStringLiteral("mirror-x"), QStringLiteral("mirror-y")};
    return names;
}

TouchMapping TouchMapping::make(const QStringList &chosen, const QSize &screenSize)
{
    TouchMapping mapping;
    mapping.screen = screenSize;
    const double width = screenSize.width() - 1;
    const double height = screenSize.height() - 1;
    auto &[rawX, rawY] = mapping.axes;
    if (chosen.contains(QStringLiteral("plain"))) {
        rawX.nFactorX = 1;
        rawY.nFactorY = 1;
    } else {
        const double share = chosen.contains(QStringLiteral("coarse")) ? CoarseShare : 1.0;
        rawX = {Span * share / width, SkewX * share / height, OffsetX};
        rawY = {SkewY * share / width, Span * share / height, OffsetY};
    }
    for (Axis &axis : mapping.axes) {
        if (chosen.contains(QStringLiteral("mirror-x"))) {
            axis.nOffset += axis.nFactorX * width;
            axis.nFactorX = -axis.nFactorX;
        }
        if (chosen.contains(QStringLiteral("mirror-y"))) {
            axis.nOffset += axis.nFactorY * height;
            axis.nFactorY = -axis.nFactorY;
        }
    }
    if (chosen.contains(QStringLiteral("swapped"))) {
        std::swap(rawX, rawY);
    }
    return mapping;
}

std::optional<TouchMapping> TouchMapping::load(const DeviceFolder &device)
{
    QFile file(device.path(MappingFile));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QList<double> numbers;
    for (const QByteArray &word : file.readAll().simplified().split(' ')) {
        bool ok = false;
        numbers.append(word.toDouble(&ok));
        if (!ok) {
            return std::nullopt;
        }
    }
    if (numbers.size() != 8) {
        return std::nullopt;
    }
    TouchMapping mapping;
    mapping.screen = QSize(static_cast<int>(numbers[0]), static_cast<int>(numbers[1]));
    for (qsizetype i = 0; i < 2; ++i) {
        mapping.axes[i] = {numbers[3 * i + 2], numbers[3 * i + 3], numbers[3 * i + 4]};
    }
    return mapping;
}

bool TouchMapping::save(const DeviceFolder &device) const
{
    QByteArray text =
        QByteArray::number(screen.width()) + ' ' + QByteArray::number(screen.height()) + '\n';
    for (const Axis &axis : axes) {
        for (const double number : {axis.nFactorX, axis.nFactorY, axis.nOffset}) {
            text += QByteArray::number(number, 'g', 17) + ' ';
        }
        text += '\n';
    }
    return device.write(MappingFile, text);
}

RawPoint TouchMapping::toRaw(const QPoint &position) const
{
    const auto raw = [&](const Axis &axis) {
        const double value =
            axis.nFactorX * position.x() + axis.nFactorY * position.y() + axis.nOffset;
        return std::clamp(static_cast<int>(std::lround(value)), 0, LargestRaw);
    };
    return {raw(axes[0]), raw(axes[1])};
}

QByteArray TouchMapping::pointerCalibration() const
{
    const Axis &rawX = axes[0];
    const Axis &rawY = axes[1];
    const double determinant = rawX.nFactorX * rawY.nFactorY - rawX.nFactorY * rawY.nFactorX;
    const auto row = [&](double a, double b) {
        const double offset = -(a * rawX.nOffset + b * rawY.nOffset) / determinant + 0.5;
        QByteArray text;
        for (const double value : {a / determinant, b / determinant, offset}) {
            text += QByteArray::number(std::llround(value * Scale)) + ' ';
        }
        return text;
    };
    return row(rawY.nFactorY, -rawX.nFactorY) + row(-rawY.nFactorX, rawX.nFactorX)
        + QByteArray::number(Scale) + '\n';
}
