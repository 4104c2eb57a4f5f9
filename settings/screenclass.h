#pragma once

#include <QSize>

#include <algorithm>
#include <array>
#include <cstddef>

/// \file
/// The screen classes: dialogs, the keyboard, texts and fonts are looked up by the class of the
/// screen, which is known by its index in one table. Everything that is particular about a class
/// stands in its row; nothing else names a class by its index. For any thread.

/// How many characters a line of a message box may have.
enum class Lines { Short, Long };
/// Whether a dialog that fills the screen has room to spare for wider gaps and higher buttons.
enum class Room { Tight, Ample };

/// Widget classes whose fonts are scaled, by exact class name; the column of their factor.
struct FontFactorColumn
{
    const char *pClassName;
    std::size_t nColumn;
};
inline constexpr FontFactorColumn FontFactorColumns[] = {
    {"QLabel", 0},      {"QLineEdit", 1},    {"QVeltaLineEdit", 2}, {"QButton", 3},
    {"QPushButton", 4}, {"QGroupBox", 5},    {"QTableView", 6},     {"QListWidget", 6},
    {"QListView", 7},   {"QLCDNumber", 8},   {"QPlainTextEdit", 9}, {"QMessageBox", 10},
    {"QTextEdit", 11},  {"QToolButton", 12},
};
constexpr std::size_t FontFactorCount = 13;

struct ScreenClassRow
{
    quint16 nWidth; ///< pixels
    quint16 nHeight;
    quint16 nFixedWidth; ///< of the wizard; 0: the wizard fills the screen
    Lines lines;
    Room room;
    std::array<quint8, FontFactorCount> fontFactors; ///< tenths, by FontFactorColumn::nColumn
};

/// Sorted by size: a height that is not listed belongs to the first row of its width. Row 0 is a
/// placeholder that no screen has.
// clang-format off
inline constexpr auto ScreenClasses = std::to_array<ScreenClassRow>({
    {0, 0, 0, Lines::Short, Room::Tight, {{10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10}}},
    {240, 320, 0, Lines::Short, Room::Tight, {{10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10}}},
    {272, 480, 0, Lines::Short, Room::Tight, {{10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10}}},
    {320, 240, 0, Lines::Short, Room::Tight, {{10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10}}},
    {480, 272, 400, Lines::Short, Room::Tight, {{10, 9, 9, 10, 10, 10, 9, 10, 10, 10, 12, 7, 7}}},
    {480, 640, 0, Lines::Short, Room::Ample, {{12, 12, 12, 12, 12, 12, 12, 12, 12, 14, 12, 12, 12}}},
    {480, 800, 0, Lines::Short, Room::Ample, {{12, 12, 10, 12, 12, 12, 12, 12, 12, 14, 12, 7, 7}}},
    {600, 800, 0, Lines::Short, Room::Ample, {{12, 12, 12, 12, 12, 12, 12, 12, 12, 14, 12, 12, 12}}},
    {640, 480, 0, Lines::Long, Room::Ample, {{12, 12, 12, 12, 12, 12, 12, 12, 12, 14, 12, 12, 12}}},
    {720, 1280, 640, Lines::Long, Room::Ample, {{12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12}}},
    {768, 1024, 640, Lines::Long, Room::Ample, {{12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12}}},
    {768, 1366, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 18, 20, 20, 20, 20, 20, 20, 14, 14}}},
    {800, 480, 640, Lines::Long, Room::Ample, {{15, 15, 10, 20, 14, 15, 14, 14, 14, 18, 15, 11, 11}}},
    {800, 600, 640, Lines::Long, Room::Ample, {{15, 15, 15, 20, 15, 15, 15, 15, 15, 20, 15, 15, 15}}},
    {800, 1280, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1024, 768, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1024, 1280, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1050, 1680, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1080, 1920, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1280, 720, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1280, 800, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1280, 1024, 640, Lines::Long, Room::Ample, {{20, 20, 20, 20, 18, 20, 20, 20, 20, 20, 15, 20, 20}}},
    {1366, 768, 640, Lines::Long, Room::Ample, {{20, 20, 18, 20, 18, 20, 18, 20, 20, 20, 20, 14, 14}}},
    {1680, 1050, 640, Lines::Long, Room::Ample, {{22, 22, 22, 22, 20, 22, 22, 22, 22, 22, 20, 22, 22}}},
    {1920, 1080, 640, Lines::Long, Room::Ample, {{20, 20, 22, 22, 20, 22, 22, 22, 22, 22, 20, 22, 22}}},
});
// clang-format on

constexpr int ScreenClassCount = int(ScreenClasses.size());

/// Height in pixels below which no finger hits a button, on whatever screen.
constexpr int LeastButtonHeight = 30;

/// The row of the class \a index, 0 to ScreenClassCount - 1.
constexpr const ScreenClassRow &screenClassRow(int index)
{
    return ScreenClasses[static_cast<std::size_t>(index)];
}

/// Screen size in pixels of the class \a index.
constexpr QSize screenSize(int index)
{
    return {screenClassRow(index).nWidth, screenClassRow(index).nHeight};
}

/// The class of exactly this size; a size that is not in the table does not compile.
consteval int screenClassOf(int width, int height)
{
    int index = 0;
    while (screenSize(index) != QSize(width, height)) {
        ++index;
    }
    return index;
}

static_assert(std::ranges::is_sorted(ScreenClasses, [](const auto &left, const auto &right) {
    return left.nWidth != right.nWidth ? left.nWidth < right.nWidth : left.nHeight < right.nHeight;
}));

/// The class of every screen whose width is not in the table.
constexpr int FallbackScreenClass = screenClassOf(640, 480);

/// Which class a screen 800 pixels wide has when its height is not in the table.
enum class UnlistedHeightAt800 {
    As800x480, ///< the settings' and the info box's classification
    As800x600, ///< the font scaling's
};

/// What a screen is classified as.
struct ScreenClass
{
    int nIndex; ///< of its row, never 0
    quint16 nFixedWidth; ///< pixels; the fallback class has its own beyond its row's
    constexpr bool isFixedWidth() const { return nFixedWidth > 0; }
};

/// Classifies a screen of \a width x \a height pixels.
constexpr ScreenClass screenClass(int width, int height, UnlistedHeightAt800 rule)
{
    constexpr quint16 LargeFixedWidth = 640;
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
        found = screenClassOf(800, 600);
    }
    return {found, screenClassRow(found).nFixedWidth};
}
