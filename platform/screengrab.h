#pragma once

#include <QPixmap>

/// The picture of the primary screen, overlays and message boxes included. Where the platform
/// cannot read the screen back, the visible windows are painted into a picture of its size.
QPixmap grabScreen();
