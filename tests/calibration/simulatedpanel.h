#pragma once

#include "platform/calibrationpairs.h"

#include <QSize>

#include <cmath>
#include <utility>

/// A resistive touchscreen glued on an 800 x 480 panel in one of the ways it happens: scaled,
/// shifted, slightly skewed, its axes mirrored or exchanged; the picture turned against the panel.
struct SimulatedPanel
{
    bool bExchanged = false;
    bool bMirroredX = false;
    bool bMirroredY = false;
    int nRotation = 0; ///< quarter turns of the picture, counter-clockwise

    static constexpr QSize Size{800, 480};

    QSize picture() const { return nRotation % 2 != 0 ? Size.transposed() : Size; }

    /// What the touchscreen reports for a finger at \a finger on the picture.
    RawPoint touch(QPoint finger) const
    {
        QPoint glass = finger;
        const QPoint mirrored(picture().width() - 1 - finger.x(),
                              picture().height() - 1 - finger.y());
        switch (nRotation) {
        case 1:
            glass = {finger.y(), mirrored.x()};
            break;
        case 2:
            glass = mirrored;
            break;
        case 3:
            glass = {mirrored.y(), finger.x()};
            break;
        }
        double x = 4.3 * glass.x() + 0.02 * glass.y();
        double y = 7.1 * glass.y() - 0.03 * glass.x();
        x = bMirroredX ? 3900 - x : 210 + x;
        y = bMirroredY ? 3800 - y : 330 + y;
        if (bExchanged) {
            std::swap(x, y);
        }
        return {static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))};
    }
};
