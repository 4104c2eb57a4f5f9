#pragma once

#include <QSize>
#include <QString>

#include <span>
#include <string_view>

/// The input modes, in the order of inputModes().
enum InputMode { NumInput, HexInput, AlphaNumInput, NumInputPW, HexInputPW, AlphaNumInputPW };

enum class KeyPad { Hex, Num, AlphaNum };

struct InputModeSpec
{
    const char *pName; ///< what a field's What's-This text says
    KeyPad pad;
    bool bPassword; ///< hides what is typed and may run a count-down
};

/// One row per InputMode.
std::span<const InputModeSpec> inputModes();
/// The mode called \a name; a name that no mode has gives NumInput.
InputMode inputModeFromName(const QString &name);

/// What a key does when it takes effect.
enum class KeyAction { Character, Backspace, Left, Right, Cancel, Ok, Mode };

/// Keys that look alike share a style.
enum class KeyStyle {
    HexKey,
    HexArrow,
    HexSpecial,
    NumKey,
    NumSpecial,
    AlphaKey,
    AlphaSpecial,
    AlphaCancel,
    AlphaSpace,
};

struct KeyStyleSpec
{
    KeyStyle style;
    KeyPad pad;
    bool bSpecialBlock; ///< stands in the block beside the character keys
    QSize minimum; ///< pixels
    QSize maximum;
    int nPointSize; ///< before the scaling to the screen
};

const KeyStyleSpec &keyStyle(KeyStyle style);

struct KeySpec
{
    const char *pName; ///< object name of the button
    KeyStyle style;
    KeyAction action;
    const char *pLabel; ///< translatable; nullptr: the value is the label
    /// The character of each shift level. One character: the same at every level. Two: nothing at
    /// the last one.
    std::u16string_view values;
    int nRow;
    int nColumn;
    int nColumnSpan;

    const KeyStyleSpec &look() const { return keyStyle(style); }
    KeyPad pad() const { return look().pad; }
    bool isLetter() const { return values.size() > 1; }
    /// The character at the shift level \a level, or the null character.
    QChar value(int level) const;
    /// The label at the shift level \a level, with "&" doubled as a button wants it.
    QString text(int level) const;
};

constexpr int ShiftLevels = 3;

/// The keys of all pads, one row per key. The rows of a pad follow each other in the order in which
/// the focus visits them: the first key first, OK last.
std::span<const KeySpec> inputKeys();

/// The codes by which editing keys leave the on-screen keyboard as characters.
namespace InputCode {
constexpr char16_t Tab = 1;
constexpr char16_t Backtab = 2;
constexpr char16_t Backspace = 3;
constexpr char16_t Left = 18;
constexpr char16_t Right = 20;
} // namespace InputCode
