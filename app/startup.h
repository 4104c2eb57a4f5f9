#pragma once

#include <memory>

class QApplication;
class QWidget;
class VeltaInfoBox;

/// Sets what the environment must say before the application object is made: real pixels, and on
/// the embedded platforms no second opening of the input devices. What the environment already
/// says about the input devices is left alone.
void prepareEnvironment();

/// Gives the application its style, its font and the order of its windows.
void setUpLook(QApplication &application);

/// Adds the panel's font files to the font database. False when any of them cannot be opened or is
/// broken; the others are still added.
bool loadFonts();

/// Tells the operator that loadFonts() failed: a box that closes by itself, is open as long as its
/// object lives at most, and keeps nothing from going on meanwhile. It closes with \a window:
/// then the screen belongs to the visualisation of the PLC runtime.
std::unique_ptr<VeltaInfoBox> showFontWarning(QWidget &window);
