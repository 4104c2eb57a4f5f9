#include "settings/veltautils.h"

#include "platform/command.h"
#include "platform/devicepath.h"
#include "platform/regularfile.h"
#include "settings/screenclass.h"

#include <QAbstractButton>
#include <QDebug>
#include <QFile>
#include <QGroupBox>
#include <QGuiApplication>
#include <QMessageBox>
#include <QScreen>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <iterator>
#include <optional>

namespace {

constexpr QLatin1String SysCfgPath("/bin/syscfg");
/// The tool ends within seconds; one that hangs must not leave the operator without a way on.
constexpr std::chrono::minutes SysCfgLimit(2);

constexpr QLatin1String CommonDpiPath("/proc/device-tree/qrd-specific/qrd_dpi_x_resolution");
constexpr QLatin1String DisplayDpiXPath("/proc/device-tree/display@di0/qrd_dpi_x_resolution");
constexpr QLatin1String DisplayDpiYPath("/proc/device-tree/display@di0/qrd_dpi_y_resolution");
/// A property is a short text; what does not end within this is not one.
constexpr qint64 MaxPropertyBytes = 1024;
constexpr quint16 UnreadableDpi = 100;
/// 600 dpi would make the 1920-pixel screen 8 cm wide, less than any panel. A number beyond it is
/// a damaged property, and fonts scaled by it would leave nothing to operate.
constexpr int MaxDpi = 600;

bool hasClassName(const QWidget *widget, const char *className)
{
    return std::strcmp(widget->metaObject()->className(), className) == 0;
}

/// The text of a device-tree property, nothing when it has none. The device tree ends its
/// texts with NUL; one line without it is taken too.
std::optional<QString> readProperty(const QString &path)
{
    const QByteArray piece = readRegularFile(devicePath(path), Links::Follow)
                                 .content.left(MaxPropertyBytes)
                                 .replace("\r\n", "\n");
    qsizetype end = piece.indexOf('\0');
    if (end < 0) {
        end = piece.indexOf('\n');
    }
    if (end < 0 && piece.size() < MaxPropertyBytes) {
        end = piece.size();
    }
    if (end <= 0) {
        return std::nullopt;
    }
    const QString value = QString::fromLocal8Bit(piece.first(end));
    if (value.contains(QLatin1String("disabled"), Qt::CaseInsensitive)
        && !value.contains(QLatin1Char('$'))) {
        return QStringLiteral("no");
    }
    return value;
}

/// Dots per inch in the property \a path. 0, which never enlarges a font, for a display
/// whose resolution is switched off or no number; nothing when the property cannot be used.
std::optional<quint16> readDpiProperty(const QString &path)
{
    const std::optional<QString> value = readProperty(path);
    if (!value) {
        return std::nullopt;
    }
    const int dpi = value->toInt();
    if (dpi < 0 || dpi > MaxDpi) {
        return std::nullopt;
    }
    return static_cast<quint16>(dpi);
}

/// The fixed width for a widget that may be \a minimum to \a maximum pixels wide.
int scaledWidth(int minimum, int maximum, int screenWidth)
{
    constexpr int NarrowScreen = 240;
    constexpr int WideScreen = 800;
    // A range beyond this is not a form's choice, but a widget that has no limit.
    constexpr int MaxRange = 800;
    if (screenWidth >= WideScreen || minimum <= 0 || maximum - minimum > MaxRange
        || maximum < minimum) {
        return maximum;
    }
    const int part = (maximum - minimum) * std::max(0, screenWidth - NarrowScreen);
    return minimum + static_cast<int>(part / double(WideScreen - NarrowScreen));
}

} // namespace

VeltaUtils::VeltaUtils() = default;
VeltaUtils::~VeltaUtils() = default;

int VeltaUtils::resolutionIndex(int width, int height)
{
    return screenClass(width, height, UnlistedHeightAt800::As800x600).nIndex;
}

void VeltaUtils::readDpi()
{
    bDpiRead = true;
    const bool bCommon = QFile::exists(devicePath(CommonDpiPath));
    const auto x = readDpiProperty(bCommon ? CommonDpiPath : DisplayDpiXPath);
    const auto y = readDpiProperty(bCommon ? CommonDpiPath : DisplayDpiYPath);
    nDpiX = nDpiY = UnreadableDpi;
    if (x && y) {
        nDpiX = *x;
        nDpiY = *y;
    }

    const QScreen *pScreen = QGuiApplication::primaryScreen();
    const auto logicalX = static_cast<quint16>(pScreen->logicalDotsPerInchX());
    const auto logicalY = static_cast<quint16>(pScreen->logicalDotsPerInchY());
    if ((nDpiX != logicalX || nDpiY != logicalY) && logicalX > 0 && logicalY > 0) {
        nScale = std::min(double(nDpiX) / logicalX, double(nDpiY) / logicalY);
    }
}

void VeltaUtils::scaleFont(QWidget *widget, int screenClass)
{
    Q_ASSERT(screenClass >= 0 && screenClass < ScreenClassCount);
    if (!bDpiRead) {
        readDpi();
    }
    const auto *pColumn = std::find_if(
        std::begin(FontFactorColumns), std::end(FontFactorColumns),
        [widget](const FontFactorColumn &c) { return hasClassName(widget, c.pClassName); });
    if (pColumn == std::end(FontFactorColumns)) {
        QMessageBox box(QMessageBox::Warning, tr("Error: unsupported widget"),
                        tr("scaleFont called with unsupported widget %1")
                            .arg(QLatin1String(widget->metaObject()->className())),
                        QMessageBox::Ok);
        box.exec();
        return;
    }

    int factor = screenClassRow(screenClass).fontFactors[pColumn->nColumn];
    if (nScale > 1.0) {
        factor = factor * static_cast<int>(nScale * 100) / 100;
    }
    QFont font = widget->font();
    // A size of 0 is none: a tiny font keeps its last pixel.
    if (font.pixelSize() == -1) {
        font.setPointSize(std::max(1, font.pointSize() * factor / 10));
    } else {
        font.setPixelSize(std::max(1, font.pixelSize() * factor / 10));
    }
    widget->setFont(font);
}

void VeltaUtils::scaleWidth(QWidget *widget, bool squareIconButton)
{
    const int width = scaledWidth(widget->minimumWidth(), widget->maximumWidth(),
                                  QGuiApplication::primaryScreen()->geometry().width());
    // QWIDGETSIZE_MAX is Qt's "no maximum": as a fixed width it would tear the layout apart.
    if (width < QWIDGETSIZE_MAX) {
        widget->setFixedWidth(width);
    }
    if (!squareIconButton || !hasClassName(widget, "QPushButton")) {
        return;
    }
    auto *pButton = static_cast<QAbstractButton *>(widget);
    if (!pButton->icon().isNull()) {
        constexpr int IconMargin = 4;
        pButton->setFixedHeight(pButton->width());
        pButton->setIconSize(pButton->size() - QSize(IconMargin, IconMargin));
    }
}

QString VeltaUtils::shortGroupBoxTitle(QWidget *widget)
{
    if (!hasClassName(widget, "QGroupBox")) {
        return QString();
    }
    QString title = static_cast<QGroupBox *>(widget)->title();
    if (!isPortrait()) {
        return title;
    }
    constexpr QLatin1String Expert("Expert");
    constexpr QLatin1String Terminal("-Terminal");
    if (const auto expert = title.indexOf(Expert); expert >= 0) {
        title = title.mid(expert);
    } else if (const auto colon = title.indexOf(QLatin1Char(':')); colon >= 0) {
        title = title.mid(colon + 1);
    } else if (const auto terminal = title.indexOf(Terminal); terminal >= 0) {
        title = title.mid(terminal + Terminal.size() + 1);
    }
    return title.startsWith(QLatin1Char(' ')) ? title.mid(1) : title;
}

bool VeltaUtils::isPortrait()
{
    const QSize size = QGuiApplication::primaryScreen()->geometry().size();
    return size.width() < size.height();
}

short VeltaUtils::runSysCfg()
{
    const QString file = devicePath(NewSettingsPath);
    const int result = runCommand(
        devicePath(SysCfgPath),
        {QStringLiteral("-i"), file, QStringLiteral("-g"), QStringLiteral("all")}, SysCfgLimit);
    if (result == 0 && !removeName(file)) {
        qDebug("could not remove file %s", NewSettingsPath.data());
    }
    return static_cast<short>(result);
}
