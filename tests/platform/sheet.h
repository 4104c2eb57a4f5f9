#pragma once

#include <QMap>
#include <QMouseEvent>
#include <QStringList>
#include <QWidget>

#include <utility>

/// A window that writes down what the pointer does in it.
class Sheet : public QWidget
{
public:
    explicit Sheet(const QRect &place = {0, 0, 800, 480})
    {
        setWindowFlag(Qt::FramelessWindowHint);
        setGeometry(place);
    }
    QStringList take() { return std::exchange(log, {}); }
    QStringList log; ///< as "press 100,200"

protected:
    bool event(QEvent *pEvent) override
    {
        static const QMap<QEvent::Type, QString> names{{QEvent::MouseButtonPress, "press"},
                                                       {QEvent::MouseButtonDblClick, "press"},
                                                       {QEvent::MouseMove, "move"},
                                                       {QEvent::MouseButtonRelease, "release"}};
        const auto type = pEvent->type();
        if (!names.contains(type)) {
            return QWidget::event(pEvent);
        }
        const auto *pMouse = static_cast<QMouseEvent *>(pEvent);
        // Moves without a button are Qt's own, in front of a press at another place.
        if (type != QEvent::MouseMove || pMouse->buttons() != Qt::NoButton) {
            const QPoint at = pMouse->globalPosition().toPoint();
            log += QStringLiteral("%1 %2,%3").arg(names[type]).arg(at.x()).arg(at.y());
        }
        return true;
    }
};
