#pragma once

#include "tests/support/deviceroot.h"
#include "tests/support/screen.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QTest>
#include <QWidget>

#include <functional>
#include <optional>
#include <utility>

/// A window over the whole screen that notes where it is touched, also by a tap so soon that the
/// tap guard would drop it.
class TouchSheet : public QWidget
{
public:
    TouchSheet()
    {
        setGeometry(QGuiApplication::primaryScreen()->geometry());
        show();
        processAll(); // Qt's own wait sleeps for 10 ms, and there are many of these
        need(windowHandle()->isExposed() || QTest::qWaitForWindowExposed(this),
             "a window to touch");
    }

    /// Where \a tap arrives; -1, -1: nowhere.
    QPoint landing(const std::function<void()> &tap)
    {
        tap();
        return takeTouch().value_or(QPoint(-1, -1));
    }

    /// Where the touches that are on their way arrive; the last press, if there is any.
    std::optional<QPoint> takeTouch()
    {
        qApp->installEventFilter(this); // in front of the tap guard, which may be newer than this
        processAll();
        return std::exchange(touched, std::nullopt);
    }

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (receiver == windowHandle()
            && (event->type() == QEvent::MouseButtonPress
                || event->type() == QEvent::MouseButtonDblClick)) {
            touched = static_cast<QMouseEvent *>(event)->globalPosition().toPoint();
        }
        return false;
    }

private:
    std::optional<QPoint> touched;
};
