#pragma once

#include <QLineEdit>
#include <QTimer>

/// A line edit that draws its own blinking text cursor, with or without keyboard focus: the display
/// of the on-screen keyboard never has the focus, and the operator must see where the next
/// character goes. A finger places the cursor but
/// selects nothing, however it moves: the next key would replace what is selected. GUI thread only.
class QVeltaLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit QVeltaLineEdit(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private Q_SLOTS:
    void timerToggle();
    /// Shows the cursor solid for a full blink interval after each move.
    void cursorMoved(int oldPosition, int newPosition);

private:
    QTimer blinkTimer{this};
    bool bCursorVisible = true;
    bool bPainting = false;
};
