#pragma once

#include "input/inputcountdown.h"
#include "input/inputkeys.h"
#include "input/keypadkey.h"
#include "input/keypads.h"
#include "input/keyrepeat.h"
#include "settings/veltautils.h"

#include <QFont>
#include <QWidget>

#include <functional>
#include <memory>

class QLabel;
class QPushButton;
class QVeltaLineEdit;
namespace Ui {
class VeltaInputPanelForm;
}

/// The on-screen keyboard: one of three key pads with a caption, a display and, in the password
/// modes, a count-down.
///
/// The panel knows nothing of the field that is being edited. Each key leaves it as a character
/// (characterGenerated()), OK and Cancel as input_ok() and input_canceled(); its owner applies the
/// characters to the display. It can be worked by touch and by a small physical keypad, whose held
/// keys it repeats by itself. GUI thread only.
class VeltaInputPanel : public QWidget
{
    Q_OBJECT

public:
    /// \a mode is the name of an input mode; any other name gives the numeric pad.
    /// \a highlightFocus gives the focused key a grey background. \a timeoutSeconds is the length
    /// of the count-down of a password mode, 0 for none; it runs from now on.
    VeltaInputPanel(QWidget *parent, bool highlightFocus, const QString &mode,
                    quint8 timeoutSeconds);
    ~VeltaInputPanel() override;

    /// Sizes the panel for an area of \a screen pixels. Construction does it for the primary
    /// screen; needed again only where less than the screen is at hand.
    void layOut(const QSize &screen);

    void setLabelText(const QString &text);
    void setLineEditText(const QString &text);
    void setLineEditInputMask(const QString &mask);
    /// The display font's size in points, or in pixels when the font is sized in pixels.
    int lineEditFontSize() const;
    /// Sets the display font's size in the unit of lineEditFontSize(), at most as large as the
    /// display has room for.
    void setLineEditFontSize(int size);
    void deselectText();
    /// The display holds no character of the operator's, its mask's own characters aside.
    bool isLineEditEmpty() const;
    void focusFirstKey();
    /// Starts the count-down from its full length, where there is one.
    void restartTimeout();

    QVeltaLineEdit *lineEdit() const;
    InputMode mode() const { return inputMode; }

Q_SIGNALS:
    /// A key took effect: the key's character, or one of the codes of InputCode.
    void characterGenerated(QChar character);
    void input_ok();
    void input_canceled();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private Q_SLOTS:
    /// The one path by which a key takes effect. False when the key ended the input.
    bool buttonClicked(QWidget *w);
    void EnterPressed();
    void ChangeButtons();
    void DoAutoRepeat();
    void UpdateTimeout(bool bShowOnly = false);

private:
    void connectAll();
    void scaleFonts();
    void setUpPassword();
    void layOutHead(int width);
    void fitLabelFont(QLabel *label, const QFont &scaledFont);

    const InputModeSpec &modeSpec() const;
    /// The first key of the shown pad that does \a action.
    QPushButton *button(KeyAction action) const;
    QPushButton *firstButton() const;
    void press(const KeypadKey &key);
    void moveFocus(bool next);
    void markFocus(bool marked);
    void repeatWhileHeld(std::function<void()> effect);
    void showRemaining(int seconds);

    std::unique_ptr<Ui::VeltaInputPanelForm> pForm;
    VeltaUtils fontScaler;
    InputMode inputMode;
    std::unique_ptr<KeyPads> pPads;
    KeyRepeat keyRepeat;
    InputCountdown countdown;
    bool bFocusMarked = true; ///< the focused key can be seen
    QFont captionFont;
    QFont timeoutFont;
    int nDisplayFontSize = 0; ///< as asked for; the display may have room for less
};
