#include "simulator/keytable.h"

#include <QDataStream>
#include <QIODevice>

#include <algorithm>
#include <array>
#include <iterator>
#include <linux/input-event-codes.h>

namespace {

/// A key that types a character: without, with Shift, with AltGr (0: nothing).
struct CharacterKey
{
    int nCode;
    char16_t plain;
    char16_t shifted;
    char16_t altGr = 0;
};

/// A key with a name.
struct NamedKey
{
    const char *pName;
    int nCode;
    Qt::Key key;
};

constexpr CharacterKey UsKeys[] = {
    {KEY_1, u'1', u'!'},          {KEY_2, u'2', u'@'},           {KEY_3, u'3', u'#'},
    {KEY_4, u'4', u'$'},          {KEY_5, u'5', u'%'},           {KEY_6, u'6', u'^'},
    {KEY_7, u'7', u'&'},          {KEY_8, u'8', u'*'},           {KEY_9, u'9', u'('},
    {KEY_0, u'0', u')'},          {KEY_MINUS, u'-', u'_'},       {KEY_EQUAL, u'=', u'+'},
    {KEY_Q, u'q', u'Q'},          {KEY_W, u'w', u'W'},           {KEY_E, u'e', u'E'},
    {KEY_R, u'r', u'R'},          {KEY_T, u't', u'T'},           {KEY_Y, u'y', u'Y'},
    {KEY_U, u'u', u'U'},          {KEY_I, u'i', u'I'},           {KEY_O, u'o', u'O'},
    {KEY_P, u'p', u'P'},          {KEY_LEFTBRACE, u'[', u'{'},   {KEY_RIGHTBRACE, u']', u'}'},
    {KEY_A, u'a', u'A'},          {KEY_S, u's', u'S'},           {KEY_D, u'd', u'D'},
    {KEY_F, u'f', u'F'},          {KEY_G, u'g', u'G'},           {KEY_H, u'h', u'H'},
    {KEY_J, u'j', u'J'},          {KEY_K, u'k', u'K'},           {KEY_L, u'l', u'L'},
    {KEY_SEMICOLON, u';', u':'},  {KEY_APOSTROPHE, u'\'', u'"'}, {KEY_GRAVE, u'`', u'~'},
    {KEY_BACKSLASH, u'\\', u'|'}, {KEY_Z, u'z', u'Z'},           {KEY_X, u'x', u'X'},
    {KEY_C, u'c', u'C'},          {KEY_V, u'v', u'V'},           {KEY_B, u'b', u'B'},
    {KEY_N, u'n', u'N'},          {KEY_M, u'm', u'M'},           {KEY_COMMA, u',', u'<'},
    {KEY_DOT, u'.', u'>'},        {KEY_SLASH, u'/', u'?'},       {KEY_SPACE, u' ', u' '},
};

constexpr CharacterKey GermanKeys[] = {
    {KEY_1, u'1', u'!'},
    {KEY_2, u'2', u'"', u'\u00b2'},
    {KEY_3, u'3', u'\u00a7', u'\u00b3'},
    {KEY_4, u'4', u'$'},
    {KEY_5, u'5', u'%'},
    {KEY_6, u'6', u'&'},
    {KEY_7, u'7', u'/', u'{'},
    {KEY_8, u'8', u'(', u'['},
    {KEY_9, u'9', u')', u']'},
    {KEY_0, u'0', u'=', u'}'},
    {KEY_MINUS, u'\u00df', u'?', u'\\'},
    {KEY_EQUAL, u'\u00b4', u'`'},
    {KEY_Q, u'q', u'Q', u'@'},
    {KEY_W, u'w', u'W'},
    {KEY_E, u'e', u'E', u'\u20ac'},
    {KEY_R, u'r', u'R'},
    {KEY_T, u't', u'T'},
    {KEY_Y, u'z', u'Z'},
    {KEY_U, u'u', u'U'},
    {KEY_I, u'i', u'I'},
    {KEY_O, u'o', u'O'},
    {KEY_P, u'p', u'P'},
    {KEY_LEFTBRACE, u'\u00fc', u'\u00dc'},
    {KEY_RIGHTBRACE, u'+', u'*', u'~'},
    {KEY_A, u'a', u'A'},
    {KEY_S, u's', u'S'},
    {KEY_D, u'd', u'D'},
    {KEY_F, u'f', u'F'},
    {KEY_G, u'g', u'G'},
    {KEY_H, u'h', u'H'},
    {KEY_J, u'j', u'J'},
    {KEY_K, u'k', u'K'},
    {KEY_L, u'l', u'L'},
    {KEY_SEMICOLON, u'\u00f6', u'\u00d6'},
    {KEY_APOSTROPHE, u'\u00e4', u'\u00c4'},
    {KEY_GRAVE, u'^', u'\u00b0'},
    {KEY_BACKSLASH, u'#', u'\''},
    {KEY_Z, u'y', u'Y'},
    {KEY_X, u'x', u'X'},
    {KEY_C, u'c', u'C'},
    {KEY_V, u'v', u'V'},
    {KEY_B, u'b', u'B'},
    {KEY_N, u'n', u'N'},
    {KEY_M, u'm', u'M', u'\u00b5'},
    {KEY_COMMA, u',', u';'},
    {KEY_DOT, u'.', u':'},
    {KEY_SLASH, u'-', u'_'},
    {KEY_102ND, u'<', u'>', u'|'},
    {KEY_SPACE, u' ', u' '},
};

constexpr NamedKey NamedKeys[] = {
    {"Return", KEY_ENTER, Qt::Key_Return},
    {"Enter", KEY_KPENTER, Qt::Key_Enter},
    {"Tab", KEY_TAB, Qt::Key_Tab},
    {"Backspace", KEY_BACKSPACE, Qt::Key_Backspace},
    {"Delete", KEY_DELETE, Qt::Key_Delete},
    {"Insert", KEY_INSERT, Qt::Key_Insert},
    {"Escape", KEY_ESC, Qt::Key_Escape},
    {"Left", KEY_LEFT, Qt::Key_Left},
    {"Right", KEY_RIGHT, Qt::Key_Right},
    {"Up", KEY_UP, Qt::Key_Up},
    {"Down", KEY_DOWN, Qt::Key_Down},
    {"Home", KEY_HOME, Qt::Key_Home},
    {"End", KEY_END, Qt::Key_End},
    {"PageUp", KEY_PAGEUP, Qt::Key_PageUp},
    {"PageDown", KEY_PAGEDOWN, Qt::Key_PageDown},
    {"CapsLock", KEY_CAPSLOCK, Qt::Key_CapsLock},
    {"F1", KEY_F1, Qt::Key_F1},
    {"F2", KEY_F2, Qt::Key_F2},
    {"F3", KEY_F3, Qt::Key_F3},
    {"F4", KEY_F4, Qt::Key_F4},
    {"F5", KEY_F5, Qt::Key_F5},
    {"F6", KEY_F6, Qt::Key_F6},
    {"F7", KEY_F7, Qt::Key_F7},
    {"F8", KEY_F8, Qt::Key_F8},
    {"F9", KEY_F9, Qt::Key_F9},
    {"F10", KEY_F10, Qt::Key_F10},
    {"F11", KEY_F11, Qt::Key_F11},
    {"F12", KEY_F12, Qt::Key_F12},
};

/// Modifier bits of a key map entry.
enum KeyMapModifier { Plain = 0x00, Shift = 0x01, AltGr = 0x02, Control = 0x04, Alt = 0x08 };
/// Flags of a key map entry.
enum KeyMapFlag { NoFlag = 0x00, Letter = 0x02, Modifier = 0x04 };

struct ModifierKey
{
    const char *pName;
    int nCode;
    Qt::Key key;
    KeyMapModifier modifier;
};

constexpr ModifierKey ModifierKeys[] = {
    {"Shift", KEY_LEFTSHIFT, Qt::Key_Shift, Shift},
    {"Ctrl", KEY_LEFTCTRL, Qt::Key_Control, Control},
    {"Alt", KEY_LEFTALT, Qt::Key_Alt, Alt},
    {"AltGr", KEY_RIGHTALT, Qt::Key_AltGr, AltGr},
    {"RightShift", KEY_RIGHTSHIFT, Qt::Key_Shift, Shift},
    {"RightCtrl", KEY_RIGHTCTRL, Qt::Key_Control, Control},
};

std::optional<KeyStroke> characterStroke(QChar character)
{
    for (const CharacterKey &key : UsKeys) {
        if (character == key.plain) {
            return KeyStroke{{}, key.nCode};
        }
        if (character == key.shifted) {
            return KeyStroke{{KEY_LEFTSHIFT}, key.nCode};
        }
    }
    return std::nullopt;
}

template <typename Key, std::size_t Count>
const Key *findByName(const Key (&keys)[Count], const QString &name)
{
    const auto it = std::find_if(std::begin(keys), std::end(keys), [&](const Key &key) {
        return name.compare(QLatin1String(key.pName), Qt::CaseInsensitive) == 0;
    });
    return it == std::end(keys) ? nullptr : it;
}

/// The keystroke of "Shift+Tab", "Left:800" or "Ctrl+a".
std::optional<KeyStroke> namedStroke(const QString &name)
{
    constexpr int LongestHoldMs = 60000;
    const qsizetype colon = name.indexOf(u':');
    bool ok = true;
    const int holdMs = colon > 0 ? name.mid(colon + 1).toInt(&ok) : 0;
    if (!ok || holdMs < 0 || holdMs > LongestHoldMs) {
        return std::nullopt;
    }
    QStringList parts = name.left(colon).split(u'+');
    const QString last = parts.takeLast();
    KeyStroke stroke;
    if (last == u"lt") {
        stroke = *characterStroke(u'<');
    } else if (const NamedKey *pKey = findByName(NamedKeys, last)) {
        stroke.nCode = pKey->nCode;
    } else if (const ModifierKey *pModifier = findByName(ModifierKeys, last)) {
        stroke.nCode = pModifier->nCode;
    } else if (const auto character = characterStroke(last.size() == 1 ? last.front() : QChar())) {
        stroke = *character;
    } else {
        return std::nullopt;
    }
    for (const QString &part : parts) {
        const ModifierKey *pModifier = findByName(ModifierKeys, part);
        if (!pModifier) {
            return std::nullopt;
        }
        stroke.modifiers.append(pModifier->nCode);
    }
    stroke.hold = std::chrono::milliseconds(holdMs);
    return stroke;
}

} // namespace

std::optional<QList<KeyStroke>> keyStrokes(const QString &text, QString *wrong)
{
    QList<KeyStroke> strokes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        std::optional<KeyStroke> stroke;
        if (text.at(i) == u'<') {
            const qsizetype end = text.indexOf(u'>', i);
            *wrong = text.mid(i, end < 0 ? -1 : end - i + 1);
            if (end > i + 1) {
                stroke = namedStroke(text.mid(i + 1, end - i - 1));
                i = end;
            }
        } else {
            *wrong = text.at(i);
            stroke = characterStroke(text.at(i));
        }
        if (!stroke) {
            return std::nullopt;
        }
        strokes.append(*stroke);
    }
    return strokes;
}

QByteArray germanKeyMap()
{
    constexpr quint32 Magic = 0x514d4150; // "QMAP"
    constexpr quint32 Version = 1;
    constexpr quint16 NoCharacter = 0xffff;

    QByteArray entries;
    QDataStream entryStream(&entries, QIODevice::WriteOnly);
    quint32 count = 0;
    const auto add = [&](int code, quint16 character, quint32 key, int modifiers, int flags,
                         int special = 0) {
        entryStream << quint16(code) << character << key << quint8(modifiers) << quint8(flags)
                    << quint16(special);
        ++count;
    };
    for (const CharacterKey &key : GermanKeys) {
        const QChar upper = QChar(key.plain).toUpper();
        const bool isLetter = upper == key.shifted && upper != key.plain;
        const int flags = isLetter ? Letter : NoFlag;
        // Qt names a letter's key by its capital, any other key by what it types.
        add(key.nCode, key.plain, isLetter ? key.shifted : key.plain, Plain, flags);
        add(key.nCode, key.shifted, key.shifted, Shift, flags);
        if (key.altGr != 0) {
            add(key.nCode, key.altGr, key.altGr, AltGr, NoFlag);
        }
        if (isLetter) {
            add(key.nCode, key.plain, quint32(Qt::ControlModifier) | key.shifted, Control, flags);
        }
    }
    for (const NamedKey &key : NamedKeys) {
        add(key.nCode, NoCharacter, key.key, Plain, NoFlag);
    }
    for (const ModifierKey &key : ModifierKeys) {
        add(key.nCode, NoCharacter, key.key, Plain, Modifier, key.modifier);
    }

    QByteArray file;
    QDataStream stream(&file, QIODevice::WriteOnly);
    stream << Magic << Version << count << quint32(0);
    return file + entries;
}
