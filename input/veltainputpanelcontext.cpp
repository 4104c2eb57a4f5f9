#include "input/veltainputpanelcontext.h"

#include "input/inputkeys.h"
#include "input/qveltalineedit.h"
#include "input/veltainputpanel.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPalette>
#include <QScreen>

#include <utility>

namespace {

constexpr int DisplayFontGrowth = 6;
/// The wizard's grey: the keyboard's frame stands out, what surrounds it does not.
constexpr QColor Background(230, 230, 230);

/// On these window systems the keys go to whoever grabs them.
bool windowSystemNeedsGrab()
{
    const QByteArray display = qgetenv("QWS_DISPLAY");
    return display == "VNC" || display == "SHM";
}

int keyCode(QChar character, KeyPad pad)
{
    switch (pad) {
    case KeyPad::AlphaNum:
        return character.unicode();
    case KeyPad::Hex:
        return character.isLetterOrNumber() ? character.unicode() : 0;
    case KeyPad::Num:
        return character.isDigit() || character == u'.' ? character.unicode() : 0;
    }
    return 0;
}

} // namespace

VeltaInputPanelContext::VeltaInputPanelContext(QLineEdit *target, QLabel *label,
                                               bool highlightFocus, quint8 timeoutSeconds,
                                               quint16 /*width*/, quint16 /*height*/)
    : pTarget(target), bTimeout(timeoutSeconds != 0), bGrabKeyboard(windowSystemNeedsGrab())
{
    setWindowFlags(Qt::Window | Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint
                   | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint
                   | Qt::BypassGraphicsProxyWidget);
    setWindowModality(Qt::ApplicationModal);
    setCursor(Qt::BlankCursor);
    QPalette colors = palette();
    colors.setColor(QPalette::Window, Background);
    setPalette(colors);
    if (target && label) {
        createPanel(label, highlightFocus, timeoutSeconds);
    }
    // On a screen of no class, what was asked for is less than the screen.
    const QRect area = QGuiApplication::primaryScreen()->geometry();
    setFixedSize(area.size());
    move(area.topLeft());
    if (pPanel) {
        placePanel();
        pPanel->setLineEditFontSize(pPanel->lineEditFontSize() + DisplayFontGrowth);
    }
}

VeltaInputPanelContext::VeltaInputPanelContext(QLineEdit *target, QLabel *label,
                                               bool highlightFocus, quint16 width, quint16 height)
    : VeltaInputPanelContext(target, label, highlightFocus, 0, width, height)
{ }

VeltaInputPanelContext::~VeltaInputPanelContext()
{
    hide();
    if (pPanel) {
        // A receiver of the panel's signal may be the one who destroys this object.
        pPanel->disconnect(this);
        pPanel->setParent(nullptr);
        pPanel->deleteLater();
    }
}

void VeltaInputPanelContext::createPanel(QLabel *label, bool highlightFocus, quint8 timeoutSeconds)
{
    pPanel = new VeltaInputPanel(this, highlightFocus, pTarget->whatsThis(), timeoutSeconds);
    pPanel->setAttribute(Qt::WA_InputMethodEnabled);
    connect(pPanel, &VeltaInputPanel::characterGenerated, this,
            &VeltaInputPanelContext::sendCharacter);
    connect(pPanel, &VeltaInputPanel::input_ok, this, &VeltaInputPanelContext::InputIsOkay);
    connect(pPanel, &VeltaInputPanel::input_canceled, this,
            &VeltaInputPanelContext::InputIsCanceled);
    if (!pTarget->inputMask().isEmpty()) {
        pPanel->setLineEditInputMask(pTarget->inputMask());
    }
    pPanel->setLabelText(label->text());
}

void VeltaInputPanelContext::placePanel()
{
    if (!QRect(QPoint(), size()).contains(pPanel->rect())) {
        pPanel->layOut(size());
    }
    QRect place = pPanel->rect();
    place.moveCenter(rect().center());
    pPanel->move(place.topLeft());
}

void VeltaInputPanelContext::showPanel(QLabel *label)
{
    if (!pTarget || !pPanel) {
        return;
    }
    // What a field in password echo shows is not its text.
    pPanel->setLineEditText(pTarget->echoMode() == QLineEdit::Normal ? pTarget->displayText()
                                                                     : pTarget->text());
    pPanel->deselectText();
    pPanel->focusFirstKey();
    if (label && label->text() != pPanel->windowTitle()) {
        pPanel->setLabelText(label->text());
    }
    if (bTimeout) {
        pPanel->restartTimeout();
    }
    bOpen = true;
    show();
    if (bGrabKeyboard) {
        pPanel->grabKeyboard();
    }
    // An emptied mask leaves the cursor behind its last place, where nothing can be typed.
    if (pPanel->isLineEditEmpty()) {
        pPanel->lineEdit()->home(false);
    }
}

void VeltaInputPanelContext::sendCharacter(QChar character)
{
    if (!pPanel) {
        return; // made without a target
    }
    int key = 0;
    QString text;
    switch (character.unicode()) {
    case InputCode::Tab:
        key = Qt::Key_Tab;
        break;
    case InputCode::Backtab:
        key = Qt::Key_Backtab;
        break;
    case InputCode::Backspace:
        key = Qt::Key_Backspace;
        break;
    case InputCode::Left:
        key = Qt::Key_Left;
        break;
    case InputCode::Right:
        key = Qt::Key_Right;
        break;
    default:
        key = keyCode(character, inputModes()[pPanel->mode()].pad);
        text = character;
        break;
    }
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(pPanel->lineEdit(), &event);
}

void VeltaInputPanelContext::InputIsOkay()
{
    if (!pTarget) {
        InputIsCanceled();
        return;
    }
    if (!std::exchange(bOpen, false)) {
        return;
    }
    const QVeltaLineEdit *pDisplay = pPanel->lineEdit();
    pTarget->setText(inputModes()[pPanel->mode()].bPassword ? pDisplay->text()
                                                            : pDisplay->displayText());
    finish();
    Q_EMIT input_okay();
}

void VeltaInputPanelContext::InputIsCanceled()
{
    if (!std::exchange(bOpen, false)) {
        return;
    }
    finish();
    Q_EMIT input_canceled();
}

void VeltaInputPanelContext::finish()
{
    pPanel->deselectText();
    hide();
    if (inputModes()[pPanel->mode()].bPassword) {
        pPanel->setLineEditText({}); // a password stays no longer than it must
    }
}

void VeltaInputPanelContext::hideEvent(QHideEvent *event)
{
    if (bGrabKeyboard && pPanel) {
        pPanel->releaseKeyboard();
    }
    QWidget::hideEvent(event);
}
