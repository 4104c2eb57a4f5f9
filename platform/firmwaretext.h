#pragma once

#include <QString>

#include <span>

#include <string.h>

/// Text of a fixed-size buffer that the firmware library has filled, in the local 8-bit encoding.
///
/// The text ends at the first NUL or, when there is none, with the buffer: no byte behind
/// \a buffer is ever read.
inline QString firmwareText(std::span<const char> buffer)
{
    const auto length = static_cast<qsizetype>(strnlen(buffer.data(), buffer.size()));
    return QString::fromLocal8Bit(buffer.data(), length);
}
