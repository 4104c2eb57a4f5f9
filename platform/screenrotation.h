#pragma once

#include <QPoint>
#include <QSize>
#include <QString>

/// \file
/// The screen's transformation: how the picture is turned against the panel behind it, in quarter
/// turns counter-clockwise.

/// So many make a whole turn.
inline constexpr int QuarterTurns = 4;
inline constexpr int QuarterTurnDegrees = 90;

/// Quarter turns, 0 to 3, that the platform argument (-platform, else QT_QPA_PLATFORM) asks for
/// with its rotation option, in degrees or in quarter turns. Valid once there is a QGuiApplication.
int screenRotation();

/// Position on the picture, which is \a screenSize large, of a position on the unrotated panel.
QPoint panelToScreen(QPoint position, int quarterTurns, QSize screenSize);
