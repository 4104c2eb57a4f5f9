#pragma once

#include <QString>

#include <optional>

/// Largest raw values that a touchscreen reports, 0 where it does not tell.
struct TouchAxes
{
    quint16 nMaximumX = 0;
    quint16 nMaximumY = 0;
};

/// Asks the input device \a path for its axes. Empty when it cannot be opened.
std::optional<TouchAxes> readTouchAxes(const QString &path);
