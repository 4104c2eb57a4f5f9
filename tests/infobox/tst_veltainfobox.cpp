#include "infobox/infotext.h"
#include "infobox/veltainfobox.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "settings/errorcatalogue.h"
#include "tests/support/devicetest.h"

#include <QPointingDevice>
#include <QTextDocumentFragment>

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

} // namespace

class TestVeltaInfoBox : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsMessages_data()
    {
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
        FETCH(int, code, QString, argument, QString, title, QString, text, int, icon, int, buttons,
              QColor, colour);
        const auto box = makeBox(code, argument, 0);
        QVERIFY(runBox(*box, [&] {
            QCOMPARE(titleBar()->text(), title);
            QCOMPARE(shownText(), text);
            QCOMPARE(int(openBody()->icon()), icon);
            QCOMPARE(int(openBody()->standardButtons()), buttons);
            const QImage picture = openBox()->grab().toImage();
            QVERIFY(qGray(picture.pixel(0, 0)) < 128
                    && qGray(picture.pixel(0, picture.height() - 1)) < 128);
            QCOMPARE(picture.pixelColor(picture.width() - 2, 1), colour);
            QCOMPARE(picture.pixelColor(1, picture.height() - 2), QColor(Qt::white));
            pressOk();
        }));
    }

    void catalogue()
    {
        for (const ErrorEntry *pEntry = errorCatalogue; pEntry->nCode != ERR_END; ++pEntry) {
            const qint16 code = pEntry->nCode;
            const QByteArray name = QByteArray::number(code);
            QVERIFY2(findError(code) == pEntry, name); // and no other has it
            QVERIFY2(code <= -100 && code >= -999, name);
            QVERIFY2(code <= -200 || pEntry->nIcon == QMessageBox::Warning, name);
            QVERIFY2(!pEntry->text.isEmpty() && pEntry->text.count(QLatin1Char('%')) <= 1, name);
        }
    }

    void findsOnlyMessages()
    {
        for (const int code : {0, 1, 5, 32767, -216, -9999, -32768}) {
            QVERIFY2(!findError(static_cast<qint16>(code)), QByteArray::number(code));
        }
        QCOMPARE(findError(ERR_GENERAL)->text, "%1 ");
    }

    void composes_data()
    {
        const auto add = [](const QByteArray &message, const char *argument, const char *composed) {
            row(message + '|' + argument, message, argument, composed);
        };
        // With the arguments "eth0", "x" and none, each with and without blanks.
        for (const auto &[message, word, one, none] : QList<std::array<const char *, 4>>{
                 {"in %1 now.", "in eth0 now.", "in x now.", "in now."},
                 {"in %1. Now.", "in eth0. Now.", "in x. Now.", "in . Now."},
                 {"code %1", "code eth0 ", "code x ", "code "},
                 {"code %1, now", "code eth0 , now", "code x , now", "code , now"},
                 {"%1 data", "eth0 data", "x data", " data"},
                 {"%1. Severe", "eth0. Severe", "x. Severe", ". Severe"},
                 {"Wrong.%1", "Wrong. eth0", "Wrong.", "Wrong."},
                 {"(%1)", "(%1)", "(%1)", "(%1)"},
                 {"Nothing", "Nothing", "Nothing", "Nothing"},
                 {"%1 ", "eth0 ", "x ", " "}}) {
            for (const auto &[argument, composed] : {std::pair("eth0", word),
                                                     {" eth0 ", word},
                                                     {"x", one},
                                                     {" x", one},
                                                     {"", none},
                                                     {" ", none},
                                                     {"  ", none}}) {
                add(message, argument, composed);
            }
        }
        add("Wrong.%1", "  ab", "Wrong. ab");
        add("in %1.", "%1 %2", "in %1 %2.");
    }
    void composes()
    {
        FETCH(QString, message, QString, argument, QString, composed);
        QCOMPARE(InfoText::compose(message, argument), composed);
    }

    void wraps_data()
    {
        // of at most 10 characters, from the text
        row("", "");
        row("0123456789", "0123456789");
        row("0123456789A", "0123456789<br/>A");
        row("one two three", "one two<br/>three");
        row("one two 78 0", "one two<br/>78 0"); // the blank after a full line is not in it
        row("012345678 9", "012345678<br/>9");
        row("0123456789 A", "0123456789<br/> A");
        row(" 0123456789", "<br/>0123456789");
        row("/tmp/a/newfile", "/tmp/a/<br/>newfile");
        row("a/b c/defghij", "a/b<br/>c/defghij"); // a blank before a slash
        row("/tmp/file/0123", "/tmp/file/<br/>0123");
        row("01234567890123456789A", "0123456789<br/>0123456789<br/>A");
        row("<b>a&b</b>cd", "&lt;b&gt;a&amp;b&lt;/<br/>b&gt;cd");
        row("50% %1 %2 done", "50% %1 %2<br/>done");
    }
    void wraps()
    {
        FETCH(QString, lines);
        QCOMPARE(InfoText::wrap(QTest::currentDataTag(), 10),
                 QStringLiteral("<nobr>") + lines + "</nobr>");
    }

    void looksByScreenClass_data()
    {
        // Characters per line of a message and of an information; points of text and button, which
        // has its own font.
        row("480x800", QSize(480, 800), 26, 40, 9, 9);
        row("640x480", QSize(640, 480), 38, 50, 9, 9);
        row("1024x768", QSize(1024, 768), 38, 50, 12, 16);
        row("1920x1080", QSize(1920, 1080), 38, 50, 16, 16);
    }
    void looksByScreenClass()
    {
        FETCH(QSize, screen, int, message, int, information, int, textPoints, int, buttonPoints);
        setScreen(screen);
        QString text;
        const auto look = [&] {
            text = QStringLiteral("<nobr>") + openBody()->text() + "</nobr>";
            QCOMPARE(openBody()->font().pointSize(), textPoints);
            QCOMPARE(openBody()->button(QMessageBox::Ok)->font().pointSize(), buttonPoints);
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

    void isModalWhenItMustBe_data()
    {
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
        FETCH(int, code, int, countdown, bool, asked, bool, modal);
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
        // key 0: touch
        row("Return", int(Qt::Key_Return), false);
        row("Escape", int(Qt::Key_Escape), false);
        row("Escape with Abort", int(Qt::Key_Escape), true);
        row("touch", 0, false);
    }
    void closesOn()
    {
        FETCH(int, key, bool, abort);
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
                auto *pButton = openBody()->button(QMessageBox::Ok);
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
        row("own text", int(ERR_CAL_TIMEOUT), "Autoclose in", 15, "Autoclose in", 15);
        row("button's text", int(WARN_VNC_LOST), QString(), 1, "OK", 1);
        row("information", 0, QString(), 120, "OK", 120);
        row("too long", int(ERR_CREATE), QString(), 255, "OK", 120);
    }
    /// Box and button keep their places meanwhile.
    void countsDown()
    {
        FETCH(int, code, QString, buttonText, int, seconds, QString, base, int, shownSeconds);
        const auto box = makeBox(code, code == 0 ? "x" : "", seconds, buttonText);
        QStringList shown;
        int interval = 0;
        QVERIFY(runBox(*box, [&] {
            const QAbstractButton *pButton = openBody()->button(QMessageBox::Ok);
            interval = box->findChild<QTimer *>()->interval();
            shown += pButton->text();
            const QSize size = openBox()->size();
            const QRect place = pButton->geometry();
            for (int i = 0; i < shownSeconds; ++i) {
                box->CountDown();
                shown += pButton->text();
                QCoreApplication::sendPostedEvents();
                QCOMPARE(openBox()->size(), size);
                QCOMPARE(pButton->geometry(), place);
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
        auto box = std::make_unique<VeltaInfoBox>("x", quint8(9), nullptr, true, false);
        QVERIFY(openBox());
        box.reset();
        QVERIFY(!openBox());
    }

    void showsAgain()
    {
        VeltaInfoBox box(WARN_VNC_LOST, 0, nullptr, true, false);
        const QRect first = openBox()->geometry();
        QWidget above;
        above.show();
        box.showBox(false);
        QCOMPARE(openBox()->geometry(), first);
        QCOMPARE(visibleWindows().constLast(), openBox());
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
