#pragma once

/// Says where Qt looks for fonts and how it draws them. Before the application object.
///
/// With fontconfig: the system's configuration is made of dozens of files for desktops; reading
/// them takes as long as the rest of a start, and it lets the same text look different on every
/// machine. Ours keeps the system's fonts for characters that the program's own fonts do not have.
/// Where the environment names a configuration (FONTCONFIG_FILE), or when something fails, nothing
/// is done.
///
/// Without: the fonts of the device's font folder, which Qt opens by itself.
void prepareFontConfiguration();
