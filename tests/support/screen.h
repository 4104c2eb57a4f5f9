#pragma once

#include <QList>
#include <QSize>

/// Gives the offscreen platform one screen of \a size pixels at \a dpi, at once. Windows that are
/// open keep their geometry: create them afterwards.
void setScreen(const QSize &size, int dpi = 96);

/// The 24 screen sizes that panels are built with.
const QList<QSize> &panelScreenSizes();
