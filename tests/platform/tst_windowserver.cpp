#include "platform/windowserver.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <QDataStream>
#include <QLineEdit>
#include <QPushButton>

#include <linux/input.h>

namespace {

/// What a keyboard's FIFO carries for one key pressed and released.
QByteArray keyStroke(quint16 code)
{
    QByteArray bytes;
    for (const int value : {1, 0}) {
        for (const auto &[type, number, state] :
             {std::tuple{EV_KEY, code, value}, std::tuple{EV_SYN, quint16(SYN_REPORT), 0}}) {
            input_event event{};
            event.type = quint16(type);
            event.code = number;
            event.value = state;
            bytes.append(reinterpret_cast<const char *>(&event), sizeof event);
        }
    }
    return bytes;
}

/// A key map file of Qt's evdev driver that makes the key \a code write \a text.
QByteArray keymap(quint16 code, char16_t text)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    constexpr quint32 Magic = 0x514d4150; // "QMAP"
    constexpr quint32 Version = 1;
    stream << Magic << Version << quint32(1) /* keys */ << quint32(0) /* composed keys */;
    stream << code << quint16(text) << quint32(Qt::Key_unknown) << quint8(0) << quint8(0)
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
        columns<QString, QString>("options", "text");
        row("built-in key map", ":grab=1", "y");
        row("key map file", ":grab=1:keymap=/etc/kbd/de.qmap", "z");
    }
    void keyboardTypes()
    {
        QFETCH(QString, options);
        root().write("/etc/kbd/de.qmap", keymap(KEY_Y, u'z'));
        const QByteArray fifo = QFile::encodeName(root().path("/dev/input/keyboard-fifo"));
        QVERIFY(mkfifo(fifo.constData(), 0600) == 0);
        QVERIFY(QFile::link("keyboard-fifo", root().path("/dev/input/keyboard0")));

        WindowServer server;
        auto handler = WindowServer::createKeyboardHandler("/dev/input/keyboard0" + options);
        QVERIFY(handler);
        server.setKeyboardHandler(std::move(handler));
        QVERIFY(server.hasKeyboard());

        QLineEdit edit;
        edit.show();
        edit.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        QFile keyboard(QString::fromLocal8Bit(fifo));
        QVERIFY(keyboard.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        keyboard.write(keyStroke(KEY_Y));
        QTRY_VERIFY(!edit.text().isEmpty());
        QTEST(edit.text(), "text");

        server.closeKeyboard();
        QVERIFY(!server.hasKeyboard());
        keyboard.write(keyStroke(KEY_Y));
        for (int i = 0; i < 5; ++i) {
            QCoreApplication::processEvents();
        }
        QTEST(edit.text(), "text");
    }

    void rotationOption_data()
    {
        columns<QByteArray, int>("argument", "turns");
        row("none", QByteArray("offscreen"), 0);
        row("degrees", QByteArray("offscreen:rotation=90"), 1);
        row("after another option", QByteArray("offscreen:fb=/dev/fb0:rotation=270"), 3);
        row("quarter turns", QByteArray("offscreen:rotation=2"), 2);
        row("backwards", QByteArray("offscreen:rotation=-90"), 3);
        row("full turn", QByteArray("offscreen:rotation=360"), 0);
        row("no number", QByteArray("offscreen:rotation=left"), 0);
        row("of another platform", QByteArray("xcb:rotation=90;offscreen"), 0);
        row("second choice", QByteArray("eglfs;offscreen:rotation=180"), 2);
    }
    void rotationOption()
    {
        QFETCH(QByteArray, argument);
        qputenv("QT_QPA_PLATFORM", argument);
        const WindowServer server;
        QTEST(server.transformationOrientation(), "turns");
        QCOMPARE(server.isTransformed(), server.transformationOrientation() != 0);
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
        QCOMPARE(root().read("/etc/pointercal"), QByteArray("1 2 3 4 5 6 7"));
    }

    void multiTouch()
    {
        // Not an event device, which is the only thing that Qt's own driver survives.
        TouchscreenFifo touchscreen(root());
        root().write("/proc/device-tree/qrd-specific/qrd_touch_type", "multi");
        WindowServer server;
        QVERIFY(server.openPointer());
        QPushButton button;
        button.setGeometry(100, 100, 80, 40);
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QSignalSpy clicks(&button, &QPushButton::clicked);
        touchscreen.tap({140, 120});
        QTRY_COMPARE(clicks.size(), 1);
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
    void closeWindows() override { qputenv("QT_QPA_PLATFORM", "offscreen"); }
};

PANEL_TEST_MAIN(TestWindowServer)
#include "tst_windowserver.moc"
