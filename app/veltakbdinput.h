#pragma once

#include <QPointer>
#include <QWidget>

class QKeyEvent;

/// Translates the letters that a panel's small keypad sends into navigation keys: S is Tab, T is
/// Backtab, R is Backspace. A widget without a window of its own that is never shown.
class VeltaKbdInput : public QWidget
{
    Q_OBJECT

public:
    /// \a target receives the translated keys; it is not owned and may be null.
    explicit VeltaKbdInput(QWidget *target);

    /// Sends the translated key, pressed and released, before it returns. Returns true and accepts
    /// \a event when it did, else false and ignores it.
    bool handleKey(QKeyEvent *event);

private:
    QPointer<QWidget> pTarget;
};
