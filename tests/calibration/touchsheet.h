#pragma once

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWidget>

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
