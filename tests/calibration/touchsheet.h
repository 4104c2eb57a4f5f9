#pragma once

#include "platform/tapguard.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QTest>
#include <QWidget>

#include <functional>
#include <optional>
#include <utility>

/// A window over the whole screen that notes where it is touched.
class TouchSheet : public QWidget
{
public:
    TouchSheet()
    {
        setGeometry(QGuiApplication::primaryScreen()->geometry());
        show();
        if (!QTest::qWaitForWindowExposed(this)) {
            qFatal("no window to touch");
        }
    }

    /// Waits until what has just come or gone on the screen takes touches.
    static void waitOutDoubleTap() { QTest::qWait(int(TapGuard::Delay.count()) + 20); }

    /// Where \a tap arrives; -1, -1: nowhere.
    QPoint landing(const std::function<void()> &tap)
    {
        tap();
        std::optional<QPoint> position = takeTouch();
        if (!position) {
            waitOutDoubleTap();
            tap();
            position = takeTouch();
        }
        return position.value_or(QPoint(-1, -1));
    }

    /// Where the touches that are on their way arrive; the last press, if there is any.
    std::optional<QPoint> takeTouch()
    {
        for (int i = 0; i < 10; ++i) {
            QCoreApplication::processEvents();
        }
        return std::exchange(touched, std::nullopt);
    }

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        touched = event->globalPosition().toPoint();
    }
    void mouseDoubleClickEvent(QMouseEvent *event) override { mousePressEvent(event); }

private:
    std::optional<QPoint> touched;
};
