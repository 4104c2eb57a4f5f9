#include "app/startup.h"

#include "app/panelstyle.h"
#include "platform/devicepath.h"
#include "platform/regularfile.h"

#include <QApplication>
#include <QFontDatabase>
#include <QMessageBox>

namespace {

constexpr auto FontFolder = QLatin1String("/usr/lib/fonts/");
constexpr QLatin1String FontFiles[] = {QLatin1String("Vera.ttf"), QLatin1String("VeraBd.ttf")};
constexpr auto FontFamily = QLatin1String("Bitstream Vera Sans");
constexpr int FontPoints = 9;
constexpr qint64 LargestFontFile = 16 * 1024 * 1024; // bytes; more is no font of ours

bool loadFont(QLatin1String name)
{
    const FileContent file =
        readRegularFile(devicePath(FontFolder + name), Links::Follow, LargestFontFile);
    return file.state == FileContent::Readable
        && QFontDatabase::addApplicationFontFromData(file.content) != -1;
}

} // namespace

void prepareEnvironment()
{
    // Screen classes and touches are in real pixels.
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    for (const char *variable : {"QT_QPA_FB_DISABLE_INPUT", "QT_QPA_EGLFS_DISABLE_INPUT"}) {
        if (!qEnvironmentVariableIsSet(variable)) {
            qputenv(variable, "1");
        }
    }
}

void setUpLook(QApplication &application)
{
    application.setStyle(new PanelStyle);
    QApplication::setFont(QFont(FontFamily, FontPoints));
    // While the PLC runs the main window is hidden: a box that closes then must not end the
    // program.
    QApplication::setQuitOnLastWindowClosed(false);
}

bool loadFonts()
{
    bool bLoaded = true;
    for (const QLatin1String name : FontFiles) {
        bLoaded = loadFont(name) && bLoaded;
    }
    return bLoaded;
}

void showFontWarning()
{
    QMessageBox::warning(nullptr, QStringLiteral("Application"),
                         QStringLiteral("Error Loading embedded Fonts"), QMessageBox::Ok);
}
