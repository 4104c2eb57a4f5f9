#include "keyboardfixture.h"

#include "input/inputcountdown.h"
#include "input/keyrepeat.h"
#include "platform/windowserver.h"

#include <QStackedWidget>

class TestVeltaInputPanel : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void modes_data()
    {
        row("NumInput", "Numpad", "panelButton_1", false, 20);
        row("HexInput", "Hexpad", "panelButton_h0", false, 20);
        row("AlphaNumInput", "AlphaNumpad", "panelButton_a1", false, 20);
        row("NumInputPW", "Numpad", "panelButton_1", true, 20);
        row("HexInputPW", "Hexpad", "panelButton_h0", true, 255);
        row("AlphaNumInputPW", "AlphaNumpad", "panelButton_a1", true, 0);
        row("numinputpw", "Numpad", "panelButton_1", false, 20);
        row("", "Numpad", "panelButton_1", false, 20);
    }
    void modes()
    {
        FETCH(QString, pad, QString, first, bool, password, int, seconds);
        const KeyboardFixture keyboard(QTest::currentDataTag(), "", "", quint8(seconds));
        QCOMPARE(keyboard.pPanel->findChild<QStackedWidget *>()->currentWidget()->objectName(),
                 pad);
        QCOMPARE(QApplication::focusWidget()->objectName(), first);
        QVERIFY(keyboard.pContext->testAttribute(Qt::WA_KeyboardFocusChange)); // and is seen to be
        QCOMPARE(keyboard.pDisplay->echoMode(), password ? QLineEdit::Password : QLineEdit::Normal);
        QCOMPARE(keyboard.pDisplay->focusPolicy(), Qt::NoFocus);
        const bool bCounts = password && seconds > 0;
        QCOMPARE(keyboard.countdownLabel()->isVisible(), bCounts);
        QCOMPARE(keyboard.timer("timeoutTimer")->isActive(), bCounts);
    }

    void keysArriveAsShown_data()
    {
        row("numeric", "NumInput", 0, 11);
        row("numeric password", "NumInputPW", 0, 11);
        row("hexadecimal", "HexInput", 0, 16);
        row("lower case", "AlphaNumInput", 0, 39);
        row("upper case", "AlphaNumInput", 1, 39);
        row("symbols", "AlphaNumInput", 2, 34);
        row("lower case again", "AlphaNumInput", 3, 39);
        row("symbols of a password", "AlphaNumInputPW", 2, 34);
    }
    void keysArriveAsShown()
    {
        FETCH(QString, mode, int, level, int, valueKeys);
        const KeyboardFixture keyboard(mode);
        for (int i = 0; i < level; ++i) {
            keyboard.touch("aMode");
        }
        QString shown;
        for (QPushButton *pKey : keyboard.visibleKeys()) {
            QString label = pKey->text();
            label.replace("&&", "&");
            if (label == "SPACE") {
                label = " ";
            } else if (label.size() > 1) {
                continue; // cursor keys, OK, Cancel, mode
            } else if (label == " ") {
                label.clear(); // a key without a value
            }
            QTest::mouseClick(pKey, Qt::LeftButton);
            shown += label;
            QCOMPARE(keyboard.pDisplay->text(), shown);
        }
        QCOMPARE(shown.size(), valueKeys);
        keyboard.touch(mode.startsWith("Num") ? "ok" : mode.startsWith("Hex") ? "hok" : "aok");
        QCOMPARE(keyboard.pTarget->text(), shown);
    }

    void keypad_data()
    {
        const QString num("NumInput");
        const QString hex("HexInput");
        const QString alpha("AlphaNumInput");
        for (const QString &mode : {num, hex, alpha}) {
            const QByteArray name = mode.toLatin1();
            row(name + " digits", mode, "0123456789", "0123456789", "");
            row(name + " backspace", mode, "123bR4", "14", "");
            row(name + " cursor", mode, "12<<3>>4", "3124", "");
            row(name + " others", mode, "AFX+,/", "", "");
        }
        row("dot, numeric", num, "1.", "1.", "");
        row("dot, hexadecimal", hex, "1.", "1", "");
        row("dot, alphanumeric", alpha, "1.", "1", "");
        row("space, numeric", num, "S_", "2", "panelButton_2");
        row("space, hexadecimal", hex, "S_", "1", "panelButton_h1");
        row("space, alphanumeric", alpha, "S_", "", "panelButton_a2");
        row("return, numeric", num, "nSn", "12", "panelButton_2");
        row("return, hexadecimal", hex, "nSn", "01", "panelButton_h1");
        row("return, alphanumeric", alpha, "nSn", "12", "panelButton_a2");
        row("return on backspace", num, "15TTTTTn", "1", "panelButton_backspace");
    }
    void keypad()
    {
        FETCH(QString, mode, QString, keys, QString, display, QString, focus);
        const KeyboardFixture keyboard(mode);
        keyboard.type(keys);
        QCOMPARE(keyboard.pDisplay->text(), display);
        if (!focus.isEmpty()) {
            QCOMPARE(QApplication::focusWidget()->objectName(), focus);
        }
        QVERIFY(keyboard.pContext->isVisible() && !keyboard.timer("repeatTimer")->isActive());
    }

    void focusVisitsEveryKeyAndWraps_data()
    {
        for (const char *mode : {"NumInput", "HexInput", "AlphaNumInput"}) {
            row(mode + QByteArray(" forth"), Qt::Key_S);
            row(mode + QByteArray(" back"), Qt::Key_T);
            row(mode + QByteArray(" tab"), Qt::Key_Tab);
        }
    }
    void focusVisitsEveryKeyAndWraps()
    {
        FETCH(Qt::Key, key);
        const KeyboardFixture keyboard(QString(QTest::currentDataTag()).section(' ', 0, 0));
        QList<QPushButton *> expected = keyboard.visibleKeys();
        if (key == Qt::Key_T) {
            std::reverse(expected.begin() + 1, expected.end());
        }
        for (QPushButton *pKey : expected) {
            QCOMPARE(QApplication::focusWidget(), pKey);
            keyboard.click(key);
        }
        QCOMPARE(QApplication::focusWidget(), expected.first());
    }

    void heldKeyRepeats_data()
    {
        // the key that gets the focus first
        row("Backspace", Qt::Key_Backspace, "");
        row("R", Qt::Key_R, "");
        row("Return on backspace", Qt::Key_Return, "backspace");
        row("Space on left", Qt::Key_Space, "left");
        row("S", Qt::Key_S, "");
        row("T", Qt::Key_T, "");
    }
    void heldKeyRepeats()
    {
        FETCH(Qt::Key, key, QString, focus);
        const KeyboardFixture keyboard("NumInputPW", "1234567890", "", 20);
        if (!focus.isEmpty()) {
            keyboard.key(focus)->setFocus();
        }
        const bool bMoves = key == Qt::Key_S || key == Qt::Key_T;
        const QList<QPushButton *> keys = keyboard.visibleKeys();
        int steps = 0;
        const auto effect = [&] {
            const auto at = bMoves ? keys.indexOf(QApplication::focusWidget()) : 0;
            return key == Qt::Key_S ? int(at) == steps
                : key == Qt::Key_T  ? int(at) == (int(keys.size()) - steps) % int(keys.size())
                                    : keyboard.pDisplay->cursorPosition() == 10 - steps;
        };
        QVERIFY(effect());
        keyboard.press(key);
        ++steps;
        QVERIFY(effect());
        const QTimer *pTimer = keyboard.timer("repeatTimer");
        QVERIFY(pTimer->isActive());
        for (int i = 0; i < 3; ++i) {
            keyboard.call("UpdateTimeout");
            keyboard.call("DoAutoRepeat");
            ++steps;
            QVERIFY(effect());
            QCOMPARE(keyboard.countdown(), "Timeout: 20");
        }
        keyboard.release(key);
        QVERIFY(!pTimer->isActive());
    }

    void repeatEnds_data()
    {
        using Step = std::function<void(KeyboardFixture &)>;
        row("OK", Step([](auto &keyboard) { keyboard.touch("ok"); }));
        row("Cancel", Step([](auto &keyboard) { keyboard.touch("cancel"); }));
        row("time-out", Step([](auto &keyboard) { keyboard.call("UpdateTimeout"); }));
        row("hidden", Step([](auto &keyboard) { keyboard.pContext->hide(); }));
        row("another window active", Step([](auto &keyboard) {
                keyboard.pContext->setWindowModality(Qt::NonModal);
                keyboard.main.activateWindow();
                QVERIFY(QTest::qWaitForWindowActive(&keyboard.main));
            }));
        row("unplugged", Step([](auto &) {
                QVERIFY(WindowServer::instance()->hasKeyboard());
                WindowServer::instance()->closeKeyboard();
            }));
        row("context destroyed", Step([](auto &keyboard) { keyboard.pContext.reset(); }));
    }
    void repeatEnds()
    {
        FETCH(std::function<void(KeyboardFixture &)>, end);
        WindowServer server;
        server.setKeyboardHandler(std::make_unique<QObject>());
        KeyboardFixture keyboard("NumInputPW", "1234", "", 1);
        const QPointer<QTimer> pTimer = keyboard.timer("repeatTimer");
        keyboard.press(Qt::Key_Backspace);
        QVERIFY(pTimer->isActive());
        end(keyboard);
        QVERIFY(!pTimer || !pTimer->isActive());
        // The late release wakes nothing.
        if (keyboard.pContext) {
            QTest::keyRelease(keyboard.key("1"), Qt::Key_Backspace);
            QTest::keyPress(keyboard.key("1"), Qt::Key_S);
            QVERIFY(keyboard.pContext->isVisible() || !pTimer->isActive());
        }
    }

    void touchedKeyStopsWhenHidden()
    {
        const KeyboardFixture keyboard("NumInput", "1234");
        QPushButton *pKey = keyboard.key("backspace");
        QVERIFY(pKey->autoRepeat());
        QTest::mousePress(pKey, Qt::LeftButton);
        QVERIFY(pKey->isDown());
        keyboard.pContext->hide();
        QVERIFY(!pKey->isDown());
    }

    void windowSystemRepeats_data()
    {
        row("the panel repeats Backspace by itself", Qt::Key_Backspace, "123", 3);
        row("a digit does not repeat", Qt::Key_5, "12345", 5);
        row("the keyboard repeats Left", Qt::Key_Left, "1234", 2);
    }
    void windowSystemRepeats()
    {
        FETCH(Qt::Key, key, QString, text, int, cursor);
        const KeyboardFixture keyboard("NumInputPW", "1234", "", 20);
        keyboard.press(key);
        const bool bRepeats = keyboard.timer("repeatTimer")->isActive();
        for (const auto type : {QEvent::KeyRelease, QEvent::KeyPress}) {
            QKeyEvent event(type, key, Qt::NoModifier, QString(), true);
            QCoreApplication::sendEvent(QApplication::focusWidget(), &event);
        }
        QCOMPARE(keyboard.pDisplay->text(), text);
        QCOMPARE(keyboard.pDisplay->cursorPosition(), cursor);
        QCOMPARE(keyboard.timer("repeatTimer")->isActive(), bRepeats);
    }

    void countdown()
    {
        const KeyboardFixture keyboard("AlphaNumInputPW", "", "", 20);
        QSignalSpy canceled(keyboard.pPanel, &VeltaInputPanel::input_canceled);
        QCOMPARE(keyboard.timer("timeoutTimer")->interval(), 1000);
        const auto expectRestart = [&](bool restarts, const std::function<void()> &act) {
            keyboard.pPanel->restartTimeout();
            QCOMPARE(keyboard.countdown(), "Timeout: 20");
            keyboard.call("UpdateTimeout");
            QCOMPARE(keyboard.countdown(), "Timeout: 19");
            act();
            QCOMPARE(keyboard.countdown(),
                     restarts ? QStringLiteral("Timeout: 20") : "Timeout: 19");
        };
        expectRestart(true, [&] { keyboard.touch("aQ"); });
        expectRestart(true, [&] { keyboard.touch("abackspace"); });
        expectRestart(true, [&] { keyboard.click(Qt::Key_7); });
        expectRestart(true, [&] { keyboard.press(Qt::Key_S); });
        expectRestart(true, [&] { keyboard.release(Qt::Key_S); });
        expectRestart(false, [&] { keyboard.touch("aMode"); });
        keyboard.touch("aMode");
        expectRestart(false, [&] {
            for (const char *name : {"aC", "aV", "aB", "aN", "aM"}) {
                keyboard.touch(name);
            }
        });
        keyboard.pPanel->restartTimeout();
        for (int i = 0; i < 13; ++i) {
            keyboard.call("UpdateTimeout");
        }
        QCOMPARE(keyboard.countdown(), "Timeout: 07");
        for (int i = 0; i < 7; ++i) {
            QCOMPARE(canceled.count(), 0);
            keyboard.call("UpdateTimeout");
        }
        QCOMPARE(canceled.count(), 1);
        QVERIFY(!keyboard.timer("timeoutTimer")->isActive());
    }

    void repeatsInThreePhases()
    {
        KeyRepeat repeat;
        const auto *pTimer = repeat.findChild<QTimer *>();
        int nFirst = 0;
        int nSecond = 0;
        repeat.start([&] { ++nFirst; });
        repeat.start([&] { ++nSecond; }); // another key, while the first is held
        QCOMPARE(pTimer->interval(), 500);
        for (const int interval : {200, 200, 200, 200, 100, 100, 100}) {
            repeat.repeat();
            QCOMPARE(pTimer->interval(), interval);
        }
        QCOMPARE(nFirst, 7);
        QCOMPARE(nSecond, 0);
        repeat.stop();
        QVERIFY(!pTimer->isActive());
        repeat.repeat(); // of nothing
        QCOMPARE(nFirst, 7);
        repeat.start([&] { ++nSecond; });
        QCOMPARE(pTimer->interval(), 500);
        repeat.repeat();
        QCOMPARE(nSecond, 1);
    }

    void countsNothingDown()
    {
        InputCountdown none(0);
        none.restart();
        QVERIFY(!none.isUsed() && !none.findChild<QTimer *>()->isActive());
    }

    void countdownEndsBeforeTheSignal()
    {
        for (const int nStepsBack : {1, 2}) { // from the first key to OK, to Cancel
            const KeyboardFixture keyboard("NumInputPW", "", "", 20);
            const QTimer *pTimer = keyboard.timer("timeoutTimer");
            QList<bool> running; // at each signal
            const auto check = [&] { running += pTimer->isActive(); };
            connect(keyboard.pPanel, &VeltaInputPanel::input_ok, this, check);
            connect(keyboard.pPanel, &VeltaInputPanel::input_canceled, this, check);
            keyboard.type(QString(nStepsBack, u'T'));
            QWidget *pKey = QApplication::focusWidget();
            keyboard.press(Qt::Key_Return);
            QCOMPARE(running, QList<bool>{false});
            QTest::keyRelease(pKey, Qt::Key_Return);
            QVERIFY(!pTimer->isActive());
        }
    }

    void passwordIsNeverDrawn()
    {
        const auto pictureOf = [](const QString &digits) {
            KeyboardFixture keyboard("NumInputPW", "", PasswordMask, 20);
            keyboard.type(digits.first(3));
            // The last one as a finger, which leaves the pointer over the key.
            QTest::mouseClick(keyboard.pContext->windowHandle(), Qt::LeftButton, {},
                              keyboard.centre(digits.last(1)));
            QFocusEvent afterBox(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
            QCoreApplication::sendEvent(keyboard.key(digits.last(1)), &afterBox);
            keyboard.pDisplay->findChild<QTimer *>()->stop();
            return keyboard.pDisplay->text() == digits ? keyboard.pPanel->grab().toImage()
                                                       : QImage();
        };
        const QImage picture = pictureOf("1111");
        QVERIFY(!picture.isNull());
        QCOMPARE(picture, pictureOf("8057"));
    }

    /// The marked key has a colour of its own where the dialog asks for it.
    void focusHighlight()
    {
        QWidget parent;
        for (const auto &[mode, bAsked, nStyled] : {std::tuple("AlphaNumInput", true, 82),
                                                    {"AlphaNumInputPW", true, 81},
                                                    {"HexInput", false, 0}}) {
            const VeltaInputPanel panel(&parent, bAsked, QLatin1String(mode), 0);
            const auto keys = panel.findChildren<QPushButton *>();
            QCOMPARE(std::count_if(keys.begin(), keys.end(),
                                   [](const auto *pKey) { return !pKey->styleSheet().isEmpty(); }),
                     nStyled);
        }
    }
};

PANEL_TEST_MAIN(TestVeltaInputPanel)
#include "tst_veltainputpanel.moc"
