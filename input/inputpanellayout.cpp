#include "input/inputpanellayout.h"

#include <algorithm>
#include <array>

namespace {

// The form's sizes, from which the heights grow with the screen.
constexpr QSize MaximumPanel(800, 480);
constexpr int LowestScreen = 240;
constexpr double WideRatio = 1.34;

/// What is particular about the keys of a pad. In the order of KeyPad.
struct PadShape
{
    int nColumns; ///< character keys in the longest row
    int nRows;
    KeyStyle keyStyle;
    KeyStyle specialStyle;
    KeyStyle arrowStyle;
    int nSpecialShare; ///< the special keys take one part in so many of the width
    bool bArrowPair; ///< two cursor keys stand side by side in the special block
    bool bSpaceRow; ///< the last row holds the space key between the cursor keys
};

constexpr std::array<PadShape, 3> Shapes{{
    {4, 4, KeyStyle::HexKey, KeyStyle::HexSpecial, KeyStyle::HexArrow, 3, true, false},
    {3, 4, KeyStyle::NumKey, KeyStyle::NumSpecial, KeyStyle::NumSpecial, 3, false, false},
    {10, 5, KeyStyle::AlphaKey, KeyStyle::AlphaSpecial, KeyStyle::AlphaSpecial, 6, false, true},
}};

constexpr int NarrowGap = 1;
constexpr int MinimumGap = 0; // the buttons' frames are apart by themselves
constexpr int BlockGapGrowth = 4;
constexpr int MaximumGap = 14;
/// Pixels of pad width for each pixel of the wanted gap, per column.
constexpr int WidthPerGap = 12;
constexpr int WantedGapMinimum = 2;
constexpr int WantedGapMaximum = 10;

/// \a minimum grows to \a maximum while the screen grows by \a range from the lowest one.
int grown(int minimum, int maximum, int height, int range)
{
    const int growth = qRound(double(maximum - minimum) * (height - LowestScreen) / range);
    return std::min(minimum + growth, maximum);
}

struct Share
{
    int nSize;
    int nGap;
};

/// Divides \a space into \a count equal keys and \a gaps gaps. The gaps have the wanted width
/// unless the keys reach a limit: then the gaps take up what is missing or left over.
Share share(int space, int count, int gaps, int wantedGap, int minimum, int maximum)
{
    const int size = std::clamp((space - gaps * wantedGap) / count, minimum, maximum);
    const int gap = std::clamp((space - count * size) / gaps, MinimumGap, MaximumGap);
    if (size == minimum && count * size + gaps * gap > space) {
        return {std::max(1, (space - gaps * MinimumGap) / count), MinimumGap};
    }
    return {size, size == maximum ? gap : std::min(gap, wantedGap)};
}

} // namespace

InputPanelFrame inputPanelFrame(const QSize &screen)
{
    const int width = screen.width() > 820 ? MaximumPanel.width() : screen.width();
    const int height = screen.height() > 500 ? MaximumPanel.height() : screen.height();
    const bool bWide = double(width) / height > WideRatio;

    InputPanelFrame frame{};
    frame.panel = QSize(width, height).boundedTo(MaximumPanel);
    frame.nCaptionHeight = grown(18, 40, height, 528);
    frame.nDisplayHeight = grown(31, 45, height, 240);
    const bool bUpright = screen.height() > screen.width();
    frame.groupBox = {bUpright ? width - 10 : height * 133 / 100 - (bWide ? 0 : 10),
                      height - (height > LowestScreen ? 20 : 10)};
    // Has an effect only on sizes that no usual screen has.
    frame.groupBox = frame.groupBox.boundedTo(frame.panel - QSize(10, 10));
    frame.nPadHeadroom = !bWide && width > 360 ? 40 : 0;
    return frame;
}

InputPadLayout inputPadLayout(KeyPad pad, const QSize &area, int headroom)
{
    const PadShape &shape = Shapes[static_cast<std::size_t>(pad)];
    const KeyStyleSpec &key = keyStyle(shape.keyStyle);
    const KeyStyleSpec &special = keyStyle(shape.specialStyle);
    const KeyStyleSpec &arrow = keyStyle(shape.arrowStyle);
    const int columns = shape.nColumns;
    const int wantedGap =
        std::clamp(area.width() / (columns * WidthPerGap), WantedGapMinimum, WantedGapMaximum);

    // The special keys give way before the character keys touch each other or become too small.
    const int smallestSpecial =
        shape.bArrowPair ? 2 * arrow.minimum.width() + MinimumGap : special.minimum.width();
    const int roomForSpecial = area.width() - columns * (key.minimum.width() + NarrowGap);
    int specialWidth = std::clamp(std::min(area.width() / shape.nSpecialShare, roomForSpecial),
                                  smallestSpecial, special.maximum.width());
    const Share across = share(area.width() - specialWidth, columns, columns, wantedGap,
                               key.minimum.width(), key.maximum.width());
    // What is too little for another pixel on every key sets the blocks apart, then widens the
    // special keys.
    const int rest = area.width() - specialWidth - columns * (across.nSize + across.nGap);
    const int apart = std::clamp(rest, 0, BlockGapGrowth);
    const int widestSpecial = shape.bArrowPair
        ? std::min(special.maximum.width(), 2 * arrow.maximum.width() + across.nGap)
        : special.maximum.width();
    specialWidth = std::min(specialWidth + rest - apart, widestSpecial);
    const int height = area.height() - headroom;
    const Share down = share(height, shape.nRows, shape.nRows - 1, wantedGap, key.minimum.height(),
                             key.maximum.height());

    InputPadLayout layout{};
    layout.key = {across.nSize, down.nSize};
    layout.special = {specialWidth, down.nSize};
    layout.arrow = {shape.bArrowPair ? (specialWidth - across.nGap) / 2 : specialWidth, down.nSize};
    layout.nGap = across.nGap;
    layout.nBlockGap = across.nGap + apart;
    layout.nRowGap = down.nGap;
    const int block = columns * across.nSize + (columns - 1) * across.nGap;
    if (shape.bSpaceRow) {
        const int room = block - 2 * (specialWidth + across.nGap);
        layout.nSpaceWidth = std::min(room, keyStyle(KeyStyle::AlphaSpace).maximum.width());
    }
    const int leftOver = area.width() - block - layout.nBlockGap - specialWidth;
    const int below = height - shape.nRows * down.nSize - (shape.nRows - 1) * down.nGap;
    layout.margins = {leftOver / 2, below / 2, leftOver - leftOver / 2, below - below / 2};
    return layout;
}
