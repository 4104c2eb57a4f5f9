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
    /// \a pTarget receives the translated keys; it is not owned and may be null.
    explicit VeltaKbdInput(QWidget *pTarget);

    /// Sends the translated key, pressed and released, before it returns. Returns true and accepts
    /// \a pEvent when it did, else false and ignores it.
    bool handleKey(QKeyEvent *pEvent);

private:
    QPointer<QWidget> pTarget;
};
