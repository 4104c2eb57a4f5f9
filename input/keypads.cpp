#include "input/keypads.h"

#include "input/inputpanellayout.h"
#include "input/keyrepeat.h"
#include "settings/fittedfont.h"
#include "settings/veltautils.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QPushButton>
#include <QVariant>

#include <algorithm>
#include <map>
#include <utility>

namespace {

constexpr char ButtonValue[] = "buttonValue";

/// What a button's frame takes of its width and height, both sides together.
constexpr int ButtonFrame = 4;
/// A wide button keeps one part in so many of its width free of the label.
constexpr int ButtonPadding = 10;

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

bool hasValue(KeyAction action)
{
    return action == KeyAction::Character || action == KeyAction::Mode
        || action == KeyAction::Backspace;
}

bool isCursorKey(KeyAction action)
{
    return action == KeyAction::Left || action == KeyAction::Right;
}

QSize keySize(const KeySpec &spec, const InputPadLayout &layout)
{
    if (isCursorKey(spec.action)) {
        return layout.arrow;
    }
    if (spec.look().bSpecialBlock) {
        return layout.special;
    }
    return spec.style == KeyStyle::AlphaSpace ? QSize(layout.nSpaceWidth, layout.key.height())
                                              : layout.key;
}

void setSpacings(QGridLayout *page, const InputPadLayout &layout)
{
    page->setContentsMargins(layout.margins);
    page->setHorizontalSpacing(layout.nBlockGap);
    page->setVerticalSpacing(layout.nRowGap);
    for (QLayout *pBlock : page->findChildren<QLayout *>()) {
        if (auto *pKeyGrid = qobject_cast<QGridLayout *>(pBlock)) {
            pKeyGrid->setHorizontalSpacing(layout.nGap);
            pKeyGrid->setVerticalSpacing(layout.nRowGap);
        } else {
            pBlock->setSpacing(layout.nGap);
        }
    }
}

QGridLayout *gridOf(const QWidget *page)
{
    return qobject_cast<QGridLayout *>(page->layout());
}

} // namespace

KeyPads::KeyPads(const Pages &padPages, QObject *parent) : QObject(parent), pages(padPages)
{
    keys.reserve(inputKeys().size());
    for (const KeySpec &spec : inputKeys()) {
        createKey(spec);
    }
}

KeyPads::~KeyPads() = default;

void KeyPads::createKey(const KeySpec &spec)
{
    auto *pButton = new QPushButton(page(spec.pad()));
    pButton->setObjectName(QLatin1String(spec.pName));
    if (spec.action == KeyAction::Backspace || isCursorKey(spec.action)) {
        pButton->setAutoRepeat(true);
        pButton->setAutoRepeatDelay(int(KeyRepeat::First.count()));
        pButton->setAutoRepeatInterval(int(KeyRepeat::Slow.count()));
    }
    pButton->setAttribute(Qt::WA_AcceptTouchEvents);
    connect(pButton, &QPushButton::clicked, this, [this, pButton] { Q_EMIT clicked(pButton); });
    place(spec, pButton);
    keys.push_back({&spec, pButton, {}});
    showLevel(keys.back());
}

void KeyPads::place(const KeySpec &spec, QPushButton *button)
{
    const Page &page = pages[static_cast<std::size_t>(spec.pad())];
    QGridLayout *pBlock = spec.look().bSpecialBlock ? page.pSpecials : page.pCharacters;
    if (pBlock) {
        pBlock->addWidget(button, spec.nRow, spec.nColumn, 1, spec.nColumnSpan);
    } else if (spec.look().bSpecialBlock && !isCursorKey(spec.action)) {
        gridOf(page.pPage)->addWidget(button, spec.nRow, 1);
    } else { // the last row has its cursor keys beside the space key
        placeInRow(spec.nRow, button);
    }
}

void KeyPads::placeInRow(int row, QPushButton *button)
{
    QGridLayout *pGrid = gridOf(button->parentWidget());
    QLayoutItem *pItem = pGrid->itemAtPosition(row, 0);
    auto *pRow = pItem ? qobject_cast<QBoxLayout *>(pItem->layout()) : nullptr;
    if (!pRow) {
        pRow = new QHBoxLayout;
        pGrid->addLayout(pRow, row, 0, Qt::AlignCenter);
    }
    pRow->addWidget(button);
}

void KeyPads::showLevel(const Key &key) const
{
    key.pButton->setText(key.pSpec->text(nShiftLevel));
    if (hasValue(key.pSpec->action)) {
        key.pButton->setProperty(ButtonValue, key.pSpec->value(nShiftLevel));
    }
}

void KeyPads::shift()
{
    nShiftLevel = (nShiftLevel + 1) % ShiftLevels;
    for (const Key &key : keys) {
        if (key.pSpec->isLetter()) {
            showLevel(key);
        }
    }
}

void KeyPads::release()
{
    for (const Key &key : keys) {
        key.pButton->setDown(false);
    }
}

void KeyPads::scaleFonts(const QFont &font, VeltaUtils *utils, int screenClass)
{
    for (Key &key : keys) {
        QFont keyFont = font;
        keyFont.setPointSize(key.pSpec->look().nPointSize);
        key.pButton->setFont(keyFont);
        utils->scaleFont(key.pButton, screenClass);
        key.scaledFont = key.pButton->font();
    }
}

void KeyPads::highlightFocus(bool modeKeyToo)
{
    for (const Key &key : keys) {
        if (key.pSpec->action != KeyAction::Mode || modeKeyToo) {
            key.pButton->setStyleSheet(
                QStringLiteral("QPushButton:focus { background-color:rgb(170,170,170);; } "));
        }
    }
}

QSize KeyPads::layOut(KeyPad pad, const QSize &area, int headroom)
{
    QWidget *pPage = page(pad);
    const QSize pageSize = area.boundedTo(pPage->maximumSize());
    pPage->setMinimumSize(QSize(300, 160).boundedTo(pageSize));
    const InputPadLayout layout = inputPadLayout(pad, pageSize, headroom);
    for (const Key &key : keys) {
        if (key.pSpec->pad() == pad) {
            key.pButton->setFixedSize(keySize(*key.pSpec, layout));
        }
    }
    QGridLayout *pGrid = gridOf(pPage);
    setSpacings(pGrid, layout);
    if (QSpacerItem *pEmptyRow = pGrid->itemAtPosition(0, 0)->spacerItem()) {
        pEmptyRow->changeSize(20, headroom, QSizePolicy::Minimum, QSizePolicy::Fixed);
    }
    pGrid->invalidate();
    return pageSize;
}

void KeyPads::fitFonts()
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

QWidget *KeyPads::page(KeyPad pad) const
{
    return pages[static_cast<std::size_t>(pad)].pPage;
}

std::vector<QPushButton *> KeyPads::buttons() const
{
    std::vector<QPushButton *> found;
    std::ranges::transform(keys, std::back_inserter(found), &Key::pButton);
    return found;
}

const KeySpec *KeyPads::specOf(const QWidget *widget) const
{
    const auto found = std::ranges::find(keys, widget, &Key::pButton);
    return found == keys.end() ? nullptr : found->pSpec;
}

QPushButton *KeyPads::button(KeyPad pad, KeyAction action) const
{
    const auto found = std::ranges::find_if(keys, [pad, action](const Key &key) {
        return key.pSpec->pad() == pad && key.pSpec->action == action;
    });
    return found->pButton;
}

QPushButton *KeyPads::button(KeyPad pad, QChar character) const
{
    const auto found = std::ranges::find_if(keys, [pad, character](const Key &key) {
        return key.pSpec->pad() == pad && value(key.pButton) == character;
    });
    return found == keys.end() ? nullptr : found->pButton;
}

QChar KeyPads::value(const QWidget *key)
{
    return key->property(ButtonValue).toChar();
}
