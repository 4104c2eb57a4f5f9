#include "input/veltainputpanel.h"

#include "input/inputpanellayout.h"
#include "input/qveltalineedit.h"
#include "platform/windowserver.h"
#include "settings/fittedfont.h"
#include "ui_veltainputpanelform.h"

#include <QApplication>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>

#include <algorithm>
#include <utility>

namespace {

constexpr char16_t AsteriskOperator = 0x2217;
constexpr char16_t Bullet = 0x2022;

/// What the display's frame takes of its height.
constexpr int DisplayFrame = 4;
/// What frame and cursor take of its width.
constexpr int DisplayMargins = 12;
constexpr int HeadSpacing = 6;

KeyPads::Pages padPages(const Ui::VeltaInputPanelForm &form)
{
    KeyPads::Pages pages;
    pages[static_cast<std::size_t>(KeyPad::Hex)] = {form.Hexpad, form.hexblock_layout,
                                                    form.gridLayout_2};
    pages[static_cast<std::size_t>(KeyPad::Num)] = {form.Numpad, form.numberblock_layout,
                                                    form.gridLayout};
    pages[static_cast<std::size_t>(KeyPad::AlphaNum)] = {form.AlphaNumpad, nullptr, nullptr};
    return pages;
}

} // namespace

VeltaInputPanel::VeltaInputPanel(QWidget *parent, bool highlightFocus, const QString &mode,
                                 quint8 timeoutSeconds)
    : QWidget(parent), pForm(std::make_unique<Ui::VeltaInputPanelForm>()),
      inputMode(inputModeFromName(mode)), keyRepeat(this),
      countdown(modeSpec().bPassword ? timeoutSeconds : 0, this)
{
    pForm->setupUi(this);
    pPads = std::make_unique<KeyPads>(padPages(*pForm), nullptr);
    connectAll();
    scaleFonts();
    if (highlightFocus) {
        pPads->highlightFocus(mode == QLatin1String(inputModes()[AlphaNumInput].pName));
    }
    // The count-down label takes its share of the head row before the row is laid out.
    pForm->timeoutLabel->setVisible(countdown.isUsed());
    countdown.restart();
    layOut(QGuiApplication::primaryScreen()->geometry().size());
    if (modeSpec().bPassword) {
        setUpPassword();
    }
    pForm->stackedWidget->setCurrentWidget(pPads->page(modeSpec().pad));
    focusFirstKey();
}

VeltaInputPanel::~VeltaInputPanel() = default;

void VeltaInputPanel::connectAll()
{
    for (QPushButton *pButton : pPads->buttons()) {
        pButton->installEventFilter(this); // it would take cursor keys and Space for itself
    }
    connect(pPads.get(), &KeyPads::clicked, this, &VeltaInputPanel::buttonClicked);
    connect(&countdown, &InputCountdown::remaining, this, &VeltaInputPanel::showRemaining);
    connect(&countdown, &InputCountdown::expired, this,
            [this] { buttonClicked(button(KeyAction::Cancel)); });
    if (const WindowServer *pServer = WindowServer::instance()) {
        // An unplugged keyboard releases nothing any more.
        connect(pServer, &WindowServer::keyboardClosed, &keyRepeat, &KeyRepeat::stop);
    }
    connect(pForm->panelLineEdit, &QLineEdit::returnPressed, this, &VeltaInputPanel::EnterPressed);
}

void VeltaInputPanel::scaleFonts()
{
    const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
    const int screenClass = VeltaUtils::resolutionIndex(screen.width(), screen.height());
    pPads->scaleFonts(font(), &fontScaler, screenClass);
    for (QWidget *pWidget :
         {static_cast<QWidget *>(pForm->panelLineEdit), static_cast<QWidget *>(pForm->panelLabel),
          static_cast<QWidget *>(pForm->timeoutLabel)}) {
        fontScaler.scaleFont(pWidget, screenClass);
    }
    captionFont = pForm->panelLabel->font();
    timeoutFont = pForm->timeoutLabel->font();
    nDisplayFontSize = fontSize(pForm->panelLineEdit->font());
}

void VeltaInputPanel::setUpPassword()
{
    // A device that has only its own two fonts has no glyph for the asterisk operator.
    const bool bHasAsterisk =
        QFontMetrics(pForm->panelLineEdit->font()).inFontUcs4(AsteriskOperator);
    pForm->panelLineEdit->setStyleSheet(QStringLiteral("lineedit-password-character: %1")
                                            .arg(bHasAsterisk ? AsteriskOperator : Bullet));
    pForm->panelLineEdit->setEchoMode(QLineEdit::Password);
}

void VeltaInputPanel::layOut(const QSize &screen)
{
    const InputPanelFrame frame = inputPanelFrame(screen);
    setMinimumSize(QSize(320, 240).boundedTo(frame.panel));
    resize(frame.panel);
    pForm->panelGBox->setFixedSize(frame.groupBox);
    pForm->panelLabel->setFixedHeight(frame.nCaptionHeight);
    pForm->timeoutLabel->setFixedHeight(frame.nCaptionHeight);
    pForm->panelLineEdit->setFixedHeight(frame.nDisplayHeight);

    const QSize contents =
        (pForm->panelGBox->contentsRect() - pForm->verticalLayout->contentsMargins()).size();
    if (!countdown.isUsed()) {
        pForm->panelLabel->setMaximumWidth(frame.panel.width() - 20);
    }
    layOutHead(contents.width());

    const QSize area(contents.width(),
                     contents.height() - frame.nCaptionHeight - frame.nDisplayHeight
                         - 2 * pForm->verticalLayout->spacing());
    for (const KeyPad pad : {KeyPad::Hex, KeyPad::Num, KeyPad::AlphaNum}) {
        const QSize page =
            pPads->layOut(pad, area, pad == KeyPad::AlphaNum ? frame.nPadHeadroom : 0);
        if (pad == modeSpec().pad) {
            pForm->stackedWidget->setFixedSize(page);
        }
    }
    pPads->fitFonts();
}

void VeltaInputPanel::layOutHead(int width)
{
    pForm->panelLineEdit->setFixedWidth(width);
    setLineEditFontSize(nDisplayFontSize);
    // Caption and count-down share their row evenly where their minimum widths do not fit into it.
    const int half = (width - HeadSpacing) / 2;
    pForm->panelLabel->setMinimumWidth(countdown.isUsed() ? std::min(300, half)
                                                          : std::min(300, width));
    pForm->timeoutLabel->setMinimumWidth(std::min(290, half));
    fitLabelFont(pForm->panelLabel, captionFont);
    fitLabelFont(pForm->timeoutLabel, timeoutFont);
}

void VeltaInputPanel::fitLabelFont(QLabel *label, const QFont &scaledFont)
{
    // Without a count-down the caption has the whole row.
    const int width =
        countdown.isUsed() ? label->minimumWidth() : pForm->panelLineEdit->minimumWidth();
    label->setFont(fittedFont(scaledFont, label->text(), {width, label->minimumHeight()}));
}

void VeltaInputPanel::setLabelText(const QString &text)
{
    pForm->panelLabel->setText(text);
    fitLabelFont(pForm->panelLabel, captionFont);
}

void VeltaInputPanel::setLineEditText(const QString &text)
{
    pForm->panelLineEdit->setText(text);
}

void VeltaInputPanel::setLineEditInputMask(const QString &mask)
{
    pForm->panelLineEdit->setInputMask(mask);
}

int VeltaInputPanel::lineEditFontSize() const
{
    return fontSize(pForm->panelLineEdit->font());
}

void VeltaInputPanel::setLineEditFontSize(int size)
{
    nDisplayFontSize = size;
    QFont font = pForm->panelLineEdit->font();
    setFontSize(&font, size);
    // What the mask can hold is to be seen whole; other texts scroll.
    const QString widest = pForm->panelLineEdit->inputMask().section(QLatin1Char(';'), 0, 0);
    pForm->panelLineEdit->setFont(fittedFont(
        font, widest, pForm->panelLineEdit->minimumSize() - QSize(DisplayMargins, DisplayFrame)));
}

void VeltaInputPanel::deselectText()
{
    pForm->panelLineEdit->deselect();
}

bool VeltaInputPanel::isLineEditEmpty() const
{
    // An empty mask's text is its separators, which only a line edit can tell.
    QLineEdit empty;
    empty.setInputMask(pForm->panelLineEdit->inputMask());
    return pForm->panelLineEdit->text() == empty.text();
}

void VeltaInputPanel::focusFirstKey()
{
    markFocus(true); // who has a keypad sees where it starts
    firstButton()->setFocus(Qt::TabFocusReason);
}

QVeltaLineEdit *VeltaInputPanel::lineEdit() const
{
    return pForm->panelLineEdit;
}

const InputModeSpec &VeltaInputPanel::modeSpec() const
{
    return inputModes()[inputMode];
}

QPushButton *VeltaInputPanel::button(KeyAction action) const
{
    return pPads->button(modeSpec().pad, action);
}

QPushButton *VeltaInputPanel::firstButton() const
{
    return button(KeyAction::Character);
}

bool VeltaInputPanel::buttonClicked(QWidget *w)
{
    const KeySpec *pKey = pPads->specOf(w);
    if (!pKey) {
        return true;
    }
    QChar character;
    switch (pKey->action) {
    case KeyAction::Mode:
        ChangeButtons();
        return true;
    case KeyAction::Cancel:
        countdown.stop();
        keyRepeat.stop();
        Q_EMIT input_canceled();
        return false;
    case KeyAction::Ok:
        countdown.stop();
        keyRepeat.stop();
        Q_EMIT input_ok();
        return false;
    case KeyAction::Backspace:
        character = InputCode::Backspace;
        break;
    case KeyAction::Left:
        character = InputCode::Left;
        break;
    case KeyAction::Right:
        character = InputCode::Right;
        break;
    case KeyAction::Character:
        character = KeyPads::value(w);
        if (character.isNull()) {
            return true;
        }
        break;
    }
    countdown.extend();
    Q_EMIT characterGenerated(character);
    return true;
}

void VeltaInputPanel::EnterPressed()
{
    QWidget *pFocused = QApplication::focusWidget();
    if (pFocused && pPads->specOf(pFocused) && buttonClicked(pFocused)
        && pFocused->property("autoRepeat").toBool()) {
        repeatWhileHeld([this, pFocused] { buttonClicked(pFocused); });
    }
}

void VeltaInputPanel::ChangeButtons()
{
    pPads->shift();
}

void VeltaInputPanel::restartTimeout()
{
    countdown.restart();
}

void VeltaInputPanel::UpdateTimeout(bool bShowOnly)
{
    countdown.step(bShowOnly);
}

void VeltaInputPanel::showRemaining(int seconds)
{
    pForm->timeoutLabel->setText(tr("Timeout: %1").arg(seconds, 2, 10, QLatin1Char('0')));
}

void VeltaInputPanel::repeatWhileHeld(std::function<void()> effect)
{
    // A hidden panel does not see the release that ends the repeat.
    if (isVisible()) {
        keyRepeat.start(std::move(effect));
    }
}

void VeltaInputPanel::DoAutoRepeat()
{
    keyRepeat.repeat();
}

void VeltaInputPanel::press(const KeypadKey &key)
{
    switch (key.effect) {
    case KeypadEffect::None:
        break;
    case KeypadEffect::Character:
        if (QPushButton *pKey = pPads->button(modeSpec().pad, QChar(key.nKey))) {
            buttonClicked(pKey);
        }
        break;
    case KeypadEffect::Backspace:
        buttonClicked(button(KeyAction::Backspace));
        break;
    case KeypadEffect::Left:
        buttonClicked(button(KeyAction::Left));
        break;
    case KeypadEffect::Right:
        buttonClicked(button(KeyAction::Right));
        break;
    case KeypadEffect::Press:
        EnterPressed();
        break;
    case KeypadEffect::NextKey:
        moveFocus(true);
        break;
    case KeypadEffect::PreviousKey:
        moveFocus(false);
        break;
    }
}

void VeltaInputPanel::moveFocus(bool next)
{
    focusNextPrevChild(next);
    countdown.extend();
}

void VeltaInputPanel::markFocus(bool marked)
{
    bFocusMarked = marked;
    window()->setAttribute(Qt::WA_KeyboardFocusChange, marked);
}

bool VeltaInputPanel::event(QEvent *event)
{
    // The release of a held key goes to the window that is active then.
    if (event->type() == QEvent::WindowDeactivate) {
        keyRepeat.stop();
    }
    return QWidget::event(event);
}

bool VeltaInputPanel::eventFilter(QObject *watched, QEvent *event)
{
    // By itself the style marks the focused key only after a Tab key, which a keypad has not. A
    // touched key stays unmarked: it may be a digit of the password.
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) {
        markFocus(false);
    } else if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        markFocus(reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason
                      ? bFocusMarked
                      : reason != Qt::MouseFocusReason);
    }
    const bool bPress = event->type() == QEvent::KeyPress;
    if (!bPress && event->type() != QEvent::KeyRelease) {
        return QWidget::eventFilter(watched, event);
    }
    auto *pKeyEvent = static_cast<QKeyEvent *>(event);
    if (pKeyEvent->key() == Qt::Key_Tab || pKeyEvent->key() == Qt::Key_Backtab) {
        return QWidget::eventFilter(watched, event);
    }
    bPress ? keyPressEvent(pKeyEvent) : keyReleaseEvent(pKeyEvent);
    return true;
}

void VeltaInputPanel::hideEvent(QHideEvent *event)
{
    keyRepeat.stop();
    pPads->release(); // a touched key would go on repeating: its release no longer reaches it
    QWidget::hideEvent(event);
}

void VeltaInputPanel::keyPressEvent(QKeyEvent *event)
{
    event->accept();
    const KeypadKey key = keypadKey(event->key(), modeSpec().pad);
    if (event->isAutoRepeat() && !key.bKeyboardRepeats) {
        return;
    }
    const auto effect = [this, key] { press(key); };
    effect();
    if (key.bRepeats) {
        repeatWhileHeld(effect);
    }
}

void VeltaInputPanel::keyReleaseEvent(QKeyEvent *event)
{
    if (!keypadKey(event->key(), modeSpec().pad).bReleaseCounts) {
        event->ignore();
        return;
    }
    event->accept();
    if (!event->isAutoRepeat()) {
        countdown.extend();
        keyRepeat.stop();
    }
}

bool VeltaInputPanel::focusNextPrevChild(bool next)
{
    const QWidget *pFocused = parentWidget() ? parentWidget()->focusWidget() : nullptr;
    if (const KeySpec *pKey = pPads->specOf(pFocused)) {
        if (next && pKey->action == KeyAction::Ok) {
            firstButton()->setFocus(Qt::TabFocusReason);
            return true;
        }
        if (!next && pFocused == firstButton()) {
            button(KeyAction::Ok)->setFocus(Qt::BacktabFocusReason);
            return true;
        }
    }
    return QWidget::focusNextPrevChild(next);
}
