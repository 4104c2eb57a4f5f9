#include "app/focusmark.h"

#include <QAbstractButton>
#include <QFocusEvent>
#include <QPainter>

namespace {
constexpr int PenWidth = 3; // pixels: to be seen on a dense screen, too
} // namespace

FocusMark::FocusMark(QAbstractButton *button, bool onlyMarked)
    : QWidget(button), bOnlyMarked(onlyMarked)
{
    setObjectName(QStringLiteral("focusMark"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    button->installEventFilter(this);
}

bool FocusMark::eventFilter(QObject *watched, QEvent *event)
{
    auto *pButton = static_cast<QAbstractButton *>(watched);
    switch (event->type()) {
    case QEvent::FocusIn: {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        setGeometry(pButton->rect());
        setVisible(reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason);
        break;
    }
    case QEvent::FocusOut:
        hide();
        break;
    case QEvent::Resize:
        setGeometry(pButton->rect());
        break;
    case QEvent::KeyPress:
        if (bOnlyMarked && !isVisible()) {
            event->ignore();
            return true;
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void FocusMark::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QPen pen(palette().color(QPalette::Highlight), PenWidth);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    const int nInset = PenWidth / 2;
    painter.drawRect(rect().adjusted(nInset, nInset, -nInset - 1, -nInset - 1));
}
