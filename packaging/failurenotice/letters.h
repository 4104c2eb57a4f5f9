#pragma once

#include <array>
#include <cstdint>

/// A letter of the built-in font: LetterHeight rows from above, of each the LetterWidth lowest
/// bits, the leftmost the highest.
using Letter = std::array<std::uint8_t, 7>;

constexpr int LetterWidth = 5;
constexpr int LetterHeight = 7;

/// The letter for \a character, small letters as capitals; a question mark for what the font does
/// not have.
const Letter &letterFor(char character);
