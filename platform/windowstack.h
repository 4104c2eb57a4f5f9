#pragma once

#include <QList>
#include <QObject>

class QWidget;

/// The order of the program's windows, and which of them has the keys.
///
/// The embedded platforms stack windows in the order of their last show or raise, whatever their
/// kind; neither Qt nor a window system without a window manager tells that order or hands the keys
/// to another window when the active one hides. So each show, raise and hide is recorded here, and
/// after each of them the topmost window that may have the keys gets them: what the operator sees
/// on top is what keys work. Windows are never lowered: that would count as a raise.
///
/// One object per process, child of the application and installed as its event filter; GUI thread.
class WindowStack : public QObject
{
    Q_OBJECT

public:
    explicit WindowStack(QObject *application);
    ~WindowStack() override;

    /// Null where there is none.
    static WindowStack *instance();

    bool eventFilter(QObject *receiver, QEvent *event) override;

    /// Visible windows from the lowest to the topmost.
    const QList<QWidget *> &windows() const { return stack; }

Q_SIGNALS:
    /// A window is about to be shown where none was.
    void firstShown();
    /// The last visible window has been hidden.
    void lastHidden();

private:
    void activateTop() const;
    void activateTopSoon();

    QList<QWidget *> stack; ///< visible ones, the topmost last
    bool bActivationDue = false;
};

/// The program's visible windows from the lowest to the topmost. Empty where there is no
/// WindowStack.
QList<QWidget *> visibleWindows();

/// Puts \a background below all other windows of the program, which keep their order.
void keepBelowOthers(QWidget *background);
