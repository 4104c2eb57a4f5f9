#pragma once

#include <QString>

#include <algorithm>
#include <span>

/// Text of a fixed-size buffer that the firmware library has filled, in the local 8-bit encoding.
///
/// The text ends at the first NUL or, when there is none, with the buffer: no byte behind
/// \a buffer is ever read.
inline QString firmwareText(std::span<const char> buffer)
{
    const auto end = std::find(buffer.begin(), buffer.end(), '\0');
    return QString::fromLocal8Bit(buffer.data(), end - buffer.begin());
}
