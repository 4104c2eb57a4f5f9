#include "app/startup.h"

#include "app/panelstyle.h"
#include "infobox/veltainfobox.h"
#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "platform/windowstack.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>

#include <algorithm>

namespace {

constexpr auto FontFolder = QLatin1String("/usr/lib/fonts/");
constexpr QLatin1String FontFiles[] = {QLatin1String("Vera.ttf"), QLatin1String("VeraBd.ttf")};
constexpr auto FontFamily = QLatin1String("Bitstream Vera Sans");
constexpr int FontPoints = 9;
constexpr quint8 FontWarningSeconds = 10;
constexpr qint64 LargestFontFile = 16 * 1024 * 1024; // bytes; more is no font of ours

bool loadFont(QLatin1String name)
{
    const FileContent file =
        readRegularFile(devicePath(FontFolder + name), Links::Follow, LargestFontFile);
    return file.state == FileContent::Readable
        && QFontDatabase::addApplicationFontFromData(file.content) != -1;
}

#if !QT_CONFIG(fontconfig)
bool hasFont(QFont::Weight weight)
{
    const QStringList styles = QFontDatabase::styles(FontFamily);
    return std::any_of(styles.cbegin(), styles.cend(), [weight](const QString &style) {
        return QFontDatabase::weight(FontFamily, style) == weight
            && !QFontDatabase::italic(FontFamily, style);
    });
}
#endif

/// Filter of a window's events, a child of the box that it closes when the window is hidden.
class ClosesWithWindow : public QObject
{
public:
    explicit ClosesWithWindow(VeltaInfoBox *box) : QObject(box), pBox(box) { }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Hide) {
            pBox->closeBox();
        }
        return false;
    }

private:
    VeltaInfoBox *pBox;
};

} // namespace

void prepareEnvironment()
{
    // Screen classes and touches are in real pixels.
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    // Every pattern is used a few times at most: to compile it costs more.
    qputenv("QT_ENABLE_REGEXP_JIT", "0");
    // It would replace what is said of every keyboard, the way to end the program by keys included.
    qunsetenv("QT_QPA_EVDEV_KEYBOARD_PARAMETERS");
    for (const char *variable : {"QT_QPA_FB_DISABLE_INPUT", "QT_QPA_EGLFS_DISABLE_INPUT"}) {
        if (!qEnvironmentVariableIsSet(variable)) {
            qputenv(variable, "1");
        }
    }
}

void setUpLook(QApplication &application)
{
    application.setStyle(new PanelStyle);
    QFont font(FontFamily, FontPoints);
    font.setHintingPreference(QFont::PreferVerticalHinting); // with fontconfig and without
    QApplication::setFont(font);
    // While the PLC runs the main window is hidden: a box that closes then must not end the
    // program.
    QApplication::setQuitOnLastWindowClosed(false);
    new WindowStack(&application);
}

bool loadFonts()
{
#if !QT_CONFIG(fontconfig)
    if (hasFont(QFont::Normal) && hasFont(QFont::Bold)) {
        return true; // Qt has read the folder: see prepareFontConfiguration()
    }
#endif
    bool bLoaded = true;
    for (const QLatin1String name : FontFiles) {
        bLoaded = loadFont(name) && bLoaded;
    }
    return bLoaded;
}

std::unique_ptr<VeltaInfoBox> showFontWarning(QWidget &window)
{
    auto pBox = std::make_unique<VeltaInfoBox>(
        QCoreApplication::translate("Application", "Error Loading embedded Fonts"),
        FontWarningSeconds, nullptr, false, false);
    pBox->setWarning(QCoreApplication::translate("Application", "Application"));
    pBox->showBox(false);
    window.installEventFilter(new ClosesWithWindow(pBox.get()));
    return pBox;
}
