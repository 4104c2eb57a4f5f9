#include "settings/screenclass.h"
#include "settings/veltautils.h"
#include "tests/support/devicetest.h"

#include <QGroupBox>
#include <QLCDNumber>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTableView>
#include <QToolButton>

namespace {
constexpr char CommonDpi[] = "/proc/device-tree/qrd-specific/qrd_dpi_x_resolution";
constexpr char DpiX[] = "/proc/device-tree/display@di0/qrd_dpi_x_resolution";
constexpr char DpiY[] = "/proc/device-tree/display@di0/qrd_dpi_y_resolution";

QFont pixelFont(int size)
{
    QFont font;
    font.setPixelSize(size);
    return font;
}
} // namespace

class TestVeltaUtils : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void classifiesListedSizes()
    {
        int nIndex = 0;
        for (const QSize size : panelScreenSizes()) {
            QCOMPARE(screenSize(++nIndex), size);
            QCOMPARE(VeltaUtils::resolutionIndex(size.width(), size.height()), nIndex);
            for (const auto rule :
                 {UnlistedHeightAt800::As800x480, UnlistedHeightAt800::As800x600}) {
                QCOMPARE(screenClass(size.width(), size.height(), rule).nIndex, nIndex);
            }
        }
    }

    void classifiesOtherSizes_data()
    {
        const auto row = [](QSize size, QSize as, int fixedWidth, QSize asForFonts = {}) {
            DeviceTest::row(nameOf(size), size, as, fixedWidth,
                            asForFonts.isValid() ? asForFonts : as);
        };
        row({240, 400}, {240, 320}, 0);
        row({320, 480}, {320, 240}, 0);
        row({480, 320}, {480, 272}, 400);
        row({720, 480}, {720, 1280}, 640);
        row({768, 1365}, {768, 1024}, 640);
        row({800, 481}, {800, 480}, 640, {800, 600});
        row({1024, 599}, {1024, 768}, 640);
        row({1366, 1366}, {1366, 768}, 640);
        row({1920, 1200}, {1920, 1080}, 640);
        row({640, 400}, {640, 480}, 0);
        row({641, 480}, {640, 480}, 640);
        row({2560, 1440}, {640, 480}, 640);
        row({0, 0}, {640, 480}, 0);
        row({-5, -5}, {640, 480}, 0);
    }
    void classifiesOtherSizes()
    {
        FETCH(QSize, size, QSize, as, int, fixedWidth, QSize, asForFonts);
        const ScreenClass found =
            screenClass(size.width(), size.height(), UnlistedHeightAt800::As800x480);
        QCOMPARE(screenSize(found.nIndex), as);
        QCOMPARE(int(found.nFixedWidth), fixedWidth);
        QCOMPARE(screenSize(VeltaUtils::resolutionIndex(size.width(), size.height())), asForFonts);
    }

    void scalesFontsByClass_data()
    {
        // Pixel sizes that 100 pixels become at 480x272, 480x800, 800x480, 1366x768 and 1920x1080.
        const auto row = [](QWidget *pWidget, const QList<int> &sizes) {
            DeviceTest::row(pWidget->metaObject()->className(), std::shared_ptr<QWidget>(pWidget),
                            sizes);
        };
        row(new QLabel, {100, 120, 150, 200, 200});
        row(new QLineEdit, {90, 120, 150, 200, 200});
        row(new QPushButton, {100, 120, 140, 180, 200});
        row(new QGroupBox, {100, 120, 150, 200, 220});
        row(new QTableView, {90, 120, 140, 180, 220});
        row(new QListWidget, {90, 120, 140, 180, 220});
        row(new QListView, {100, 120, 140, 200, 220});
        row(new QLCDNumber, {100, 120, 140, 200, 220});
        row(new QPlainTextEdit, {100, 140, 180, 200, 220});
        row(new QMessageBox, {120, 120, 150, 200, 200});
        row(new QTextEdit, {70, 70, 110, 140, 220});
        row(new QToolButton, {70, 70, 110, 140, 220});
    }
    void scalesFontsByClass()
    {
        FETCH(std::shared_ptr<QWidget>, widget, QList<int>, expected);
        VeltaUtils utils;
        QList<int> sizes;
        for (const int index :
             {screenClassOf(480, 272), screenClassOf(480, 800), screenClassOf(800, 480),
              screenClassOf(1366, 768), screenClassOf(1920, 1080)}) {
            widget->setFont(pixelFont(100));
            utils.scaleFont(widget.get(), index);
            sizes += widget->font().pixelSize();
        }
        QCOMPARE(sizes, expected);
    }

    void scalesPointsAndPixelsAlike()
    {
        VeltaUtils utils;
        QLabel label;
        QFont font;
        font.setPointSize(9);
        label.setFont(font);
        utils.scaleFont(&label, screenClassOf(800, 480));
        QCOMPARE(label.font().pointSize(), 13);
        utils.scaleFont(&label, screenClassOf(800, 480));
        QCOMPARE(label.font().pointSize(), 19); // of what it has

        QTextEdit tiny;
        tiny.setFont(pixelFont(1));
        utils.scaleFont(&tiny, screenClassOf(480, 272));
        QCOMPARE(tiny.font().pixelSize(), 1);
    }

    void scalesByDpi_data()
    {
        // A null array is no such file. Size: of a label of 100 pixels at 800x480 (factor 15).
        const auto both = [](const char *name, const QByteArray &value, int size, int dpi = 96) {
            row(name, value, QByteArray(), QByteArray(), dpi, size);
        };
        const QByteArray none;
        both("dense", QByteArray("150\0", 4), 230);
        both("logical", QByteArray("96\0", 3), 150);
        both("coarse", QByteArray("72\0", 3), 150);
        both("line", "150\n300\n", 230);
        both("no end", "150", 230);
        both("NUL before line feed", QByteArray("150\0\n96", 7), 230);
        // Unreadable: 100 dpi, which on a logical 72 dpi is a factor of 15 x 138 / 100.
        both("empty", "", 200, 72);
        both("only NUL", QByteArray(1, '\0'), 200, 72);
        both("1 MB", QByteArray(1 << 20, '1'), 200, 72);
        both("huge", QByteArray("4000000\0", 8), 200, 72);
        both("negative", QByteArray("-5\0", 3), 200, 72);
        both("FIFO", "fifo", 200, 72);
        both("implausible", QByteArray("3000\0", 5), 200, 72);
        // Read, but no resolution: nothing is enlarged.
        both("disabled", QByteArray("Disabled\0", 9), 150, 72);
        both("word", QByteArray("many\0", 5), 150, 72);
        const QByteArray dense("192\0", 4);
        const QByteArray medium("144\0", 4);
        row("two files", none, dense, medium, 96, 220);
        row("common first", medium, dense, dense, 96, 220);
        row("one missing", none, dense, none, 72, 200);
        row("none", none, none, none, 72, 200);
    }
    void scalesByDpi()
    {
        FETCH(QByteArray, common, QByteArray, x, QByteArray, y, int, logicalDpi, int, size);
        setScreen({800, 480}, logicalDpi);
        for (const auto &[path, content] :
             {std::pair(CommonDpi, common), std::pair(DpiX, x), std::pair(DpiY, y)}) {
            root().plant(path, content);
        }
        QLabel label;
        label.setFont(pixelFont(100));
        VeltaUtils utils;
        utils.scaleFont(&label, screenClassOf(800, 480));
        QCOMPARE(label.font().pixelSize(), size);
    }

    void readsDpiOnce()
    {
        VeltaUtils utils;
        for (const QByteArray &dpi : {QByteArray("150"), QByteArray("300")}) {
            root().write(QLatin1String(CommonDpi), dpi);
            QLabel label;
            label.setFont(pixelFont(10));
            utils.scaleFont(&label, screenClassOf(800, 480));
            QCOMPARE(label.font().pixelSize(), 23);
        }
    }

    void reportsUnsupportedWidgets()
    {
        VeltaUtils utils;
        QFrame frame;
        frame.setFont(pixelFont(10));
        BoxWatcher watcher;
        utils.scaleFont(&frame, 24);
        QCOMPARE(watcher.texts(), QStringList("scaleFont called with unsupported widget QFrame"));
        QCOMPARE(frame.font().pixelSize(), 10);
    }

    void scalesWidths_data()
    {
        const auto add = [](int screen, int minimum, int maximum, int fixed) {
            row(QByteArray::number(screen) + ": " + QByteArray::number(maximum), screen, minimum,
                maximum, fixed, maximum == QWIDGETSIZE_MAX ? maximum : fixed);
        };
        add(480, 200, 760, 440);
        add(240, 200, 760, 200);
        add(320, 100, 101, 100);
        add(800, 200, 760, 760);
        add(1920, 200, 760, 760);
        add(480, 0, 300, 300);
        add(480, 10, 811, 811);
        add(480, 10, 810, 352);
        add(320, 50, QWIDGETSIZE_MAX, 50);
        add(800, 50, QWIDGETSIZE_MAX, 50);
    }
    void scalesWidths()
    {
        FETCH(int, screenWidth, int, minimum, int, maximum, int, minimumAfter, int, maximumAfter);
        setScreen({screenWidth, 480});
        QLabel label;
        label.setMinimumWidth(minimum);
        label.setMaximumWidth(maximum);
        VeltaUtils().scaleWidth(&label, true);
        QCOMPARE(label.minimumWidth(), minimumAfter);
        QCOMPARE(label.maximumWidth(), maximumAfter);
    }

    void makesIconButtonsSquare()
    {
        QPixmap pixmap(8, 8);
        pixmap.fill(Qt::red);
        for (const bool bSquare : {false, true}) {
            QPushButton button(QIcon(pixmap), "Play");
            QPushButton plain("Ok");
            const int plainHeight = plain.height();
            for (QPushButton *pButton : {&button, &plain}) {
                pButton->setMaximumWidth(64);
                VeltaUtils().scaleWidth(pButton, bSquare);
            }
            QCOMPARE(button.width() == 64 && button.height() == 64, bSquare);
            QCOMPARE(button.iconSize() == QSize(60, 60), bSquare);
            QCOMPARE(plain.height(), plainHeight);
        }
    }

    void shortensTitles_data()
    {
        // by the title
        row("Settings: IP-Addresses", "IP-Addresses");
        row("Expert: all", "Expert: all");
        row("Settings: Expert mode", "Expert mode");
        row("settings expert:  a:b", " a:b");
        row("Touch-Terminal: x", "x");
        row("Touch-Terminal Network", "Network");
        row("Touch-Terminal", "");
        row(" Network", "Network");
        row("Network", "Network");
        row("Network:", "");
    }
    void shortensTitles()
    {
        FETCH(QString, portrait);
        const QString title = QTest::currentDataTag();
        VeltaUtils utils;
        QGroupBox box(title);
        QLabel label(title);
        setScreen({480, 480});
        QVERIFY(!utils.isPortrait());
        QCOMPARE(utils.shortGroupBoxTitle(&box), title);
        setScreen({480, 640});
        QCOMPARE(utils.shortGroupBoxTitle(&box), portrait);
        QCOMPARE(utils.shortGroupBoxTitle(&label), QString());
    }
};

PANEL_TEST_MAIN(TestVeltaUtils)
#include "tst_veltautils.moc"
