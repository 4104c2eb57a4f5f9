#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>
#include <Qt>

/// Gives the offscreen platform one screen of \a size pixels at \a dpi, at once. Windows that are
/// open keep their geometry: create them afterwards.
void setScreen(const QSize &size, int dpi = 96);

/// Puts a key, pressed and released, into the queue of the window system.
void queueKey(Qt::Key key);

/// Delivers what waits in the queue of the window system, and nothing else: no timer fires.
void deliverKeys();

/// All that is posted or waits in the queue of the window system, and what comes of it.
void processAll();

/// Waits until what has just come or gone on the screen takes touches.
void waitOutDoubleTap();

/// How many files that match the \a pattern the process \a nPid, or this one, has open.
qsizetype openDescriptors(const QString &pattern, qint64 nPid = 0);

/// As "800x480".
inline QByteArray nameOf(QSize size)
{
    return QByteArray::number(size.width()) + 'x' + QByteArray::number(size.height());
}

/// A screen that panels are built with, and the densest resolution that is usual for its size.
struct PanelScreen
{
    QSize size;
    int nDpi;
};
/// All 24, by width.
const QList<PanelScreen> &panelScreens();
QList<QSize> panelScreenSizes();
