#pragma once

#include <QLineEdit>
#include <QPointer>
#include <QWidget>

class QLabel;
class VeltaInputPanel;

/// Binds an on-screen keyboard to one line edit: a full-screen window that shows the line edit's
/// text in the keyboard's display and writes the result back on OK.
///
/// The line edit's What's-This text names the input mode. Between uses the window is hidden, and
/// while it is open nothing below it receives touches or keys. It has no parent and does not own
/// the line edit, which may be destroyed first: OK then counts as Cancel. It may be destroyed by
/// whoever receives one of its signals. GUI thread only.
class VeltaInputPanelContext : public QWidget
{
    Q_OBJECT

public:
    /// \a label gives the keyboard its caption; without \a target or \a label there is no keyboard
    /// and showPanel() does nothing. A password mode counts down from \a timeoutSeconds, unless
    /// that is 0, and then cancels. The window covers the whole screen, with the keyboard in its
    /// middle, whatever \a width and \a height say: the screen's class may be smaller.
    VeltaInputPanelContext(QLineEdit *target, QLabel *label, bool highlightFocus,
                           quint8 timeoutSeconds, quint16 width, quint16 height);
    /// The same without a count-down.
    VeltaInputPanelContext(QLineEdit *target, QLabel *label, bool highlightFocus, quint16 width,
                           quint16 height);
    ~VeltaInputPanelContext() override;

    /// Opens the keyboard with the target's text; \a label, if any, gives it a new caption.
    void showPanel(QLabel *label = nullptr);

Q_SIGNALS:
    /// The target is as it was.
    void input_canceled();
    /// The target holds the new text.
    void input_okay();

protected:
    void hideEvent(QHideEvent *event) override;

private Q_SLOTS:
    void sendCharacter(QChar character);
    void InputIsOkay();
    void InputIsCanceled();

private:
    void createPanel(QLabel *label, bool highlightFocus, quint8 timeoutSeconds);
    void placePanel();
    void finish();

    VeltaInputPanel *pPanel = nullptr;
    QPointer<QLineEdit> pTarget;
    bool bTimeout;
    bool bGrabKeyboard;
    bool bOpen = false; ///< from showPanel() to OK or Cancel
};
