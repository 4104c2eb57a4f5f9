#pragma once

#include <QList>
#include <QSize>
#include <Qt>

/// Gives the offscreen platform one screen of \a size pixels at \a dpi, at once. Windows that are
/// open keep their geometry: create them afterwards.
void setScreen(const QSize &size, int dpi = 96);

/// Puts a key, pressed and released, into the queue of the window system.
void queueKey(Qt::Key key);

/// The 24 screen sizes that panels are built with.
const QList<QSize> &panelScreenSizes();
