#pragma once

#include "input/inputkeys.h"

#include <QMargins>
#include <QSize>

/// The sizes of the on-screen keyboard on one screen. Computed without widgets; all in pixels.
struct InputPanelFrame
{
    QSize panel; ///< the keyboard itself
    QSize groupBox;
    int nCaptionHeight;
    int nDisplayHeight;
    int nPadHeadroom; ///< height of the empty row above the alphanumeric keys
};

/// The frame of the keyboard on an area of \a screen pixels.
InputPanelFrame inputPanelFrame(const QSize &screen);

/// Where the keys of one pad stand: a block of character keys and, to its right, the block of
/// special keys.
struct InputPadLayout
{
    QSize key; ///< a character key
    QSize special; ///< a special key as wide as its block
    QSize arrow; ///< a cursor key
    int nSpaceWidth; ///< the space key's width; 0 on pads without one
    int nGap; ///< between the keys of a row
    int nBlockGap; ///< between the blocks
    int nRowGap;
    QMargins margins; ///< what is left of the area, evenly at both sides
};

/// Shares \a area among the keys of \a pad, below an empty row \a headroom high. Keys keep their
/// minimum and maximum sizes; where the area is too small even for the minimum sizes, keys become
/// smaller rather than leave the area.
InputPadLayout inputPadLayout(KeyPad pad, const QSize &area, int headroom);
