#include "input/inputkeys.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr std::array<InputModeSpec, 6> Modes{{
    {"NumInput", KeyPad::Num, false},
    {"HexInput", KeyPad::Hex, false},
    {"AlphaNumInput", KeyPad::AlphaNum, false},
    {"NumInputPW", KeyPad::Num, true},
    {"HexInputPW", KeyPad::Hex, true},
    {"AlphaNumInputPW", KeyPad::AlphaNum, true},
}};

constexpr std::array<KeyStyleSpec, 9> Styles{{
    {KeyStyle::HexKey, KeyPad::Hex, false, {45, 30}, {67, 72}, 14},
    {KeyStyle::HexArrow, KeyPad::Hex, true, {30, 30}, {70, 72}, 12},
    {KeyStyle::HexSpecial, KeyPad::Hex, true, {60, 30}, {152, 72}, 12},
    {KeyStyle::NumKey, KeyPad::Num, false, {45, 30}, {132, 72}, 14},
    {KeyStyle::NumSpecial, KeyPad::Num, true, {70, 30}, {152, 72}, 12},
    {KeyStyle::AlphaKey, KeyPad::AlphaNum, false, {20, 25}, {40, 50}, 9},
    {KeyStyle::AlphaSpecial, KeyPad::AlphaNum, true, {40, 25}, {70, 50}, 9},
    {KeyStyle::AlphaCancel, KeyPad::AlphaNum, true, {40, 25}, {70, 50}, 8},
    {KeyStyle::AlphaSpace, KeyPad::AlphaNum, false, {60, 25}, {300, 50}, 9},
}};

constexpr bool inEnumOrder()
{
    for (std::size_t i = 0; i < Styles.size(); ++i) {
        if (Styles[i].style != static_cast<KeyStyle>(i)) {
            return false;
        }
    }
    return true;
}
static_assert(inEnumOrder());

constexpr KeySpec character(const char *name, KeyStyle style, std::u16string_view values, int row,
                            int column)
{
    return {name, style, KeyAction::Character, nullptr, values, row, column, 1};
}

constexpr KeySpec special(const char *name, KeyStyle style, KeyAction action, const char *label,
                          int row, int column, int columnSpan = 1)
{
    return {name, style, action, label, {}, row, column, columnSpan};
}

constexpr KeySpec space(const char *name, KeyStyle style, const char *label, int row, int column)
{
    return {name, style, KeyAction::Character, label, u" ", row, column, 1};
}

/// The alphanumeric pad has less room for it than the others.
struct NarrowLabel
{
    const char *pText;
    const char *pComment;
};
constexpr NarrowLabel NarrowCancel = QT_TRANSLATE_NOOP3("VeltaInputPanel", "Cancel", "narrow key");

// clang-format off
constexpr KeySpec AllKeys[] = {
    character("panelButton_h0", KeyStyle::HexKey, u"0", 0, 0),
    character("panelButton_h1", KeyStyle::HexKey, u"1", 0, 1),
    character("panelButton_h2", KeyStyle::HexKey, u"2", 0, 2),
    character("panelButton_h3", KeyStyle::HexKey, u"3", 0, 3),
    character("panelButton_h4", KeyStyle::HexKey, u"4", 1, 0),
    character("panelButton_h5", KeyStyle::HexKey, u"5", 1, 1),
    character("panelButton_h6", KeyStyle::HexKey, u"6", 1, 2),
    character("panelButton_h7", KeyStyle::HexKey, u"7", 1, 3),
    character("panelButton_h8", KeyStyle::HexKey, u"8", 2, 0),
    character("panelButton_h9", KeyStyle::HexKey, u"9", 2, 1),
    character("panelButton_hA", KeyStyle::HexKey, u"A", 2, 2),
    character("panelButton_hB", KeyStyle::HexKey, u"B", 2, 3),
    character("panelButton_hC", KeyStyle::HexKey, u"C", 3, 0),
    character("panelButton_hD", KeyStyle::HexKey, u"D", 3, 1),
    character("panelButton_hE", KeyStyle::HexKey, u"E", 3, 2),
    character("panelButton_hF", KeyStyle::HexKey, u"F", 3, 3),
    special("panelButton_hbackspace", KeyStyle::HexSpecial, KeyAction::Backspace, "<--", 0, 0, 2),
    special("panelButton_hleft", KeyStyle::HexArrow, KeyAction::Left, "<-", 1, 0),
    special("panelButton_hright", KeyStyle::HexArrow, KeyAction::Right, "->", 1, 1),
    special("panelButton_hcancel", KeyStyle::HexSpecial, KeyAction::Cancel, QT_TRANSLATE_NOOP("VeltaInputPanel", "Cancel"), 2, 0, 2),
    special("panelButton_hok", KeyStyle::HexSpecial, KeyAction::Ok, QT_TRANSLATE_NOOP("VeltaInputPanel", "OK"), 3, 0, 2),
    character("panelButton_1", KeyStyle::NumKey, u"1", 0, 0),
    character("panelButton_2", KeyStyle::NumKey, u"2", 0, 1),
    character("panelButton_3", KeyStyle::NumKey, u"3", 0, 2),
    character("panelButton_4", KeyStyle::NumKey, u"4", 1, 0),
    character("panelButton_5", KeyStyle::NumKey, u"5", 1, 1),
    character("panelButton_6", KeyStyle::NumKey, u"6", 1, 2),
    character("panelButton_7", KeyStyle::NumKey, u"7", 2, 0),
    character("panelButton_8", KeyStyle::NumKey, u"8", 2, 1),
    character("panelButton_9", KeyStyle::NumKey, u"9", 2, 2),
    character("panelButton_dot", KeyStyle::NumKey, u".", 3, 0),
    character("panelButton_0", KeyStyle::NumKey, u"0", 3, 1),
    special("panelButton_backspace", KeyStyle::NumKey, KeyAction::Backspace, "<--", 3, 2),
    special("panelButton_left", KeyStyle::NumSpecial, KeyAction::Left, "<-", 0, 0),
    special("panelButton_right", KeyStyle::NumSpecial, KeyAction::Right, "->", 1, 0),
    special("panelButton_cancel", KeyStyle::NumSpecial, KeyAction::Cancel, QT_TRANSLATE_NOOP("VeltaInputPanel", "Cancel"), 2, 0),
    special("panelButton_ok", KeyStyle::NumSpecial, KeyAction::Ok, QT_TRANSLATE_NOOP("VeltaInputPanel", "OK"), 3, 0),
    character("panelButton_a1", KeyStyle::AlphaKey, u"1", 1, 0),
    character("panelButton_a2", KeyStyle::AlphaKey, u"2", 1, 1),
    character("panelButton_a3", KeyStyle::AlphaKey, u"3", 1, 2),
    character("panelButton_a4", KeyStyle::AlphaKey, u"4", 1, 3),
    character("panelButton_a5", KeyStyle::AlphaKey, u"5", 1, 4),
    character("panelButton_a6", KeyStyle::AlphaKey, u"6", 1, 5),
    character("panelButton_a7", KeyStyle::AlphaKey, u"7", 1, 6),
    character("panelButton_a8", KeyStyle::AlphaKey, u"8", 1, 7),
    character("panelButton_a9", KeyStyle::AlphaKey, u"9", 1, 8),
    character("panelButton_a0", KeyStyle::AlphaKey, u"0", 1, 9),
    character("panelButton_aQ", KeyStyle::AlphaKey, u"qQ!", 2, 0),
    character("panelButton_aW", KeyStyle::AlphaKey, u"wW#", 2, 1),
    character("panelButton_aE", KeyStyle::AlphaKey, u"eE$", 2, 2),
    character("panelButton_aR", KeyStyle::AlphaKey, u"rR%", 2, 3),
    character("panelButton_aT", KeyStyle::AlphaKey, u"tT&", 2, 4),
    character("panelButton_aY", KeyStyle::AlphaKey, u"yY_", 2, 5),
    character("panelButton_aU", KeyStyle::AlphaKey, u"uU(", 2, 6),
    character("panelButton_aI", KeyStyle::AlphaKey, u"iI)", 2, 7),
    character("panelButton_aO", KeyStyle::AlphaKey, u"oO*", 2, 8),
    character("panelButton_aP", KeyStyle::AlphaKey, u"pP+", 2, 9),
    character("panelButton_aA", KeyStyle::AlphaKey, u"aA,", 3, 0),
    character("panelButton_aS", KeyStyle::AlphaKey, u"sS:", 3, 1),
    character("panelButton_aD", KeyStyle::AlphaKey, u"dD;", 3, 2),
    character("panelButton_aF", KeyStyle::AlphaKey, u"fF=", 3, 3),
    character("panelButton_aG", KeyStyle::AlphaKey, u"gG?", 3, 4),
    character("panelButton_aH", KeyStyle::AlphaKey, u"hH@", 3, 5),
    character("panelButton_aJ", KeyStyle::AlphaKey, u"jJ[", 3, 6),
    character("panelButton_aK", KeyStyle::AlphaKey, u"kK]", 3, 7),
    character("panelButton_aL", KeyStyle::AlphaKey, u"lL-", 3, 8),
    character("panelButton_aZ", KeyStyle::AlphaKey, u"zZ'", 4, 0),
    character("panelButton_aX", KeyStyle::AlphaKey, u"xX~", 4, 1),
    character("panelButton_aC", KeyStyle::AlphaKey, u"cC", 4, 2),
    character("panelButton_aV", KeyStyle::AlphaKey, u"vV", 4, 3),
    character("panelButton_aB", KeyStyle::AlphaKey, u"bB", 4, 4),
    character("panelButton_aN", KeyStyle::AlphaKey, u"nN", 4, 5),
    character("panelButton_aM", KeyStyle::AlphaKey, u"mM", 4, 6),
    character("panelButton_adot", KeyStyle::AlphaKey, u".", 4, 7),
    character("panelButton_aslash", KeyStyle::AlphaKey, u"/", 4, 8),
    special("panelButton_aleft", KeyStyle::AlphaSpecial, KeyAction::Left, "<-", 5, 0),
    space("panelButton_aspace", KeyStyle::AlphaSpace, QT_TRANSLATE_NOOP("VeltaInputPanel", "SPACE"), 5, 1),
    special("panelButton_aright", KeyStyle::AlphaSpecial, KeyAction::Right, "->", 5, 2),
    special("panelButton_abackspace", KeyStyle::AlphaSpecial, KeyAction::Backspace, "<--", 1, 0),
    special("panelButton_aMode", KeyStyle::AlphaSpecial, KeyAction::Mode, "aA#", 2, 0),
    special("panelButton_acancel", KeyStyle::AlphaCancel, KeyAction::Cancel, NarrowCancel.pText, 3, 0),
    special("panelButton_aok", KeyStyle::AlphaSpecial, KeyAction::Ok, QT_TRANSLATE_NOOP("VeltaInputPanel", "OK"), 4, 0),
};
// clang-format on

} // namespace

std::span<const InputModeSpec> inputModes()
{
    return Modes;
}

InputMode inputModeFromName(const QString &name)
{
    const auto found = std::find_if(Modes.begin(), Modes.end(), [&name](const auto &mode) {
        return name == QLatin1String(mode.pName);
    });
    return found == Modes.end() ? NumInput
                                : static_cast<InputMode>(std::distance(Modes.begin(), found));
}

const KeyStyleSpec &keyStyle(KeyStyle style)
{
    return Styles[static_cast<std::size_t>(style)];
}

std::span<const KeySpec> inputKeys()
{
    return AllKeys;
}

QChar KeySpec::value(int level) const
{
    if (!isLetter()) {
        return values.empty() ? QChar() : QChar(values.front());
    }
    const auto index = static_cast<std::size_t>(level);
    return index < values.size() ? QChar(values[index]) : QChar();
}

QString KeySpec::text(int level) const
{
    if (pLabel) {
        const bool bNarrow = style == KeyStyle::AlphaCancel;
        return QCoreApplication::translate("VeltaInputPanel", pLabel,
                                           bNarrow ? NarrowCancel.pComment : nullptr);
    }
    const QChar character = value(level);
    if (character.isNull()) {
        return QStringLiteral(" ");
    }
    return character == u'&' ? QStringLiteral("&&") : QString(character);
}
