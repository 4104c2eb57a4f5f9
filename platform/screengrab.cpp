#include "platform/screengrab.h"

#include "platform/windowstack.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace {

QPixmap paintWindows(const QRect &screen)
{
    const QWidgetList windows = visibleWindows();
    QPixmap picture(screen.size());
    picture.fill(Qt::black);
    QPainter painter(&picture);
    for (QWidget *pWindow : windows) {
        painter.drawPixmap(pWindow->geometry().topLeft() - screen.topLeft(), pWindow->grab());
    }
    return picture;
}

} // namespace

QPixmap grabScreen()
{
    QScreen *pScreen = QGuiApplication::primaryScreen();
    if (!pScreen) {
        return {};
    }
    const QPixmap picture = pScreen->grabWindow(0);
    return picture.isNull() ? paintWindows(pScreen->geometry()) : picture;
}
