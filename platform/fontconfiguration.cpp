#include "platform/fontconfiguration.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

namespace {

constexpr char FileVariable[] = "FONTCONFIG_FILE";

constexpr char Configuration[] = R"(<?xml version="1.0"?>
<fontconfig>
 <dir>/usr/share/fonts</dir>
 <cachedir>/var/cache/fontconfig</cachedir>
 <match target="pattern"><edit name="hintstyle"><const>hintslight</const></edit></match>
</fontconfig>
)";

} // namespace

FontConfiguration::FontConfiguration()
{
    if (qEnvironmentVariableIsSet(FileVariable)) {
        return;
    }
    // Of a start that is broken off nothing stays in the folder of a service's run.
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() || !QFileInfo(folder).isWritable()) {
        folder = QDir::tempPath();
    }
    pFile = std::make_unique<QTemporaryFile>(folder + QLatin1String("/fonts-XXXXXX.conf"));
    if (pFile->open() && pFile->write(Configuration) > 0 && pFile->flush()) {
        qputenv(FileVariable, QFile::encodeName(pFile->fileName()));
    } else {
        pFile.reset();
    }
}

FontConfiguration::~FontConfiguration()
{
    if (pFile) {
        qunsetenv(FileVariable);
    }
}
