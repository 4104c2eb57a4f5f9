#include "platform/command.h"
#include "settings/screenclass.h"
#include "settings/veltautils.h"
#include "tests/support/boxwatcher.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

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
    void cleanup();

    void classifiesListedSizes();
    void classifiesOtherSizes_data();
    void classifiesOtherSizes();
    void scalesFontsByClass_data();
    void scalesFontsByClass();
    void scalesPointsAndPixelsAlike();
    void scalesByDpi_data();
    void scalesByDpi();
    void readsDpiOnce();
    void reportsUnsupportedWidgets();
    void scalesWidths_data();
    void scalesWidths();
    void makesIconButtonsSquare();
    void shortensTitles_data();
    void shortensTitles();
    void runsSysCfg_data();
    void runsSysCfg();
};

void TestVeltaUtils::cleanup()
{
    setScreen({800, 480});
    DeviceTest::cleanup();
}

void TestVeltaUtils::classifiesListedSizes()
{
    for (int i = 1; i < ScreenClassCount; ++i) {
        const QSize size = screenSize(i);
        QCOMPARE(VeltaUtils::resolutionIndex(size.width(), size.height()), i);
        for (const auto rule : {UnlistedHeightAt800::As800x480, UnlistedHeightAt800::As800x600}) {
            QCOMPARE(screenClass(size.width(), size.height(), rule).nIndex, i);
        }
    }
}

void TestVeltaUtils::classifiesOtherSizes_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("fixedWidth");
    QTest::addColumn<int>("indexForFonts");
    const auto row = [](int w, int h, int index, int fixedWidth, int indexForFonts = 0) {
        QTest::addRow("%dx%d", w, h)
            << QSize(w, h) << index << fixedWidth << (indexForFonts ? indexForFonts : index);
    };
    row(240, 400, 1, 0);
    row(272, 0, 2, 0);
    row(320, 480, 3, 0);
    row(480, 320, 4, 400);
    row(600, 1024, 7, 0);
    row(720, 480, 9, 640);
    row(768, 1365, 10, 640);
    row(800, 600, 13, 640);
    row(800, 1280, 14, 640);
    row(800, 481, 12, 640, 13);
    row(1024, 600, 15, 640);
    row(1050, 1, 17, 640);
    row(1280, 960, 19, 640);
    row(1366, 1366, 22, 640);
    row(1920, 1200, 24, 640);
    row(640, 400, 8, 0);
    row(641, 480, 8, 640);
    row(2560, 1440, 8, 640);
    row(0, 0, 8, 0);
    row(-5, -5, 8, 0);
}

void TestVeltaUtils::classifiesOtherSizes()
{
    QFETCH(QSize, size);
    const ScreenClass found =
        screenClass(size.width(), size.height(), UnlistedHeightAt800::As800x480);
    QTEST(found.nIndex, "index");
    QTEST(int(found.nFixedWidth), "fixedWidth");
    QTEST(VeltaUtils::resolutionIndex(size.width(), size.height()), "indexForFonts");
}

void TestVeltaUtils::scalesFontsByClass_data()
{
    // Pixel sizes that 100 pixels become on the classes 4, 6, 12, 22 and 24.
    QTest::addColumn<std::shared_ptr<QWidget>>("widget");
    QTest::addColumn<QList<int>>("sizes");
    const auto row = [](QWidget *pWidget, const QList<int> &sizes) {
        QTest::newRow(pWidget->metaObject()->className())
            << std::shared_ptr<QWidget>(pWidget) << sizes;
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

void TestVeltaUtils::scalesFontsByClass()
{
    QFETCH(std::shared_ptr<QWidget>, widget);
    VeltaUtils utils;
    QList<int> sizes;
    for (const int index : {4, 6, 12, 22, 24}) {
        widget->setFont(pixelFont(100));
        utils.scaleFont(widget.get(), index);
        sizes += widget->font().pixelSize();
    }
    QTEST(sizes, "sizes");
}

void TestVeltaUtils::scalesPointsAndPixelsAlike()
{
    VeltaUtils utils;
    QLabel label;
    QFont font;
    font.setPointSize(9);
    label.setFont(font);
    utils.scaleFont(&label, 12);
    QCOMPARE(label.font().pointSize(), 13);
    utils.scaleFont(&label, 12);
    QCOMPARE(label.font().pointSize(), 19); // of what it has

    QTextEdit tiny;
    tiny.setFont(pixelFont(1));
    utils.scaleFont(&tiny, 4);
    QCOMPARE(tiny.font().pixelSize(), 1);
}

void TestVeltaUtils::scalesByDpi_data()
{
    QTest::addColumn<QByteArray>("common"); // null: no such file
    QTest::addColumn<QByteArray>("x");
    QTest::addColumn<QByteArray>("y");
    QTest::addColumn<int>("logicalDpi");
    QTest::addColumn<int>("size"); // of a label of 100 pixels on class 12 (factor 15)
    const auto both = [](const char *name, const QByteArray &value, int size, int dpi = 96) {
        QTest::newRow(name) << value << QByteArray() << QByteArray() << dpi << size;
    };
    const QByteArray none;
    both("dense", QByteArray("150\0", 4), 230);
    both("logical", QByteArray("96\0", 3), 150);
    both("coarse", QByteArray("72\0", 3), 150);
    both("line", "150\n300\n", 230);
    both("no end", "150", 230);
    both("NUL before line feed", QByteArray("150\0\n96", 7), 230);
    // Unreadable: 100 dpi, which on a logical 72 dpi is a factor of 15 x 138 / 100.
    both("empty", QByteArray(""), 200, 72);
    both("only NUL", QByteArray(1, '\0'), 200, 72);
    both("1 MB", QByteArray(1 << 20, '1'), 200, 72);
    both("huge", QByteArray("4000000\0", 8), 200, 72);
    both("negative", QByteArray("-5\0", 3), 200, 72);
    both("implausible", QByteArray("3000\0", 5), 200, 72);
    // Read, but no resolution: nothing is enlarged.
    both("disabled", QByteArray("Disabled\0", 9), 150, 72);
    both("word", QByteArray("many\0", 5), 150, 72);
    const QByteArray dense("192\0", 4);
    const QByteArray medium("144\0", 4);
    QTest::newRow("two files") << none << dense << medium << 96 << 220;
    QTest::newRow("common first") << medium << dense << dense << 96 << 220;
    QTest::newRow("one missing") << none << dense << none << 72 << 200;
    QTest::newRow("none") << none << none << none << 72 << 200;
}

void TestVeltaUtils::scalesByDpi()
{
    QFETCH(int, logicalDpi);
    setScreen({800, 480}, logicalDpi);
    QFETCH(QByteArray, common);
    QFETCH(QByteArray, x);
    QFETCH(QByteArray, y);
    for (const auto &[path, content] :
         {std::pair(CommonDpi, common), std::pair(DpiX, x), std::pair(DpiY, y)}) {
        if (!content.isNull()) {
            root().write(QLatin1String(path), content);
        }
    }
    QLabel label;
    label.setFont(pixelFont(100));
    VeltaUtils utils;
    utils.scaleFont(&label, 12);
    QTEST(label.font().pixelSize(), "size");
}

void TestVeltaUtils::readsDpiOnce()
{
    VeltaUtils utils;
    for (const QByteArray &dpi : {QByteArray("150"), QByteArray("300")}) {
        root().write(QLatin1String(CommonDpi), dpi);
        QLabel label;
        label.setFont(pixelFont(10));
        utils.scaleFont(&label, 12);
        QCOMPARE(label.font().pixelSize(), 23);
    }
}

void TestVeltaUtils::reportsUnsupportedWidgets()
{
    VeltaUtils utils;
    QFrame frame;
    frame.setFont(pixelFont(10));
    BoxWatcher watcher;
    utils.scaleFont(&frame, 24);
    QCOMPARE(watcher.texts(),
             QStringList(QStringLiteral("scaleFont called with unsupported widget QFrame")));
    QCOMPARE(frame.font().pixelSize(), 10);
}

void TestVeltaUtils::scalesWidths_data()
{
    QTest::addColumn<int>("screenWidth");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("minimumAfter");
    QTest::addColumn<int>("maximumAfter");
    const auto row = [](int screen, int minimum, int maximum, int fixed) {
        QTest::addRow("%d: %d to %d", screen, minimum, maximum)
            << screen << minimum << maximum << fixed << fixed;
    };
    row(480, 200, 760, 440);
    row(240, 200, 760, 200);
    row(320, 100, 101, 100);
    row(800, 200, 760, 760);
    row(1920, 200, 760, 760);
    row(480, 0, 300, 300);
    row(480, 10, 811, 811);
    row(480, 10, 810, 352);
    for (const int screen : {320, 800}) {
        QTest::addRow("%d: no maximum", screen)
            << screen << 50 << QWIDGETSIZE_MAX << 50 << QWIDGETSIZE_MAX;
    }
}

void TestVeltaUtils::scalesWidths()
{
    QFETCH(int, screenWidth);
    setScreen({screenWidth, 480});
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QLabel label;
    label.setMinimumWidth(minimum);
    label.setMaximumWidth(maximum);
    VeltaUtils().scaleWidth(&label, true);
    QTEST(label.minimumWidth(), "minimumAfter");
    QTEST(label.maximumWidth(), "maximumAfter");
}

void TestVeltaUtils::makesIconButtonsSquare()
{
    QPixmap pixmap(8, 8);
    pixmap.fill(Qt::red);
    for (const bool bSquare : {false, true}) {
        QPushButton button(QIcon(pixmap), QStringLiteral("Play"));
        QPushButton plain(QStringLiteral("Ok"));
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

void TestVeltaUtils::shortensTitles_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("portrait");
    const auto row = [](const char *title, const char *portrait) {
        QTest::newRow(title) << QString::fromLatin1(title) << QString::fromLatin1(portrait);
    };
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

void TestVeltaUtils::shortensTitles()
{
    QFETCH(QString, title);
    VeltaUtils utils;
    QGroupBox box(title);
    QLabel label(title);
    setScreen({480, 480});
    QVERIFY(!utils.isPortrait());
    QCOMPARE(utils.shortGroupBoxTitle(&box), title);
    setScreen({480, 640});
    QTEST(utils.shortGroupBoxTitle(&box), "portrait");
    QCOMPARE(utils.shortGroupBoxTitle(&label), QString());
}

void TestVeltaUtils::runsSysCfg_data()
{
    QTest::addColumn<QByteArray>("script"); // null: no tool
    QTest::addColumn<int>("result");
    QTest::newRow("success") << QByteArray("exit 0") << 0;
    QTest::newRow("tool removes the file") << QByteArray("rm \"$2\"") << 0;
    QTest::newRow("failure") << QByteArray("exit 3") << 3;
    QTest::newRow("crash") << QByteArray("kill -SEGV $$") << CommandCrashed;
    QTest::newRow("missing") << QByteArray() << CommandNotStarted;
}

void TestVeltaUtils::runsSysCfg()
{
    QFETCH(QByteArray, script);
    const QString file = QStringLiteral("/tmp/newsettings.ini");
    root().write(file, "[network]\n");
    if (!script.isNull()) {
        root().writeCommand(QStringLiteral("/bin/syscfg"),
                            "echo \"$@\" > \"$(dirname \"$2\")/arguments\"\n" + script);
    }
    const short result = VeltaUtils().runSysCfg();
    QTEST(int(result), "result");
    QCOMPARE(root().exists(file), result != 0);
    if (!script.isNull()) {
        QCOMPARE(root().read(QStringLiteral("/tmp/arguments")).trimmed(),
                 "-i " + root().path(file).toUtf8() + " -g all");
    }
}

PANEL_TEST_MAIN(TestVeltaUtils)
#include "tst_veltautils.moc"
