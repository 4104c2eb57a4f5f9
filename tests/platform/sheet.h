#pragma once

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
        const auto type = pEvent->type();
        const char *pWhat = type == QEvent::MouseMove                                 ? "move"
            : type == QEvent::MouseButtonRelease                                      ? "release"
            : type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick ? "press"
                                                                                      : nullptr;
        if (!pWhat) {
            return QWidget::event(pEvent);
        }
        const auto *pMouse = static_cast<QMouseEvent *>(pEvent);
        // Moves without a button are Qt's own, in front of a press at another place.
        if (type != QEvent::MouseMove || pMouse->buttons() != Qt::NoButton) {
            const QPoint at = pMouse->globalPosition().toPoint();
            log += QStringLiteral("%1 %2,%3").arg(QLatin1String(pWhat)).arg(at.x()).arg(at.y());
        }
        return true;
    }
};
