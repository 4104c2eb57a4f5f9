#pragma once

#include <QObject>
#include <QString>

class QWidget;

/// The device's settings, which are only read.
inline constexpr QLatin1String SettingsPath("/etc/settings.ini");
/// Where a changed configuration is handed to the system configuration tool.
inline constexpr QLatin1String NewSettingsPath("/tmp/newsettings.ini");

/// Adapts widgets to the screen they are shown on, and runs the system configuration tool.
///
/// Every window that scales its widgets owns one and reuses it: the display's resolution is read
/// from the device tree once per object. GUI thread only.
class VeltaUtils : public QObject
{
    Q_OBJECT

public:
    VeltaUtils();
    ~VeltaUtils() override;

    /// Class 1 to 24 of a screen of \a width x \a height pixels.
    static int resolutionIndex(int width, int height);

    /// Multiplies the font size of \a widget by the factor of its class on the screen class
    /// \a screenClass (below ScreenClassCount). Scaling twice compounds. A class without factors is
    /// reported in a modal box, and its font stays.
    void scaleFont(QWidget *widget, int screenClass);

    /// Fixes the width of \a widget between its minimum (on a screen of 240 pixels) and its
    /// maximum (from 800 pixels on); a widget without a maximum keeps its free width. With
    /// \a squareIconButton a push button that has an icon becomes square and its icon fills it.
    void scaleWidth(QWidget *widget, bool squareIconButton);

    /// The title that a group box has room for on this screen; "" for any other widget.
    QString shortGroupBoxTitle(QWidget *widget);

    /// The primary screen is narrower than it is tall.
    bool isPortrait();

    /// Applies the new-settings file and removes it after success. Blocks until the tool has ended.
    /// Returns the tool's exit status, or CommandNotStarted or CommandCrashed.
    short runSysCfg();

private:
    void readDpi();

    bool bDpiRead = false;
    quint16 nDpiX = 96;
    quint16 nDpiY = 96;
    double nScale = 1.0;
};
