#pragma once

#include "input/inputkeys.h"

/// What a key of the small keypad, or of a keyboard, does to the on-screen keyboard.
enum class KeypadEffect {
    None,
    Character, ///< presses the key of the shown pad that has the character
    Backspace,
    Left,
    Right,
    Press, ///< presses the focused key
    NextKey, ///< moves the focus
    PreviousKey,
};

struct KeypadKey
{
    int nKey = 0; ///< Qt::Key
    KeypadEffect effect = KeypadEffect::None;
    bool bRepeats = false; ///< while it is held, by the panel
    bool bReleaseCounts = false; ///< its release ends a repeat; others concern nobody here
    bool bKeyboardRepeats = false; ///< the repeats of the keyboard itself count
};

/// What the Qt::Key \a key does while \a pad is shown.
KeypadKey keypadKey(int key, KeyPad pad);
