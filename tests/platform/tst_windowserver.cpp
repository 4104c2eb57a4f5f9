#include "platform/plcstatus.h"
#include "platform/touchtype.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "tests/platform/keyboardfifo.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/devicetest.h"

#include <QDataStream>

namespace {

const QString Device = "/dev/input/touchscreen";
const QString Property = "/proc/device-tree/qrd-specific/qrd_touch_type";

/// A key map file of Qt's evdev driver that makes the Y key write "z", with \a nKeys and
/// \a nComposed in its header.
QByteArray keymap(quint32 nKeys = 1, quint32 nComposed = 0, quint32 nMagic = 0x514d4150)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    constexpr quint32 Version = 1;
    stream << nMagic << Version << nKeys << nComposed;
    stream << quint16(KEY_Y) << quint16(u'z') << quint32(Qt::Key_unknown) << quint8(0) << quint8(0)
           << quint16(0);
    return bytes;
}

} // namespace

class TestWindowServer : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void keyboardTypes_data()
    {
        row("built-in key map", ":grab=1", QByteArray(), "y", false);
        const QString mapped = ":grab=1:keymap=/etc/kbd/de.qmap";
        row("key map file", mapped, keymap(), "z", false);
        row("4 billion keys", mapped, keymap(0xffffffff), "y", true);
        row("4 billion composed ones", mapped, keymap(1, 0xffffffff), "y", true);
        row("a key too many", mapped, keymap(2), "y", true);
        row("no key", mapped, keymap(0), "y", true);
        row("torn", mapped, keymap().chopped(1), "y", true);
        row("no header", mapped, "QMAP", "y", true);
        row("no key map", mapped, keymap(1, 0, 0), "y", true);
        row("FIFO", mapped, "fifo", "y", true);
        row("folder", mapped, "directory", "y", true);
    }
    void keyboardTypes()
    {
        FETCH(QString, options, QByteArray, map, QString, text, bool, warned);
        root().plant("/etc/kbd/de.qmap", map);
        const KeyboardFifo keyboard(root(), "keyboard0");

        WindowServer server;
        if (warned) {
            expectWarning("de.qmap is not used");
        }
        auto handler = WindowServer::createKeyboardHandler("/dev/input/keyboard0" + options);
        QVERIFY(handler);
        server.setKeyboardHandler(std::move(handler));
        QVERIFY(server.hasKeyboard());

        QLineEdit edit;
        edit.show();
        edit.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        keyboard.type({KEY_Y});
        QTRY_VERIFY(!edit.text().isEmpty());
        QCOMPARE(edit.text(), text);

        server.closeKeyboard();
        QVERIFY(!server.hasKeyboard());
        keyboard.type({KEY_Y});
        processAll();
        QCOMPARE(edit.text(), text);
    }

    /// The keys that end a program by default end this one by no keyboard.
    void keysDoNotQuit()
    {
        const KeyboardFifo keyboard(root(), "keyboard0");
        WindowServer server;
        server.setKeyboardHandler(WindowServer::createKeyboardHandler("/dev/input/keyboard0"));
        QLineEdit edit;
        edit.show();
        edit.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        constexpr int Survived = 7;
        connect(&edit, &QLineEdit::textChanged, this, [] { QCoreApplication::exit(Survived); });
        QTimer::singleShot(0, this, [&keyboard] {
            keyboard.type({KEY_LEFTCTRL, KEY_LEFTALT, KEY_BACKSPACE});
            keyboard.type({KEY_Y});
        });
        QTimer::singleShot(5000, &edit, [] { QCoreApplication::exit(1); });
        QCOMPARE(QCoreApplication::exec(), Survived);
    }

    void rotationOption_data()
    {
        row("none", "offscreen", 0);
        row("degrees", "offscreen:rotation=90", 1);
        row("after another option", "offscreen:fb=/dev/fb0:rotation=270", 3);
        row("quarter turns", "offscreen:rotation=2", 2);
        row("backwards", "offscreen:rotation=-90", 3);
        row("full turn", "offscreen:rotation=360", 0);
        row("no number", "offscreen:rotation=left", 0);
        row("of another platform", "xcb:rotation=90;offscreen", 0);
        row("second choice", "eglfs;offscreen:rotation=180", 2);
    }
    void rotationOption()
    {
        FETCH(QByteArray, argument, int, turns);
        qputenv("QT_QPA_PLATFORM", argument);
        const WindowServer server;
        QCOMPARE(server.transformationOrientation(), turns);
        QCOMPARE(server.isTransformed(), server.transformationOrientation() != 0);
    }

    void touchType_data()
    {
        row("single", QByteArray("single\0", 7), false);
        row("multi", QByteArray("multi\0", 6), true);
        row("capital", "Multi\n", true);
        row("inside, without NUL", "capMULTItouch", true);
        row("blanks in front", " \t multi-touch", true);
        row("second word", "single multi", false);
        row("second string", QByteArray("single\0multi\0", 13), false);
        row("empty", QByteArray(), false);
        row("blanks only", " \n", false);
        row("1 MB", QByteArray(1 << 20, 'x') + "multi", false);
        row("binary", "\xff\xfe\x80", false);
    }
    void touchType()
    {
        FETCH(QByteArray, content, bool, multi);
        root().write(Device, {});
        root().write(Property, content);
        QCOMPARE(readTouchType(), multi ? TouchType::Multi : TouchType::Single);
    }

    void touchTypeOfNone()
    {
        root().write(Property, "multi");
        QCOMPARE(readTouchType(), TouchType::None);
        root().write(Device, {});
        root().remove(Property);
        QCOMPARE(readTouchType(), TouchType::Single);
        root().write(Property + "/is-a-folder", {});
        QCOMPARE(readTouchType(), TouchType::Single);
        root().plant(Property, "fifo");
        QCOMPARE(readTouchType(), TouchType::Single);
    }

    void touchTypeOfTheEnvironment()
    {
        root().write("/tmp/touch", {});
        qputenv("TSLIB_TSDEVICE", QFile::encodeName(root().path("/tmp/touch")));
        QCOMPARE(readTouchType(), TouchType::Single);
        qputenv("TSLIB_TSDEVICE", "/nonexistent/touchscreen");
        root().write(Device, {});
        QCOMPARE(readTouchType(), TouchType::None);
        qunsetenv("TSLIB_TSDEVICE");
    }

    void textEndsInsideItsBuffer()
    {
        const std::array<char, 8> memory{'1', '9', '2', '\0', 'x', 'y', 'z', 'z'};
        QCOMPARE(firmwareText(memory), "192");
        QCOMPARE(firmwareText(std::span(memory).first(2)), "19");
        QCOMPARE(firmwareText(std::span(memory).last(4)), "xyzz");
        QCOMPARE(firmwareText({}), QString());
        PlcStatus both[2]; // the last entry of the first has no end, and less room than the others
        std::memset(both, 'W', sizeof both);
        std::memset(both[0].entries, 0, 4 * PlcStatus::EntrySize);
        QCOMPARE(both[0].firstAppName(), QString(360, u'W'));
    }

    void withoutTouchscreen()
    {
        root().write("/etc/pointercal", "1 2 3 4 5 6 7");
        WindowServer server;
        QVERIFY(server.openPointer());
        server.suspendPointer();
        server.resumePointer();
        server.clearCalibration();
        QCOMPARE(server.calibrate({}, server.saveCalibration()), CalibrationOutcome::Stored);
        QVERIFY(server.restoreCalibration({}));
        QCOMPARE(root().read("/etc/pointercal"), "1 2 3 4 5 6 7");

        // It comes late, and is used from then on.
        root().remove("/etc/pointercal");
        QSignalSpy opened(&server, &WindowServer::touchscreenOpened);
        server.suspendPointer();
        TouchscreenFifo touchscreen(root());
        QTest::qWait(50); // the folder's change has come by then
        QCOMPARE(opened.size(), 0);
        server.resumePointer();
        QTRY_COMPARE(opened.size(), 1);
        clickWith(touchscreen);
    }

    void multiTouch()
    {
        // Not an event device, which is the only thing that Qt's own driver survives.
        TouchscreenFifo touchscreen(root());
        root().write(Property, "multi");
        WindowServer server;
        QVERIFY(server.openPointer());
        clickWith(touchscreen);
    }

    // The topmost one, the last of the order, has the keys.
    void topmostHasTheKeys_data()
    {
        // Acts, each with its window, and the order behind them.
        row("one after the other", "+1+2", "m12");
        row("raised", "+1+2^1", "m21");
        row("hidden", "+1+2=2-2", "m1");
        row("the lower one hidden", "+1+2-1", "m2");
        row("destroyed", "+1=1x1", "m");
        row("gone at once", "+1a1-1", "m");
        row("hidden and shown at once", "+1=1-1+1", "m1");
        row("a modal one made anew", "!1+1=1f1+1", "m1");
        row("an active modal one destroyed", "+1!2+2=2x2", "m1");
        row("the main window comes back below", "-m!1+1!2+2bm", "m12");
        row("the upper of two modal ones closed", "!1+1!2+2=2c2", "m1");
        row("shown above a modal one, which is raised", "!1+1+2^1", "m21");
    }
    void topmostHasTheKeys()
    {
        FETCH(QByteArray, acts, QByteArray, after);
        pMain = std::make_unique<QWidget>();
        pFirst = std::make_unique<QDialog>();
        pSecond = std::make_unique<QDialog>();
        pMain->show();
        QTRY_VERIFY(pMain->isActiveWindow()); // though nobody asked for it
        for (qsizetype i = 0; i < acts.size(); i += 2) {
            take(acts[i], acts[i + 1]);
        }
        QCOMPARE(order(), after);
        QTRY_COMPARE(QApplication::activeWindow(), visibleWindows().constLast());
        QTest::qWait(1);
        QCOMPARE(QApplication::activeWindow(), visibleWindows().constLast());
    }

    /// A window that has never been shown has no pointer to change.
    void cursor()
    {
        WindowServer server;
        const QWindow hidden;
        server.setCursorVisible(false);
        QVERIFY(!server.isCursorVisible());
    }

private:
    std::unique_ptr<QWidget> pMain;
    std::unique_ptr<QDialog> pFirst, pSecond;

    void closeWindows() override
    {
        pSecond.reset();
        pFirst.reset();
        pMain.reset();
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QByteArray order() const
    {
        QByteArray names;
        for (const QWidget *pWindow : visibleWindows()) {
            names += pWindow == pMain.get() ? 'm'
                : pWindow == pFirst.get()   ? '1'
                : pWindow == pSecond.get()  ? '2'
                                            : '?';
        }
        return names;
    }
    /// \a act with the window \a which: '1', '2' or the main window.
    void take(char act, char which)
    {
        auto &pDialog = which == '1' ? pFirst : pSecond;
        QWidget *pWindow = which == 'm' ? pMain.get() : pDialog.get();
        switch (act) {
        case '+':
            return pWindow->show();
        case '-':
            return pWindow->hide();
        case '^':
            return pWindow->raise();
        case '!':
            return pDialog->setModal(true);
        case '=':
            QTRY_VERIFY(pWindow->isActiveWindow());
            return;
        case 'a':
            return pWindow->activateWindow();
        case 'c':
            return pDialog->accept();
        case 'f': // is made anew
            return pWindow->setWindowFlag(Qt::FramelessWindowHint);
        case 'b':
            pWindow->showFullScreen();
            return keepBelowOthers(pWindow);
        case 'x':
            return pDialog.reset();
        }
        QFAIL("no such act");
    }

    static void clickWith(TouchscreenFifo &touchscreen)
    {
        QPushButton button;
        button.setGeometry(100, 100, 80, 40);
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QSignalSpy clicks(&button, &QPushButton::clicked);
        waitOutDoubleTap();
        touchscreen.tap({140, 120});
        QTRY_COMPARE(clicks.size(), 1);
    }
};

PANEL_TEST_MAIN(TestWindowServer)
#include "tst_windowserver.moc"
