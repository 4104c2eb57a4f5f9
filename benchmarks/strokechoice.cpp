#include "benchmarks/strokechoice.h"

#include <algorithm>
#include <iterator>
#include <linux/input-event-codes.h>

namespace {

// The keypad's and a keyboard's keys that move and press; twice what is pressed more often.
constexpr int MovingKeys[] = {
    KEY_ENTER, KEY_ENTER, KEY_SPACE, KEY_SPACE, KEY_KPENTER, KEY_TAB,   KEY_TAB, KEY_S,
    KEY_T,     KEY_R,     KEY_UP,    KEY_DOWN,  KEY_LEFT,    KEY_RIGHT, KEY_ESC,
};
constexpr int HammeringKeys[] = {KEY_ENTER, KEY_SPACE};
// From the first key of the on-screen keyboard back to its last ones, OK and Cancel.
constexpr int LeavingKeys[] = {KEY_T, KEY_T, KEY_S, KEY_ENTER};
constexpr int Digits[] = {
    KEY_1,   KEY_2,   KEY_3,   KEY_4,   KEY_5,   KEY_6,   KEY_7,   KEY_8,   KEY_9,   KEY_0,
    KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4, KEY_KP5, KEY_KP6, KEY_KP7, KEY_KP8, KEY_KP9, KEY_KP0,
};
constexpr int LastKey = KEY_COMPOSE; // of a PC keyboard

constexpr int Longest = 4; // keys held together

/// Ended by KEY_RESERVED where there are fewer.
using Combination = int[Longest];
constexpr Combination Combinations[] = {
    // Close, quit, reboot
    {KEY_LEFTALT, KEY_F4},
    {KEY_LEFTCTRL, KEY_LEFTALT, KEY_BACKSPACE},
    {KEY_LEFTCTRL, KEY_LEFTALT, KEY_DELETE},
    {KEY_LEFTCTRL, KEY_LEFTALT, KEY_ESC},
    {KEY_LEFTCTRL, KEY_Q},
    {KEY_LEFTCTRL, KEY_W},
    {KEY_LEFTCTRL, KEY_C},
    {KEY_LEFTCTRL, KEY_BACKSLASH},
    {KEY_LEFTALT, KEY_SYSRQ, KEY_B},
    {KEY_SYSRQ},
    {KEY_POWER},
    {KEY_SLEEP},
    // Other consoles
    {KEY_LEFTCTRL, KEY_LEFTALT, KEY_F1},
    {KEY_LEFTCTRL, KEY_LEFTALT, KEY_F2},
    {KEY_LEFTCTRL, KEY_LEFTALT, KEY_F7},
    {KEY_LEFTCTRL, KEY_LEFTALT, KEY_F12},
    {KEY_RIGHTALT, KEY_F1},
    {KEY_RIGHTALT, KEY_F3},
    {KEY_LEFTALT, KEY_F2},
    {KEY_RIGHTALT, KEY_LEFT},
    {KEY_LEFTALT, KEY_RIGHT},
    {KEY_SCROLLLOCK},
    {KEY_PAUSE},
    // Other windows, menus and help
    {KEY_LEFTALT, KEY_TAB},
    {KEY_LEFTALT, KEY_LEFTSHIFT, KEY_TAB},
    {KEY_LEFTALT, KEY_ESC},
    {KEY_LEFTCTRL, KEY_ESC},
    {KEY_LEFTCTRL, KEY_TAB},
    {KEY_LEFTMETA},
    {KEY_LEFTMETA, KEY_L},
    {KEY_LEFTALT, KEY_SPACE},
    {KEY_COMPOSE},
    {KEY_LEFTSHIFT, KEY_F10},
    {KEY_F1},
    {KEY_LEFTSHIFT, KEY_F1},
    // Around in a wizard: its own keys and the letters of its buttons
    {KEY_LEFTALT, KEY_LEFT},
    {KEY_LEFTALT, KEY_N},
    {KEY_LEFTALT, KEY_B},
    {KEY_LEFTALT, KEY_C},
    {KEY_LEFTALT, KEY_S},
    {KEY_LEFTALT, KEY_O},
    {KEY_LEFTALT, KEY_ENTER},
    {KEY_LEFTCTRL, KEY_ENTER},
    {KEY_LEFTSHIFT, KEY_ENTER},
    {KEY_LEFTSHIFT, KEY_TAB},
    {KEY_LEFTSHIFT, KEY_SPACE},
    {KEY_BACK},
    {KEY_FORWARD},
    // Into a field
    {KEY_LEFTCTRL, KEY_V},
    {KEY_LEFTSHIFT, KEY_INSERT},
    {KEY_LEFTCTRL, KEY_A},
    {KEY_LEFTCTRL, KEY_Z},
};

std::span<const int> held(const Combination &combination)
{
    return {combination, std::find(std::begin(combination), std::end(combination), KEY_RESERVED)};
}

template <typename Range>
bool contains(const Range &range, int nValue)
{
    return std::find(std::begin(range), std::end(range), nValue) != std::end(range);
}

} // namespace

StrokeChoice::StrokeChoice(std::mt19937 &source, bool bWithDigits)
    : random(source), bDigits(bWithDigits)
{ }

int StrokeChoice::number(int nBelow)
{
    return int(random() % unsigned(nBelow));
}

void StrokeChoice::changeMood()
{
    mood = Mood(number(5));
    // The keyboard for the password keeps who does not press Escape for a long time.
    nMoodKeys =
        mood == Mood::Everything || mood == Mood::Combinations ? 40 + number(400) : 20 + number(80);
    constexpr int Bursts[] = {1, 1, 4, 16};
    constexpr int Pauses[] = {0, 5, 15, 30};
    nLongestBurst = Bursts[number(int(std::size(Bursts)))];
    nLongestPause = Pauses[number(int(std::size(Pauses)))];
}

Stroke StrokeChoice::next()
{
    if (nMoodKeys-- <= 0) {
        changeMood();
    }
    Stroke stroke;
    const int nChoice = number(10);
    if (mood == Mood::Hammering && nChoice < 9) {
        stroke.codes = oneOf(HammeringKeys);
    } else if (mood == Mood::Leaving && nChoice < 9) {
        stroke.codes = oneOf(LeavingKeys);
    } else if (mood == Mood::Combinations ? nChoice < 7 : nChoice == 0) {
        stroke.codes = held(Combinations[number(int(std::size(Combinations)))]);
    } else if (nChoice == 1) {
        stroke.codes = anyKey();
    } else if (nChoice < 5 && bDigits) {
        stroke.codes = oneOf(Digits);
    } else {
        stroke.codes = oneOf(MovingKeys);
    }
    if (mood == Mood::NoEscape && contains(stroke.codes, KEY_ESC)) {
        stroke.codes = oneOf(HammeringKeys);
    }
    stroke.nRepeats = number(20) == 0 ? 1 + number(8) : 0;
    return stroke;
}

std::span<const int> StrokeChoice::oneOf(std::span<const int> keys)
{
    nSingle = keys[size_t(number(int(keys.size())))];
    return {&nSingle, 1};
}

std::span<const int> StrokeChoice::anyKey()
{
    do {
        nSingle = 1 + number(LastKey);
    } while (!bDigits && contains(Digits, nSingle));
    return {&nSingle, 1};
}

int StrokeChoice::burst()
{
    return 1 + number(nLongestBurst);
}

int StrokeChoice::pause()
{
    return number(nLongestPause + 1);
}

QByteArray StrokeChoice::name(const Stroke &stroke)
{
    QByteArray text;
    for (const int nCode : stroke.codes) {
        text += (text.isEmpty() ? "" : "+") + QByteArray::number(nCode);
    }
    return stroke.nRepeats > 0 ? text + '*' + QByteArray::number(stroke.nRepeats) : text;
}
