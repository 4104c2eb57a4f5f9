#include "input/qveltalineedit.h"

#include <QMouseEvent>
#include <QPainter>

#include <chrono>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds BlinkInterval = 500ms;
constexpr int CursorPenWidth = 2;
constexpr int CursorOvershoot = 2;
} // namespace

QVeltaLineEdit::QVeltaLineEdit(QWidget *parent) : QLineEdit(parent)
{
    blinkTimer.setObjectName(QStringLiteral("blinkTimer"));
    connect(&blinkTimer, &QTimer::timeout, this, &QVeltaLineEdit::timerToggle);
    blinkTimer.start(BlinkInterval);
    connect(this, &QLineEdit::cursorPositionChanged, this, &QVeltaLineEdit::cursorMoved);
    setFocusPolicy(Qt::WheelFocus);
    setDragEnabled(false);
    setContextMenuPolicy(Qt::NoContextMenu); // has an entry to select all
    setAttribute(Qt::WA_AcceptTouchEvents);
    home(false);
}

void QVeltaLineEdit::timerToggle()
{
    bCursorVisible = !bCursorVisible;
    update();
}

void QVeltaLineEdit::cursorMoved(int, int)
{
    // cursorRect() lays the text out and may report a move while the cursor is being drawn.
    if (bPainting) {
        return;
    }
    bCursorVisible = true;
    blinkTimer.start(BlinkInterval);
    // Without focus the base class repaints nothing for a mere move.
    update();
}

void QVeltaLineEdit::paintEvent(QPaintEvent *event)
{
    QLineEdit::paintEvent(event);
    if (!bCursorVisible) {
        return;
    }
    bPainting = true;
    const QRect cursor = cursorRect();
    const int x = cursor.left() + cursor.width() / 2;
    QPainter painter(this);
    painter.setPen(QPen(Qt::black, CursorPenWidth, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.drawLine(x, cursor.top() - CursorOvershoot, x, cursor.bottom() + 1);
    bPainting = false;
}

void QVeltaLineEdit::mousePressEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() == Qt::LeftButton) {
        setCursorPosition(cursorPositionAt(event->position().toPoint()));
    }
}

void QVeltaLineEdit::mouseMoveEvent(QMouseEvent *event)
{
    event->accept();
}

// The base class would insert a desktop's selection at the middle button's release.
void QVeltaLineEdit::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
}

void QVeltaLineEdit::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event);
}
