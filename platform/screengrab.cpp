#include "platform/screengrab.h"

#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QWidget>

namespace {

// Painted from the lowest to the topmost: plain windows, those that stay on top, modal ones.
int stackingLevel(const QWidget &window)
{
    return (window.windowFlags() & Qt::WindowStaysOnTopHint ? 1 : 0) + (window.isModal() ? 2 : 0);
}

QPixmap paintWindows(const QRect &screen)
{
    QWidgetList windows = QApplication::topLevelWidgets();
    windows.removeIf([](const QWidget *pWindow) { return !pWindow->isVisible(); });
    std::stable_sort(windows.begin(), windows.end(),
                     [](const QWidget *pLeft, const QWidget *pRight) {
                         return stackingLevel(*pLeft) < stackingLevel(*pRight);
                     });
    QPixmap picture(screen.size());
    picture.fill(Qt::black);
    QPainter painter(&picture);
    for (QWidget *pWindow : std::as_const(windows)) {
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
