#pragma once

#include <memory>

class QTemporaryFile;

/// Gives this process a font configuration of its own while fonts are looked up the first time.
///
/// The system's configuration is made of dozens of files for desktops; reading them takes as long
/// as the rest of a start, and it lets the same text look different on every machine. Ours keeps
/// the system's fonts for characters that the program's own fonts do not have. Make it before the
/// application object and keep it until the program's fonts are loaded. Where the environment
/// names a configuration (FONTCONFIG_FILE), or when something fails, it does nothing.
class FontConfiguration
{
public:
    FontConfiguration();
    ~FontConfiguration();
    FontConfiguration(const FontConfiguration &) = delete;
    FontConfiguration &operator=(const FontConfiguration &) = delete;

private:
    std::unique_ptr<QTemporaryFile> pFile; // goes with this object
};
