#include "input/veltainputpanel.h"

#include "input/inputpanellayout.h"
#include "input/qveltalineedit.h"
#include "platform/windowserver.h"
#include "settings/fittedfont.h"
#include "ui_veltainputpanelform.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr char ButtonValue[] = "buttonValue";

// A held key repeats after a first delay, then slowly, then fast. Touched keys are repeated by
// their buttons, without the third phase.
constexpr std::chrono::milliseconds FirstRepeat = 500ms;
constexpr std::chrono::milliseconds SlowRepeat = 200ms;
constexpr std::chrono::milliseconds FastRepeat = 100ms;
constexpr int FastFromCount = 5;

constexpr std::chrono::milliseconds TimeoutStep = 1000ms;

constexpr char16_t AsteriskOperator = 0x2217;
constexpr char16_t Bullet = 0x2022;

/// What a button's frame takes of its width and height, both sides together.
constexpr int ButtonFrame = 4;
/// A wide button keeps one part in so many of its width free of the label.
constexpr int ButtonPadding = 10;
/// What the display's frame takes of its height.
constexpr int DisplayFrame = 4;
/// What frame and cursor take of its width.
constexpr int DisplayMargins = 12;
constexpr int HeadSpacing = 6;

int fontSize(const QFont &font)
{
    return font.pointSize() > 0 ? font.pointSize() : font.pixelSize();
}

void setFontSize(QFont *pFont, int size)
{
    if (pFont->pointSize() > 0) {
        pFont->setPointSize(size);
    } else {
        pFont->setPixelSize(size);
    }
}

/// Labels of one kind have one font size on a pad: the long words would make the arrows tiny.
enum class KeyLabel { Character, Symbol, Word };

KeyLabel keyLabel(KeyAction action)
{
    switch (action) {
    case KeyAction::Character:
        return KeyLabel::Character;
    case KeyAction::Backspace:
    case KeyAction::Left:
    case KeyAction::Right:
    case KeyAction::Mode:
        return KeyLabel::Symbol;
    case KeyAction::Cancel:
    case KeyAction::Ok:
        return KeyLabel::Word;
    }
    return KeyLabel::Character;
}

} // namespace

VeltaInputPanel::VeltaInputPanel(QWidget *parent, bool highlightFocus, const QString &mode,
                                 quint8 timeoutSeconds)
    : QWidget(parent), pForm(std::make_unique<Ui::VeltaInputPanelForm>()),
      inputMode(inputModeFromName(mode))
{
    pForm->setupUi(this);
    repeatTimer.setObjectName(QStringLiteral("repeatTimer"));
    connect(&repeatTimer, &QTimer::timeout, this, &VeltaInputPanel::DoAutoRepeat);
    timeoutTimer.setObjectName(QStringLiteral("timeoutTimer"));
    connect(&timeoutTimer, &QTimer::timeout, this, [this] { UpdateTimeout(); });
    if (const WindowServer *pServer = WindowServer::instance()) {
        // An unplugged keyboard releases nothing any more.
        connect(pServer, &WindowServer::keyboardClosed, this, &VeltaInputPanel::stopRepeat);
    }
    connect(pForm->panelLineEdit, &QLineEdit::returnPressed, this, &VeltaInputPanel::EnterPressed);

    createKeys();
    scaleFonts();
    if (highlightFocus) {
        highlightFocusedKey(mode);
    }
    // The count-down label takes its share of the head row before the row is laid out.
    setUpTimeout(timeoutSeconds);
    layOut(QGuiApplication::primaryScreen()->geometry().size());
    if (modeSpec().bPassword) {
        setUpPassword();
    }
    pForm->stackedWidget->setCurrentWidget(page(modeSpec().pad));
    focusFirstKey();
}

VeltaInputPanel::~VeltaInputPanel() = default;

void VeltaInputPanel::createKeys()
{
    std::map<int, QBoxLayout *> alphaRows;
    const auto place = [this, &alphaRows](const KeySpec &spec, QPushButton *pButton) {
        const bool bSpecial = spec.look().bSpecialBlock;
        switch (spec.pad()) {
        case KeyPad::Hex:
            (bSpecial ? pForm->gridLayout_2 : pForm->hexblock_layout)
                ->addWidget(pButton, spec.nRow, spec.nColumn, 1, spec.nColumnSpan);
            return;
        case KeyPad::Num:
            (bSpecial ? pForm->gridLayout : pForm->numberblock_layout)
                ->addWidget(pButton, spec.nRow, spec.nColumn);
            return;
        case KeyPad::AlphaNum:
            // The last row has its cursor keys beside the space key.
            if (bSpecial && spec.action != KeyAction::Left && spec.action != KeyAction::Right) {
                pForm->gridLayout_4->addWidget(pButton, spec.nRow, 1);
                return;
            }
            QBoxLayout *&pRow = alphaRows[spec.nRow];
            if (!pRow) {
                pRow = new QHBoxLayout;
                pForm->gridLayout_4->addLayout(pRow, spec.nRow, 0, Qt::AlignCenter);
            }
            pRow->addWidget(pButton);
            return;
        }
    };

    keys.reserve(inputKeys().size());
    for (const KeySpec &spec : inputKeys()) {
        auto *pButton = new QPushButton(spec.text(nShiftLevel), page(spec.pad()));
        pButton->setObjectName(QLatin1String(spec.name));
        switch (spec.action) {
        case KeyAction::Character:
        case KeyAction::Mode:
        case KeyAction::Backspace:
            pButton->setProperty(ButtonValue, spec.value(nShiftLevel));
            break;
        case KeyAction::Left:
        case KeyAction::Right:
        case KeyAction::Cancel:
        case KeyAction::Ok:
            break;
        }
        if (spec.action == KeyAction::Backspace || spec.action == KeyAction::Left
            || spec.action == KeyAction::Right) {
            pButton->setAutoRepeat(true);
            pButton->setAutoRepeatDelay(int(FirstRepeat.count()));
            pButton->setAutoRepeatInterval(int(SlowRepeat.count()));
        }
        pButton->setAttribute(Qt::WA_AcceptTouchEvents);
        // The button would take cursor keys and Space for itself.
        pButton->installEventFilter(this);
        connect(pButton, &QPushButton::clicked, this, [this, pButton] { buttonClicked(pButton); });
        place(spec, pButton);
        keys.push_back({&spec, pButton, {}});
    }
}

void VeltaInputPanel::scaleFonts()
{
    const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
    const int resolution = VeltaUtils::resolutionIndex(screen.width(), screen.height());
    for (Key &key : keys) {
        QFont font = this->font();
        font.setPointSize(key.pSpec->look().nPointSize);
        key.pButton->setFont(font);
        fontScaler.scaleFont(key.pButton, resolution);
        key.scaledFont = key.pButton->font();
    }
    for (QWidget *pWidget :
         {static_cast<QWidget *>(pForm->panelLineEdit), static_cast<QWidget *>(pForm->panelLabel),
          static_cast<QWidget *>(pForm->timeoutLabel)}) {
        fontScaler.scaleFont(pWidget, resolution);
    }
    captionFont = pForm->panelLabel->font();
    timeoutFont = pForm->timeoutLabel->font();
    nDisplayFontSize = fontSize(pForm->panelLineEdit->font());
}

void VeltaInputPanel::highlightFocusedKey(const QString &mode)
{
    for (const Key &key : keys) {
        if (key.pSpec->action == KeyAction::Mode
            && mode != QLatin1String(inputModes()[AlphaNumInput].name)) {
            continue;
        }
        key.pButton->setStyleSheet(
            QStringLiteral("QPushButton:focus { background-color:rgb(170,170,170);; } "));
    }
}

void VeltaInputPanel::setUpTimeout(quint8 seconds)
{
    nTimeoutSeconds = modeSpec().bPassword ? seconds : 0;
    pForm->timeoutLabel->setVisible(nTimeoutSeconds > 0);
    restartTimeout();
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
    if (nTimeoutSeconds == 0) {
        pForm->panelLabel->setMaximumWidth(frame.panel.width() - 20);
    }
    layOutHead(contents.width());

    const QSize area(contents.width(),
                     contents.height() - frame.nCaptionHeight - frame.nDisplayHeight
                         - 2 * pForm->verticalLayout->spacing());
    for (const KeyPad pad : {KeyPad::Hex, KeyPad::Num, KeyPad::AlphaNum}) {
        layOutPad(pad, area, pad == KeyPad::AlphaNum ? frame.nPadHeadroom : 0);
    }
    fitKeyFonts();
}

void VeltaInputPanel::layOutHead(int width)
{
    pForm->panelLineEdit->setFixedWidth(width);
    setLineEditFontSize(nDisplayFontSize);
    // Caption and count-down share their row evenly where their minimum widths do not fit into it.
    const int half = (width - HeadSpacing) / 2;
    pForm->panelLabel->setMinimumWidth(nTimeoutSeconds > 0 ? std::min(300, half)
                                                           : std::min(300, width));
    pForm->timeoutLabel->setMinimumWidth(std::min(290, half));
    fitLabelFont(pForm->panelLabel, captionFont);
    fitLabelFont(pForm->timeoutLabel, timeoutFont);
}

void VeltaInputPanel::layOutPad(KeyPad pad, const QSize &area, int headroom)
{
    QWidget *pPage = page(pad);
    const QSize pageSize = area.boundedTo(pPage->maximumSize());
    pPage->setMinimumSize(QSize(300, 160).boundedTo(pageSize));
    if (pad == modeSpec().pad) {
        pForm->stackedWidget->setFixedSize(pageSize);
    }
    const InputPadLayout layout = inputPadLayout(pad, pageSize, headroom);

    for (const Key &key : keys) {
        if (key.pSpec->pad() != pad) {
            continue;
        }
        const bool bCursorKey =
            key.pSpec->action == KeyAction::Left || key.pSpec->action == KeyAction::Right;
        if (bCursorKey) {
            key.pButton->setFixedSize(layout.arrow);
        } else if (key.pSpec->look().bSpecialBlock) {
            key.pButton->setFixedSize(layout.special);
        } else if (key.pSpec->style == KeyStyle::AlphaSpace) {
            key.pButton->setFixedSize(layout.nSpaceWidth, layout.key.height());
        } else {
            key.pButton->setFixedSize(layout.key);
        }
    }

    auto *pGrid = qobject_cast<QGridLayout *>(pPage->layout());
    pGrid->setContentsMargins(layout.margins);
    pGrid->setHorizontalSpacing(layout.nBlockGap);
    pGrid->setVerticalSpacing(layout.nRowGap);
    for (QLayout *pBlock : pGrid->findChildren<QLayout *>()) {
        if (auto *pKeyGrid = qobject_cast<QGridLayout *>(pBlock)) {
            pKeyGrid->setHorizontalSpacing(layout.nGap);
            pKeyGrid->setVerticalSpacing(layout.nRowGap);
        } else {
            pBlock->setSpacing(layout.nGap);
        }
    }
    if (pad == KeyPad::AlphaNum) {
        pForm->verticalSpacer->changeSize(20, headroom, QSizePolicy::Minimum, QSizePolicy::Fixed);
    }
    pGrid->invalidate();
}

void VeltaInputPanel::fitKeyFonts()
{
    std::map<std::pair<KeyPad, KeyLabel>, int> sizes;
    for (const Key &key : keys) {
        const QSize size = key.pButton->minimumSize();
        const QSize room =
            size - QSize(std::max(ButtonFrame, size.width() / ButtonPadding), ButtonFrame);
        for (int level = 0; level < ShiftLevels; ++level) {
            const QString text =
                key.pSpec->text(level).replace(QLatin1String("&&"), QLatin1String("&"));
            const int fitted = fontSize(fittedFont(key.scaledFont, text, room));
            const auto [found, bNew] =
                sizes.try_emplace({key.pSpec->pad(), keyLabel(key.pSpec->action)}, fitted);
            found->second = std::min(found->second, fitted);
        }
    }
    for (const Key &key : keys) {
        QFont font = key.scaledFont;
        setFontSize(&font, sizes[{key.pSpec->pad(), keyLabel(key.pSpec->action)}]);
        key.pButton->setFont(font);
    }
}

void VeltaInputPanel::fitLabelFont(QLabel *label, const QFont &scaledFont)
{
    // Without a count-down the caption has the whole row.
    const int width =
        nTimeoutSeconds > 0 ? label->minimumWidth() : pForm->panelLineEdit->minimumWidth();
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

QWidget *VeltaInputPanel::page(KeyPad pad) const
{
    switch (pad) {
    case KeyPad::Hex:
        return pForm->Hexpad;
    case KeyPad::Num:
        return pForm->Numpad;
    case KeyPad::AlphaNum:
        return pForm->AlphaNumpad;
    }
    return nullptr;
}

const VeltaInputPanel::Key *VeltaInputPanel::keyOf(const QWidget *widget) const
{
    const auto found = std::find_if(keys.begin(), keys.end(),
                                    [widget](const Key &key) { return key.pButton == widget; });
    return found == keys.end() ? nullptr : &*found;
}

QPushButton *VeltaInputPanel::button(KeyAction action) const
{
    const auto found = std::find_if(keys.begin(), keys.end(), [this, action](const Key &key) {
        return key.pSpec->pad() == modeSpec().pad && key.pSpec->action == action;
    });
    return found->pButton;
}

QPushButton *VeltaInputPanel::firstButton() const
{
    return button(KeyAction::Character);
}

bool VeltaInputPanel::buttonClicked(QWidget *w)
{
    const Key *pKey = keyOf(w);
    if (!pKey) {
        return true;
    }
    QChar character;
    switch (pKey->pSpec->action) {
    case KeyAction::Mode:
        ChangeButtons();
        return true;
    case KeyAction::Cancel:
        stopTimeout();
        stopRepeat();
        Q_EMIT input_canceled();
        return false;
    case KeyAction::Ok:
        stopTimeout();
        stopRepeat();
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
        character = w->property(ButtonValue).toChar();
        if (character.isNull()) {
            return true;
        }
        break;
    }
    extendTimeout();
    Q_EMIT characterGenerated(character);
    return true;
}

void VeltaInputPanel::EnterPressed()
{
    QWidget *pFocused = QApplication::focusWidget();
    if (pFocused && keyOf(pFocused) && buttonClicked(pFocused)
        && pFocused->property("autoRepeat").toBool()) {
        startRepeat(pFocused, 0);
    }
}

void VeltaInputPanel::ChangeButtons()
{
    nShiftLevel = (nShiftLevel + 1) % ShiftLevels;
    for (const Key &key : keys) {
        if (key.pSpec->isLetter()) {
            key.pButton->setText(key.pSpec->text(nShiftLevel));
            key.pButton->setProperty(ButtonValue, key.pSpec->value(nShiftLevel));
        }
    }
}

void VeltaInputPanel::restartTimeout()
{
    if (nTimeoutSeconds == 0) {
        return;
    }
    nRemainingSeconds = nTimeoutSeconds;
    timeoutTimer.start(TimeoutStep);
    UpdateTimeout(true);
}

void VeltaInputPanel::extendTimeout()
{
    // The release of the key that pressed OK must not wake the count-down up again.
    if (timeoutTimer.isActive()) {
        restartTimeout();
    }
}

void VeltaInputPanel::stopTimeout()
{
    timeoutTimer.stop();
}

void VeltaInputPanel::UpdateTimeout(bool bShowOnly)
{
    if (!bShowOnly && nRemainingSeconds > 0) {
        --nRemainingSeconds;
    }
    pForm->timeoutLabel->setText(tr("Timeout: %1").arg(nRemainingSeconds, 2, 10, QLatin1Char('0')));
    if (nRemainingSeconds == 0) {
        buttonClicked(button(KeyAction::Cancel));
    }
}

void VeltaInputPanel::startRepeat(QWidget *pButton, int key)
{
    // A hidden panel does not see the release that ends the repeat.
    if (repeatTimer.isActive() || !isVisible()) {
        return;
    }
    pRepeatedButton = pButton;
    nRepeatKey = key;
    nRepeatCount = 0;
    repeatTimer.start(FirstRepeat);
}

void VeltaInputPanel::stopRepeat()
{
    repeatTimer.stop();
    pRepeatedButton = nullptr;
    nRepeatKey = 0;
    nRepeatCount = 0;
}

void VeltaInputPanel::DoAutoRepeat()
{
    ++nRepeatCount;
    repeatTimer.setInterval(nRepeatCount < FastFromCount ? SlowRepeat : FastRepeat);
    if (pRepeatedButton) {
        buttonClicked(pRepeatedButton);
        return;
    }
    switch (nRepeatKey) {
    case Qt::Key_S:
    case Qt::Key_T:
        moveFocus(nRepeatKey == Qt::Key_S);
        break;
    case Qt::Key_R:
    case Qt::Key_Backspace:
        buttonClicked(button(KeyAction::Backspace));
        break;
    default:
        break;
    }
}

void VeltaInputPanel::pressCharacter(QChar character)
{
    const auto found = std::find_if(keys.begin(), keys.end(), [this, character](const Key &key) {
        return key.pSpec->pad() == modeSpec().pad && key.pSpec->value(0) == character;
    });
    if (found != keys.end()) {
        buttonClicked(found->pButton);
    }
}

void VeltaInputPanel::moveFocus(bool next)
{
    focusNextPrevChild(next);
    extendTimeout();
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
        stopRepeat();
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
    stopRepeat();
    // A touched key would go on repeating: its release no longer reaches it.
    for (const Key &key : keys) {
        key.pButton->setDown(false);
    }
    QWidget::hideEvent(event);
}

void VeltaInputPanel::keyPressEvent(QKeyEvent *event)
{
    event->accept();
    const int key = event->key();
    // The panel repeats held keys by itself, but for the cursor keys: those the keyboard repeats. A
    // digit under a resting glove must not fill the field.
    if (event->isAutoRepeat() && key != Qt::Key_Left && key != Qt::Key_Right) {
        return;
    }
    switch (key) {
    case Qt::Key_Period:
        if (modeSpec().pad == KeyPad::Num) {
            pressCharacter(u'.');
        }
        break;
    case Qt::Key_Space:
        if (modeSpec().pad != KeyPad::AlphaNum) {
            EnterPressed();
        }
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        EnterPressed();
        break;
    case Qt::Key_Backspace:
    case Qt::Key_R:
        buttonClicked(button(KeyAction::Backspace));
        startRepeat(nullptr, Qt::Key_Backspace);
        break;
    case Qt::Key_S:
    case Qt::Key_T:
        moveFocus(key == Qt::Key_S);
        startRepeat(nullptr, key);
        break;
    case Qt::Key_Left:
        buttonClicked(button(KeyAction::Left));
        break;
    case Qt::Key_Right:
        buttonClicked(button(KeyAction::Right));
        break;
    default:
        if (key >= Qt::Key_0 && key <= Qt::Key_9) {
            pressCharacter(QChar(key));
        }
        break;
    }
}

void VeltaInputPanel::keyReleaseEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Space:
        if (modeSpec().pad == KeyPad::AlphaNum) {
            event->ignore();
            return;
        }
        break;
    case Qt::Key_R:
    case Qt::Key_S:
    case Qt::Key_T:
    case Qt::Key_Backspace:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        break;
    default:
        event->ignore();
        return;
    }
    event->accept();
    if (event->isAutoRepeat()) {
        return;
    }
    extendTimeout();
    stopRepeat();
}

bool VeltaInputPanel::focusNextPrevChild(bool next)
{
    const QWidget *pFocused = parentWidget() ? parentWidget()->focusWidget() : nullptr;
    if (const Key *pKey = keyOf(pFocused)) {
        if (next && pKey->pSpec->action == KeyAction::Ok) {
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
