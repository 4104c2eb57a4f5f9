#include "platform/fontconfiguration.h"

#include <QtGui/qtguiglobal.h>

#if QT_CONFIG(fontconfig)

#include <fontconfig/fontconfig.h>
#include <memory>

namespace {

constexpr char Configuration[] = R"(<?xml version="1.0"?>
<fontconfig>
 <dir>/usr/share/fonts</dir>
 <cachedir>/var/cache/fontconfig</cachedir>
 <match target="pattern"><edit name="hintstyle"><const>hintslight</const></edit></match>
</fontconfig>
)";

struct Destroy
{
    void operator()(FcConfig *config) const { FcConfigDestroy(config); }
};

} // namespace

// As the value of the process, not as a file: with a file the library reads, besides, everything
// that a system's configuration could be made of.
void prepareFontConfiguration()
{
    if (qEnvironmentVariableIsSet("FONTCONFIG_FILE")) {
        return;
    }
    const std::unique_ptr<FcConfig, Destroy> configuration(FcConfigCreate());
    if (configuration
        && FcConfigParseAndLoadFromMemory(configuration.get(),
                                          reinterpret_cast<const FcChar8 *>(Configuration), FcTrue)
        && FcConfigBuildFonts(configuration.get())) {
        FcConfigSetCurrent(configuration.get()); // which takes a reference of its own
    }
}

#else

#include "platform/devicepath.h"

#include <QFile>

void prepareFontConfiguration()
{
    qputenv("QT_QPA_FONTDIR", QFile::encodeName(devicePath(QStringLiteral("/usr/lib/fonts"))));
}

#endif
