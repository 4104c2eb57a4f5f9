#include "platform/windowstack.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace {

int stackingLevel(const QWidget &window)
{
    return (window.windowFlags() & Qt::WindowStaysOnTopHint ? 1 : 0) + (window.isModal() ? 2 : 0);
}

} // namespace

QList<QWidget *> visibleWindows()
{
    QWidgetList windows = QApplication::topLevelWidgets();
    windows.removeIf([](const QWidget *pWindow) { return !pWindow->isVisible(); });
    std::stable_sort(windows.begin(), windows.end(),
                     [](const QWidget *pLeft, const QWidget *pRight) {
                         return stackingLevel(*pLeft) < stackingLevel(*pRight);
                     });
    return windows;
}
