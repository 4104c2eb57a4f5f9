#include "infobox/infotext.h"
#include "infobox/veltainfobox.h"
#include "settings/errorcatalogue.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

namespace {

/// The window of the box that is open; nullptr when none is.
QDialog *openBox()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *pWindow : windows) {
        auto *pDialog = qobject_cast<QDialog *>(pWindow);
        if (pDialog && pDialog->isVisible() && pDialog->findChild<QMessageBox *>()) {
            return pDialog;
        }
    }
    return nullptr;
}

QMessageBox *openBody()
{
    QDialog *pDialog = openBox();
    return pDialog ? pDialog->findChild<QMessageBox *>() : nullptr;
}

QLabel *titleBar()
{
    return openBox()
        ->findChild<QFrame *>(QString(), Qt::FindDirectChildrenOnly)
        ->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
}

QString shownText()
{
    return QTextDocumentFragment::fromHtml(openBody()->text()).toPlainText().simplified();
}

/// Shows \a box modally and runs \a look while it is open. False when it did not open or when
/// \a look left it open.
bool runBox(VeltaInfoBox &box, const std::function<void()> &look)
{
    bool bOpened = false;
    bool bClosed = false;
    QTimer::singleShot(0, &box, [&] {
        bOpened = openBox() != nullptr;
        if (bOpened) {
            look();
        }
        bClosed = !openBox();
        box.closeBox();
    });
    box.showBox(true);
    return bOpened && bClosed && !openBox();
}

/// What is wrong with the box that is open on a screen of \a screen pixels.
QString faults(const QSize &screen)
{
    QStringList found;
    const QDialog *pDialog = openBox();
    const QRect box = pDialog->geometry();
    if (!QRect(QPoint(), screen).contains(box)) {
        found += QStringLiteral("outside the screen");
    }
    if (box.topLeft()
        != QPoint((screen.width() - box.width()) / 2, (screen.height() - box.height()) / 2)) {
        found += QStringLiteral("not in the middle");
    }
    const auto widgets = pDialog->findChildren<QWidget *>();
    for (const QWidget *pWidget : widgets) {
        if (!pWidget->isVisible()) {
            continue;
        }
        const bool bHasText =
            qobject_cast<const QLabel *>(pWidget) || qobject_cast<const QAbstractButton *>(pWidget);
        const QSize least = pWidget->minimumSizeHint();
        if (!pDialog->rect().contains(QRect(pWidget->mapTo(pDialog, QPoint()), pWidget->size()))
            || (bHasText
                && (pWidget->width() < least.width() || pWidget->height() < least.height()))) {
            found +=
                QStringLiteral("clipped: ") + QLatin1String(pWidget->metaObject()->className());
        }
    }
    return found.join(QLatin1String(", "));
}

} // namespace

class TestVeltaInfoBox : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void fitsEveryScreen_data();
    void fitsEveryScreen();
    void showsMessages_data();
    void showsMessages();
    void wrapsByScreenClass_data();
    void wrapsByScreenClass();
    void looksAsDescribed();
    void isModalWhenItMustBe_data();
    void isModalWhenItMustBe();
    void closesOn_data();
    void closesOn();
    void countsDown_data();
    void countsDown();
    void countdownMayBeCutShort();
    void keepsItsSizeWhileCounting();
    void appearsForAHiddenOwner();
    void showsAgain();
};

void TestVeltaInfoBox::initTestCase()
{
    const QString folder = QStringLiteral("/usr/share/fonts/truetype/ttf-bitstream-vera/");
    for (const char *file : {"Vera.ttf", "VeraBd.ttf"}) {
        QVERIFY(QFontDatabase::addApplicationFont(folder + QLatin1String(file)) >= 0);
    }
    QApplication::setFont(QFont(QStringLiteral("Bitstream Vera Sans"), 9));
}

void TestVeltaInfoBox::cleanup()
{
    setScreen({800, 480});
    DeviceTest::cleanup();
}

void TestVeltaInfoBox::fitsEveryScreen_data()
{
    QTest::addColumn<QSize>("screen");
    for (const QSize &size : panelScreenSizes()) {
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
    }
}

void TestVeltaInfoBox::fitsEveryScreen()
{
    QFETCH(QSize, screen);
    setScreen(screen);
    const QString path = QStringLiteral("/proc/device-tree/qrd-specific/qrd_dpi_x_resolution");
    const QStringList arguments{QString(), QStringLiteral("/tmp/newsettings.ini"),
                                QStringLiteral("/very/long/name").repeated(200),
                                QStringLiteral("longname").repeated(500),
                                QStringLiteral("a b<c> ").repeated(300)};
    const auto check = [&](VeltaInfoBox &&box, const QString &name) {
        QString found;
        QVERIFY(runBox(box, [&] {
            found = faults(screen);
            openBody()->button(QMessageBox::Ok)->click();
        }));
        QVERIFY2(found.isEmpty(), qPrintable(name + QLatin1String(": ") + found));
    };
    const auto checkCode = [&](qint16 code, const QString &argument) {
        check(
            VeltaInfoBox(code, argument, QStringLiteral("Autoclose in"), 120, nullptr, false, true),
            QString::number(code) + argument.left(20));
    };
    // All messages on the screens that differ most, the longest ones on all, dense screens too.
    if (screen.height() <= 320 || screen.height() == 480 || screen.width() == 1920) {
        for (const ErrorEntry *pEntry = errorCatalogue; pEntry->nCode != ERR_END; ++pEntry) {
            checkCode(pEntry->nCode, QString());
            if (pEntry->text.contains(QLatin1Char('%'))) {
                checkCode(pEntry->nCode, arguments[1]);
            }
        }
    }
    for (const QByteArray &dpi : {QByteArray("96"), QByteArray("220")}) {
        root().write(path, dpi);
        checkCode(ERR_BROWSER_NOT_FOUND, QString());
        checkCode(ERR_CAL_TIMEOUT, QString());
        checkCode(3, QString());
        for (const QString &argument : arguments) {
            checkCode(ERR_FILE_OPEN_ABORT, argument);
            check(VeltaInfoBox(argument, 5, nullptr, false, true), argument.left(20));
        }
    }
}

void TestVeltaInfoBox::showsMessages_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("icon");
    QTest::addColumn<int>("buttons");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("error") << int(ERR_CREATE) << QStringLiteral("/flash/a")
                           << " <center>Error</center>"
                           << "Error -205: couldn't create /flash/a. Please check permissions."
                           << int(QMessageBox::Critical) << int(QMessageBox::Ok) << QColor("red");
    QTest::newRow("warning icon, two buttons")
        << int(ERR_NO_BROWSER_PATH) << QString() << " <center>Error</center>"
        << "Error -302: No path to browser set. Can not start browser!!!"
        << int(QMessageBox::Critical) << int(QMessageBox::Ok | QMessageBox::Abort) << QColor("red");
    QTest::newRow("warning") << int(WARN_INI_ENTRY_MISSING) << QString()
                             << " <center>Warning</center>"
                             << "Warning -100: entry not found in ini-file. Using default value "
                                "for entry."
                             << int(QMessageBox::Warning) << int(QMessageBox::Ok)
                             << QColor("orange");
    QTest::newRow("information") << 0 << QStringLiteral("Press <b> & wait")
                                 << " <center>Information</center>"
                                 << "Press <b> & wait" << int(QMessageBox::Information)
                                 << int(QMessageBox::Ok) << QColor("blue");
    for (const int code : {3, -216, int(ERR_END)}) {
        QTest::addRow("unknown %d", code)
            << code << QStringLiteral("x") << " " << QString() << int(QMessageBox::NoIcon)
            << int(QMessageBox::Ok) << QColor("red");
    }
}

void TestVeltaInfoBox::showsMessages()
{
    QFETCH(int, code);
    QFETCH(QString, argument);
    std::unique_ptr<VeltaInfoBox> box;
    if (code == 0) {
        box = std::make_unique<VeltaInfoBox>(argument, quint8(0), nullptr, false, true);
    } else {
        box =
            std::make_unique<VeltaInfoBox>(qint16(code), argument, quint8(0), nullptr, false, true);
    }
    QString title;
    QString text;
    int icon = -1;
    int buttons = -1;
    QColor colour;
    QVERIFY(runBox(*box, [&] {
        title = titleBar()->text();
        text = shownText();
        icon = openBody()->icon();
        buttons = openBody()->standardButtons();
        colour = titleBar()->grab().toImage().pixelColor(1, 1);
        openBody()->button(QMessageBox::Ok)->click();
    }));
    QTEST(title, "title");
    QTEST(text, "text");
    QTEST(icon, "icon");
    QTEST(buttons, "buttons");
    QTEST(colour, "colour");
}

void TestVeltaInfoBox::wrapsByScreenClass_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<int>("message");
    QTest::addColumn<int>("information");
    QTest::newRow("class 6") << QSize(480, 800) << 26 << 40;
    QTest::newRow("class 7") << QSize(600, 800) << 26 << 40;
    QTest::newRow("class 8") << QSize(640, 480) << 38 << 50;
    QTest::newRow("class 12") << QSize(800, 480) << 38 << 50;
}

void TestVeltaInfoBox::wrapsByScreenClass()
{
    QFETCH(QSize, screen);
    QFETCH(int, message);
    QFETCH(int, information);
    setScreen(screen);
    QString text;
    const auto look = [&] {
        text = QStringLiteral("<nobr>") + openBody()->text() + QStringLiteral("</nobr>");
        openBody()->button(QMessageBox::Ok)->click();
    };
    VeltaInfoBox error(ERR_CAL_TIMEOUT, 0, nullptr, false, true);
    QVERIFY(runBox(error, look));
    QCOMPARE(
        text,
        InfoText::wrap(QStringLiteral("Error -236: ") + findError(ERR_CAL_TIMEOUT)->text, message));
    const QString words = QStringLiteral("one two three ").repeated(10);
    VeltaInfoBox info(words, 0, nullptr, false, true);
    QVERIFY(runBox(info, look));
    QCOMPARE(text, InfoText::wrap(words, information));
}

void TestVeltaInfoBox::looksAsDescribed()
{
    QImage image;
    QRect title;
    VeltaInfoBox box(ERR_INI_ACCESS, 0, nullptr, false, true);
    QVERIFY(runBox(box, [&] {
        image = openBox()->grab().toImage();
        title = QRect(titleBar()->mapTo(openBox(), QPoint()), titleBar()->size());
        openBody()->button(QMessageBox::Ok)->click();
    }));
    QCOMPARE(title, QRect(1, 1, image.width() - 2, title.height()));
    const int bottom = image.height() - 1;
    const int right = image.width() - 1;
    for (const QPoint &border : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom),
                                 QPoint(right, bottom), QPoint(right / 2, 0)}) {
        QVERIFY(qGray(image.pixel(border)) < 128);
    }
    for (const QPoint &body :
         {QPoint(1, title.bottom() + 1), QPoint(1, bottom - 1),
          QPoint(right - 1, title.bottom() + 5), QPoint(right - 1, bottom - 1)}) {
        QCOMPARE(image.pixelColor(body), QColor(Qt::white));
    }
}

void TestVeltaInfoBox::isModalWhenItMustBe_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("countdown");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("modal");
    QTest::newRow("error") << int(ERR_CREATE) << 0 << false << true;
    QTest::newRow("-200") << int(ERR_NO_MEMORY) << 0 << false << true;
    QTest::newRow("warning") << int(WARN_VNC_LOST) << 0 << false << false;
    QTest::newRow("warning, asked") << int(WARN_VNC_LOST) << 0 << true << true;
    QTest::newRow("warning, counting") << int(WARN_VNC_LOST) << 3 << false << true;
    QTest::newRow("information") << 0 << 0 << false << false;
    QTest::newRow("information, asked") << 0 << 0 << true << true;
    QTest::newRow("information, counting") << 0 << 3 << false << false;
    QTest::newRow("unknown") << 3 << 0 << false << false;
}

void TestVeltaInfoBox::isModalWhenItMustBe()
{
    QFETCH(int, code);
    QFETCH(int, countdown);
    QFETCH(bool, asked);
    QFETCH(bool, modal);
    bool bInside = false;
    Qt::WindowModality modality = Qt::WindowModal;
    QTimer::singleShot(0, this, [&] {
        bInside = true;
        modality = openBox()->windowModality();
        openBody()->button(QMessageBox::Ok)->click();
    });
    std::unique_ptr<VeltaInfoBox> box;
    if (code == 0) {
        box = std::make_unique<VeltaInfoBox>(QStringLiteral("x"), quint8(countdown), nullptr, true,
                                             asked);
    } else {
        box = std::make_unique<VeltaInfoBox>(qint16(code), quint8(countdown), nullptr, true, asked);
    }
    QCOMPARE(bInside, modal);
    QCOMPARE(!openBox(), modal);
    QTRY_VERIFY(bInside);
    QCOMPARE(modality, modal ? Qt::ApplicationModal : Qt::NonModal);
    QVERIFY(!openBox());
}

void TestVeltaInfoBox::closesOn_data()
{
    QTest::addColumn<int>("key"); // 0: touch
    QTest::addColumn<bool>("abort");
    QTest::newRow("Return") << int(Qt::Key_Return) << false;
    QTest::newRow("Enter") << int(Qt::Key_Enter) << false;
    QTest::newRow("Space") << int(Qt::Key_Space) << false;
    QTest::newRow("Escape") << int(Qt::Key_Escape) << false;
    QTest::newRow("Escape with Abort") << int(Qt::Key_Escape) << true;
    QTest::newRow("touch") << 0 << false;
    QTest::newRow("touch on Abort") << 0 << true;
}

void TestVeltaInfoBox::closesOn()
{
    QFETCH(int, key);
    QFETCH(bool, abort);
    QWidget owner;
    owner.show();
    owner.activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), &owner);
    VeltaInfoBox box(abort ? ERR_NO_BROWSER_PATH : ERR_CREATE, 0, &owner, false, true);
    bool bActive = false;
    for (int i = 0; i < 2; ++i) { // a box may be shown again
        QVERIFY(runBox(box, [&] {
            bActive = QTest::qWaitForWindowActive(openBox());
            QWindow *pWindow = openBox()->windowHandle();
            if (key != 0) {
                QTest::keyClick(pWindow, static_cast<Qt::Key>(key));
                return;
            }
            static QPointingDevice *const pTouch = QTest::createTouchDevice();
            auto *pButton = openBody()->button(abort ? QMessageBox::Abort : QMessageBox::Ok);
            const QPoint centre = pButton->mapTo(openBox(), pButton->rect().center());
            QTest::touchEvent(pWindow, pTouch).press(0, centre, pWindow);
            QTest::touchEvent(pWindow, pTouch).release(0, centre, pWindow);
        }));
        QVERIFY(bActive);
        QTRY_COMPARE(QApplication::activeWindow(), &owner);
    }
}

void TestVeltaInfoBox::countsDown_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("buttonText");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("base");
    QTest::addColumn<int>("shownSeconds");
    QTest::newRow("own text") << int(ERR_CAL_TIMEOUT) << "Autoclose in" << 15 << "Autoclose in"
                              << 15;
    QTest::newRow("button's text") << int(WARN_VNC_LOST) << QString() << 1 << "OK" << 1;
    QTest::newRow("information") << 0 << QString() << 120 << "OK" << 120;
    QTest::newRow("too long") << int(ERR_CREATE) << QString() << 255 << "OK" << 120;
}

void TestVeltaInfoBox::countsDown()
{
    QFETCH(int, code);
    QFETCH(QString, buttonText);
    QFETCH(int, seconds);
    QFETCH(QString, base);
    QFETCH(int, shownSeconds);
    std::unique_ptr<VeltaInfoBox> box;
    if (code == 0) {
        box = std::make_unique<VeltaInfoBox>(QStringLiteral("x"), quint8(seconds), nullptr, false,
                                             true);
    } else {
        box = std::make_unique<VeltaInfoBox>(qint16(code), QString(), buttonText, quint8(seconds),
                                             nullptr, false, true);
    }
    QStringList shown;
    int interval = 0;
    QVERIFY(runBox(*box, [&] {
        const QAbstractButton *pButton = openBody()->button(QMessageBox::Ok);
        interval = box->findChild<QTimer *>()->interval();
        shown += pButton->text();
        for (int i = 0; i < shownSeconds; ++i) {
            box->CountDown();
            shown += pButton->text();
        }
        if (openBox()) { // stays for the second at 0
            box->CountDown();
        }
    }));
    QCOMPARE(interval, 1000);
    QStringList expected;
    for (int i = shownSeconds; i >= 0; --i) {
        expected += QStringLiteral("%1 (%2)").arg(base).arg(i);
    }
    QCOMPARE(shown, expected);
}

void TestVeltaInfoBox::countdownMayBeCutShort()
{
    {
        VeltaInfoBox box(ERR_CREATE, 1, nullptr, false, true);
        QVERIFY(runBox(box, [] { openBody()->button(QMessageBox::Ok)->click(); }));
        box.CountDown(); // a step that was under way
        QVERIFY(!openBox());
    }
    auto box = std::make_unique<VeltaInfoBox>(QStringLiteral("x"), quint8(9), nullptr, true, false);
    QVERIFY(openBox());
    box.reset();
    QVERIFY(!openBox());
}

void TestVeltaInfoBox::keepsItsSizeWhileCounting()
{
    VeltaInfoBox box(WARN_VNC_LOST, 120, nullptr, false, true);
    QSize before;
    QSize after;
    QRect buttonBefore;
    QRect buttonAfter;
    QVERIFY(runBox(box, [&] {
        QAbstractButton *pButton = openBody()->button(QMessageBox::Ok);
        before = openBox()->size();
        buttonBefore = pButton->geometry();
        for (int i = 0; i < 115; ++i) {
            box.CountDown();
        }
        QCoreApplication::sendPostedEvents();
        after = openBox()->size();
        buttonAfter = pButton->geometry();
        pButton->click();
    }));
    QCOMPARE(after, before);
    QCOMPARE(buttonAfter, buttonBefore);
}

void TestVeltaInfoBox::appearsForAHiddenOwner()
{
    QWidget owner;
    VeltaInfoBox box(ERR_CREATE, 0, &owner, false, true);
    QVERIFY(runBox(box, [] { openBody()->button(QMessageBox::Ok)->click(); }));
    QVERIFY(!owner.isVisible());
}

void TestVeltaInfoBox::showsAgain()
{
    VeltaInfoBox box(WARN_VNC_LOST, 0, nullptr, true, false);
    const QRect first = openBox()->geometry();
    box.showBox(false);
    QCOMPARE(openBox()->geometry(), first);
    openBody()->button(QMessageBox::Ok)->click();
    QVERIFY(!openBox());
    box.showBox(false);
    QCOMPARE(openBox()->geometry(), first);
    QVERIFY(openBody()->isVisible());
    openBody()->button(QMessageBox::Ok)->click();
    QVERIFY(!openBox());
}

PANEL_TEST_MAIN(TestVeltaInfoBox)
#include "tst_veltainfobox.moc"
