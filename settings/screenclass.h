#pragma once

#include <QSize>

#include <array>
#include <cstddef>

/// The class of a screen: dialogs, the keyboard and fonts are looked up by it.
struct ScreenClass
{
    int nIndex; ///< 1 to 24; see screenSize()
    quint16 nFixedWidth; ///< width in pixels of the wizard; 0: the wizard fills the screen
    constexpr bool isFixedWidth() const { return nFixedWidth > 0; }
};

/// Which class a screen 800 pixels wide has when its height is not in the table.
enum class UnlistedHeightAt800 {
    As800x480, ///< the settings' and the info box's classification
    As800x600, ///< the font scaling's
};

constexpr int ScreenClassCount = 25;
/// The class of every screen whose width is not in the table.
constexpr int FallbackScreenClass = 8;

namespace ScreenClassPrivate {
struct Row
{
    quint16 nWidth;
    quint16 nHeight;
    quint16 nFixedWidth;
};

/// Sorted by width: a height that is not listed belongs to the first row of its width. Row 0 is a
/// placeholder that no screen has.
inline constexpr std::array<Row, ScreenClassCount> Rows{{
    {0, 0, 0}, // 0
    {240, 320, 0}, // 1
    {272, 480, 0}, // 2
    {320, 240, 0}, // 3
    {480, 272, 400}, // 4
    {480, 640, 0}, // 5
    {480, 800, 0}, // 6
    {600, 800, 0}, // 7
    {640, 480, 0}, // 8
    {720, 1280, 640}, // 9
    {768, 1024, 640}, // 10
    {768, 1366, 640}, // 11
    {800, 480, 640}, // 12
    {800, 600, 640}, // 13
    {800, 1280, 640}, // 14
    {1024, 768, 640}, // 15
    {1024, 1280, 640}, // 16
    {1050, 1680, 640}, // 17
    {1080, 1920, 640}, // 18
    {1280, 720, 640}, // 19
    {1280, 800, 640}, // 20
    {1280, 1024, 640}, // 21
    {1366, 768, 640}, // 22
    {1680, 1050, 640}, // 23
    {1920, 1080, 640}, // 24
}};
constexpr int Class800x600 = 13;
constexpr quint16 LargeFixedWidth = 640;
} // namespace ScreenClassPrivate

/// Screen size in pixels of the class \a index, 0 to 24.
constexpr QSize screenSize(int index)
{
    const auto &row = ScreenClassPrivate::Rows[static_cast<std::size_t>(index)];
    return {row.nWidth, row.nHeight};
}

/// Classifies a screen of \a width x \a height pixels.
constexpr ScreenClass screenClass(int width, int height, UnlistedHeightAt800 rule)
{
    using namespace ScreenClassPrivate;
    int found = 0;
    for (int i = 1; i < ScreenClassCount; ++i) {
        if (screenSize(i) == QSize(width, height)) {
            found = i;
            break;
        }
        if (screenSize(i).width() == width && found == 0) {
            found = i;
        }
    }
    if (found == 0) {
        return {FallbackScreenClass,
                width > screenSize(FallbackScreenClass).width() ? LargeFixedWidth : quint16(0)};
    }
    if (width == 800 && rule == UnlistedHeightAt800::As800x600
        && screenSize(found).height() != height) {
        found = Class800x600;
    }
    return {found, Rows[static_cast<std::size_t>(found)].nFixedWidth};
}
