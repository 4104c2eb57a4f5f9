#include "infobox/infotext.h"
#include "infobox/veltainfobox.h"
#include "settings/errorcatalogue.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPointingDevice>
#include <QPushButton>
#include <QScreen>
#include <QTextDocumentFragment>
#include <QWindow>

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

void pressOk()
{
    openBody()->button(QMessageBox::Ok)->click();
}

/// The box of a code; 0 is the information \a argument.
std::unique_ptr<VeltaInfoBox> makeBox(int code, const QString &argument, int countdown,
                                      const QString &buttonText = {}, bool showNow = false,
                                      bool modal = true)
{
    const auto seconds = quint8(countdown);
    return code == 0 ? std::make_unique<VeltaInfoBox>(argument, seconds, nullptr, showNow, modal)
                     : std::make_unique<VeltaInfoBox>(qint16(code), argument, buttonText, seconds,
                                                      nullptr, showNow, modal);
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
    const QSize rest = screen - box.size();
    if (box.topLeft() != QPoint(rest.width() / 2, rest.height() / 2)) {
        found += QStringLiteral("not in the middle");
    }
    const auto widgets = pDialog->findChildren<QWidget *>();
    for (const QWidget *pWidget : widgets) {
        const bool bHasText =
            qobject_cast<const QLabel *>(pWidget) || qobject_cast<const QAbstractButton *>(pWidget);
        const QRect place(pWidget->mapTo(pDialog, QPoint()), pWidget->size());
        const QSize least = bHasText ? pWidget->minimumSizeHint() : QSize();
        if (pWidget->isVisible()
            && (!pDialog->rect().contains(place)
                || place.size().expandedTo(least) != place.size())) {
            found += "clipped: " + QString(pWidget->metaObject()->className());
        }
    }
    return found.join(QLatin1String(", "));
}

} // namespace

class TestVeltaInfoBox : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void fitsEveryScreen_data()
    {
        columns<QSize>("screen");
        for (const PanelScreen &screen : panelScreens()) {
            row(screen.name(), screen.size);
        }
    }
    void fitsEveryScreen()
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
                pressOk();
            }));
            QVERIFY2(found.isEmpty(), qPrintable(name + QLatin1String(": ") + found));
        };
        const auto checkCode = [&](qint16 code, const QString &argument) {
            check(VeltaInfoBox(code, argument, QStringLiteral("Autoclose in"), 120, nullptr, false,
                               true),
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

    void showsMessages_data()
    {
        columns<int, QString, QString, QString, int, int, QColor>(
            "code", "argument", "title", "text", "icon", "buttons", "colour");
        row("error", int(ERR_CREATE), "/flash/a", " <center>Error</center>",
            "Error -205: couldn't create /flash/a. Please check permissions.",
            int(QMessageBox::Critical), int(QMessageBox::Ok), QColor("red"));
        row("warning icon, two buttons", int(ERR_NO_BROWSER_PATH), QString(),
            " <center>Error</center>",
            "Error -302: No path to browser set. Can not start browser!!!",
            int(QMessageBox::Critical), int(QMessageBox::Ok | QMessageBox::Abort), QColor("red"));
        row("warning", int(WARN_INI_ENTRY_MISSING), QString(), " <center>Warning</center>",
            "Warning -100: entry not found in ini-file. Using default value for entry.",
            int(QMessageBox::Warning), int(QMessageBox::Ok), QColor("orange"));
        row("information", 0, "Press <b> & wait", " <center>Information</center>",
            "Press <b> & wait", int(QMessageBox::Information), int(QMessageBox::Ok),
            QColor("blue"));
        for (const int code : {3, -216, int(ERR_END)}) {
            row("unknown " + QByteArray::number(code), code, "x", " ", "", int(QMessageBox::NoIcon),
                int(QMessageBox::Ok), QColor("red"));
        }
    }
    void showsMessages()
    {
        QFETCH(int, code);
        QFETCH(QString, argument);
        const auto box = makeBox(code, argument, 0);
        QVERIFY(runBox(*box, [&] {
            QTEST(titleBar()->text(), "title");
            QTEST(shownText(), "text");
            QTEST(int(openBody()->icon()), "icon");
            QTEST(int(openBody()->standardButtons()), "buttons");
            QTEST(titleBar()->grab().toImage().pixelColor(1, 1), "colour");
            pressOk();
        }));
    }

    void wrapsByScreenClass_data()
    {
        columns<QSize, int, int>("screen", "message", "information");
        row("class 6", QSize(480, 800), 26, 40);
        row("class 7", QSize(600, 800), 26, 40);
        row("class 8", QSize(640, 480), 38, 50);
        row("class 12", QSize(800, 480), 38, 50);
    }
    void wrapsByScreenClass()
    {
        QFETCH(QSize, screen);
        QFETCH(int, message);
        QFETCH(int, information);
        setScreen(screen);
        QString text;
        const auto look = [&] {
            text = QStringLiteral("<nobr>") + openBody()->text() + QStringLiteral("</nobr>");
            pressOk();
        };
        VeltaInfoBox error(ERR_CAL_TIMEOUT, 0, nullptr, false, true);
        QVERIFY(runBox(error, look));
        QCOMPARE(text,
                 InfoText::wrap(QStringLiteral("Error -236: ") + findError(ERR_CAL_TIMEOUT)->text,
                                message));
        const QString words = QStringLiteral("one two three ").repeated(10);
        VeltaInfoBox info(words, 0, nullptr, false, true);
        QVERIFY(runBox(info, look));
        QCOMPARE(text, InfoText::wrap(words, information));
    }

    void looksAsDescribed()
    {
        QImage image;
        QRect title;
        VeltaInfoBox box(ERR_INI_ACCESS, 0, nullptr, false, true);
        QVERIFY(runBox(box, [&] {
            image = openBox()->grab().toImage();
            title = QRect(titleBar()->mapTo(openBox(), QPoint()), titleBar()->size());
            pressOk();
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

    // A button has its own font, larger than the text's on the larger screens.
    void buttonFont_data()
    {
        columns<QSize, int, int>("screen", "text", "button");
        row("800x480", QSize(800, 480), 12, 11);
        row("1024x768", QSize(1024, 768), 12, 16);
        row("1280x1024", QSize(1280, 1024), 12, 14);
        row("1920x1080", QSize(1920, 1080), 16, 16);
    }
    void buttonFont()
    {
        QFETCH(QSize, screen);
        setScreen(screen);
        VeltaInfoBox box(ERR_PASSWORD, QString(), 10, nullptr, false, true);
        QVERIFY(runBox(box, [&] {
            QTEST(openBody()->font().pointSize(), "text");
            QTEST(openBody()->button(QMessageBox::Ok)->font().pointSize(), "button");
            pressOk();
        }));
    }

    void isModalWhenItMustBe_data()
    {
        columns<int, int, bool, bool>("code", "countdown", "asked", "modal");
        row("error", int(ERR_CREATE), 0, false, true);
        row("-200", int(ERR_NO_MEMORY), 0, false, true);
        row("warning", int(WARN_VNC_LOST), 0, false, false);
        row("warning, asked", int(WARN_VNC_LOST), 0, true, true);
        row("warning, counting", int(WARN_VNC_LOST), 3, false, true);
        row("information", 0, 0, false, false);
        row("information, asked", 0, 0, true, true);
        row("information, counting", 0, 3, false, false);
        row("unknown", 3, 0, false, false);
    }
    void isModalWhenItMustBe()
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
            pressOk();
        });
        const auto box = makeBox(code, "x", countdown, {}, true, asked);
        QCOMPARE(bInside, modal);
        QCOMPARE(!openBox(), modal);
        QTRY_VERIFY(bInside);
        QCOMPARE(modality, modal ? Qt::ApplicationModal : Qt::NonModal);
        QVERIFY(!openBox());
    }

    void closesOn_data()
    {
        columns<int, bool>("key", "abort"); // key 0: touch
        row("Return", int(Qt::Key_Return), false);
        row("Enter", int(Qt::Key_Enter), false);
        row("Space", int(Qt::Key_Space), false);
        row("Escape", int(Qt::Key_Escape), false);
        row("Escape with Abort", int(Qt::Key_Escape), true);
        row("touch", 0, false);
        row("touch on Abort", 0, true);
    }
    void closesOn()
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

    void countsDown_data()
    {
        columns<int, QString, int, QString, int>("code", "buttonText", "seconds", "base",
                                                 "shownSeconds");
        row("own text", int(ERR_CAL_TIMEOUT), "Autoclose in", 15, "Autoclose in", 15);
        row("button's text", int(WARN_VNC_LOST), QString(), 1, "OK", 1);
        row("information", 0, QString(), 120, "OK", 120);
        row("too long", int(ERR_CREATE), QString(), 255, "OK", 120);
    }
    void countsDown()
    {
        QFETCH(int, code);
        QFETCH(QString, buttonText);
        QFETCH(int, seconds);
        QFETCH(QString, base);
        QFETCH(int, shownSeconds);
        const auto box = makeBox(code, code == 0 ? "x" : "", seconds, buttonText);
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

    void countdownMayBeCutShort()
    {
        {
            VeltaInfoBox box(ERR_CREATE, 1, nullptr, false, true);
            QVERIFY(runBox(box, pressOk));
            box.CountDown(); // a step that was under way
            QVERIFY(!openBox());
        }
        auto box =
            std::make_unique<VeltaInfoBox>(QStringLiteral("x"), quint8(9), nullptr, true, false);
        QVERIFY(openBox());
        box.reset();
        QVERIFY(!openBox());
    }

    void keepsItsSizeWhileCounting()
    {
        VeltaInfoBox box(WARN_VNC_LOST, 120, nullptr, false, true);
        QVERIFY(runBox(box, [&] {
            const QAbstractButton *pButton = openBody()->button(QMessageBox::Ok);
            const QSize size = openBox()->size();
            const QRect place = pButton->geometry();
            for (int i = 0; i < 115; ++i) {
                box.CountDown();
            }
            QCoreApplication::sendPostedEvents();
            QCOMPARE(openBox()->size(), size);
            QCOMPARE(pButton->geometry(), place);
            pressOk();
        }));
    }

    void appearsForAHiddenOwner()
    {
        QWidget owner;
        VeltaInfoBox box(ERR_CREATE, 0, &owner, false, true);
        QVERIFY(runBox(box, pressOk));
        QVERIFY(!owner.isVisible());
    }

    void showsAgain()
    {
        VeltaInfoBox box(WARN_VNC_LOST, 0, nullptr, true, false);
        const QRect first = openBox()->geometry();
        box.showBox(false);
        QCOMPARE(openBox()->geometry(), first);
        pressOk();
        QVERIFY(!openBox());
        box.showBox(false);
        QCOMPARE(openBox()->geometry(), first);
        QVERIFY(openBody()->isVisible());
        pressOk();
        QVERIFY(!openBox());
    }
};

PANEL_TEST_MAIN(TestVeltaInfoBox)
#include "tst_veltainfobox.moc"
