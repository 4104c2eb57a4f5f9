#pragma once

class QApplication;

/// Sets what the environment must say before the application object is made: real pixels, and on
/// the embedded platforms no second opening of the input devices. What the environment already
/// says about the input devices is left alone.
void prepareEnvironment();

/// Gives the application its style and its font.
void setUpLook(QApplication &application);

/// Adds the panel's font files to the font database. False when any of them cannot be opened or is
/// broken; the others are still added.
bool loadFonts();

/// Tells the operator that loadFonts() failed, in a modal box.
void showFontWarning();
