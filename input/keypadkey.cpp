#include "input/keypadkey.h"

#include <algorithm>
#include <iterator>

namespace {

// The panel repeats held keys by itself, but for the cursor keys: those the keyboard repeats. A
// digit under a resting glove must not fill the field.
constexpr KeypadKey SpecialKeys[] = {
    {Qt::Key_Period, KeypadEffect::Character, false, false, false},
    {Qt::Key_Space, KeypadEffect::Press, false, true, false},
    {Qt::Key_Return, KeypadEffect::Press, false, true, false},
    {Qt::Key_Enter, KeypadEffect::Press, false, true, false},
    {Qt::Key_Backspace, KeypadEffect::Backspace, true, true, false},
    {Qt::Key_R, KeypadEffect::Backspace, true, true, false},
    {Qt::Key_S, KeypadEffect::NextKey, true, true, false},
    {Qt::Key_T, KeypadEffect::PreviousKey, true, true, false},
    {Qt::Key_Left, KeypadEffect::Left, false, false, true},
    {Qt::Key_Right, KeypadEffect::Right, false, false, true},
};

} // namespace

KeypadKey keypadKey(int key, KeyPad pad)
{
    if (key >= Qt::Key_0 && key <= Qt::Key_9) {
        return {key, KeypadEffect::Character, false, false, false};
    }
    const bool bIdle = (key == Qt::Key_Period && pad != KeyPad::Num)
        || (key == Qt::Key_Space && pad == KeyPad::AlphaNum);
    const auto *pFound = std::ranges::find(SpecialKeys, key, &KeypadKey::nKey);
    return bIdle || pFound == std::end(SpecialKeys) ? KeypadKey{} : *pFound;
}
