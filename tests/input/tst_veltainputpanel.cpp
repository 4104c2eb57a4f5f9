#include "keyboardfixture.h"

#include "platform/windowserver.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <QStackedWidget>

class TestVeltaInputPanel : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void modes_data();
    void modes();
    void keysArriveAsShown_data();
    void keysArriveAsShown();
    void letterLevels();
    void keypad_data();
    void keypad();
    void focusVisitsEveryKeyAndWraps_data();
    void focusVisitsEveryKeyAndWraps();
    void heldKeyRepeatsInThreePhases_data();
    void heldKeyRepeatsInThreePhases();
    void repeatEnds_data();
    void repeatEnds();
    void touchedKeyStopsWhenHidden();
    void windowSystemRepeats_data();
    void windowSystemRepeats();
    void countdown();
    void countdownOnlyForPasswords_data();
    void countdownOnlyForPasswords();
    void countdownEndsBeforeTheSignal_data();
    void countdownEndsBeforeTheSignal();
    void passwordIsNeverDrawn();
    void focusHighlight_data();
    void focusHighlight();
};

void TestVeltaInputPanel::modes_data()
{
    QTest::addColumn<QString>("pad");
    QTest::addColumn<QString>("first");
    QTest::addColumn<bool>("password");
    QTest::newRow("NumInput") << "Numpad"
                              << "panelButton_1" << false;
    QTest::newRow("HexInput") << "Hexpad"
                              << "panelButton_h0" << false;
    QTest::newRow("AlphaNumInput") << "AlphaNumpad"
                                   << "panelButton_a1" << false;
    QTest::newRow("NumInputPW") << "Numpad"
                                << "panelButton_1" << true;
    QTest::newRow("HexInputPW") << "Hexpad"
                                << "panelButton_h0" << true;
    QTest::newRow("AlphaNumInputPW") << "AlphaNumpad"
                                     << "panelButton_a1" << true;
    QTest::newRow("numinputpw") << "Numpad"
                                << "panelButton_1" << false;
    QTest::newRow("") << "Numpad"
                      << "panelButton_1" << false;
}

void TestVeltaInputPanel::modes()
{
    QFETCH(bool, password);
    const KeyboardFixture keyboard(QTest::currentDataTag());
    QTEST(keyboard.pPanel->findChild<QStackedWidget *>()->currentWidget()->objectName(), "pad");
    QTEST(QApplication::focusWidget()->objectName(), "first");
    QVERIFY(keyboard.pContext->testAttribute(Qt::WA_KeyboardFocusChange)); // and is seen to be
    QCOMPARE(keyboard.pDisplay->echoMode(), password ? QLineEdit::Password : QLineEdit::Normal);
    QCOMPARE(keyboard.pDisplay->focusPolicy(), Qt::NoFocus);
}

void TestVeltaInputPanel::keysArriveAsShown_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("valueKeys");
    QTest::newRow("numeric") << QByteArray("NumInput") << 0 << 11;
    QTest::newRow("numeric password") << QByteArray("NumInputPW") << 0 << 11;
    QTest::newRow("hexadecimal") << QByteArray("HexInput") << 0 << 16;
    QTest::newRow("lower case") << QByteArray("AlphaNumInput") << 0 << 39;
    QTest::newRow("upper case") << QByteArray("AlphaNumInput") << 1 << 39;
    QTest::newRow("symbols") << QByteArray("AlphaNumInput") << 2 << 34;
    QTest::newRow("lower case again") << QByteArray("AlphaNumInput") << 3 << 39;
    QTest::newRow("symbols of a password") << QByteArray("AlphaNumInputPW") << 2 << 34;
}

void TestVeltaInputPanel::keysArriveAsShown()
{
    QFETCH(QByteArray, mode);
    QFETCH(int, level);
    QFETCH(int, valueKeys);
    const KeyboardFixture keyboard(mode);
    for (int i = 0; i < level; ++i) {
        keyboard.touch("aMode");
    }
    QString shown;
    for (QPushButton *pKey : keyboard.visibleKeys()) {
        QString label = pKey->text();
        label.replace(QLatin1String("&&"), QLatin1String("&"));
        if (label == QLatin1String("SPACE")) {
            label = QStringLiteral(" ");
        } else if (label.size() > 1) {
            continue; // cursor keys, OK, Cancel, mode
        } else if (label == QLatin1String(" ")) {
            label.clear(); // a key without a value
        }
        QTest::mouseClick(pKey, Qt::LeftButton);
        shown += label;
        QCOMPARE(keyboard.pDisplay->text(), shown);
    }
    QCOMPARE(shown.size(), valueKeys);
    keyboard.touch(mode.startsWith("Num") ? "ok" : mode.startsWith("Hex") ? "hok" : "aok");
    QCOMPARE(keyboard.target.text(), shown);
}

void TestVeltaInputPanel::letterLevels()
{
    const KeyboardFixture keyboard("AlphaNumInput");
    const QString keys = QStringLiteral("QWERTZUIOPASDFGHJKLYX");
    const QString symbols = QStringLiteral("!#$%&'()*+,:;=?@[]-_~");
    for (int level = 0; level < ShiftLevels; ++level) {
        for (int i = 0; i < keys.size(); ++i) {
            const QChar letter = keys[i];
            const QChar value = level == 0 ? letter.toLower() : level == 1 ? letter : symbols[i];
            const QPushButton *pKey = keyboard.key(QByteArray("a") + letter.toLatin1());
            QCOMPARE(pKey->property("buttonValue").toChar(), value);
            QCOMPARE(pKey->text(), value == u'&' ? QStringLiteral("&&") : QString(value));
        }
        keyboard.touch("aMode");
    }
}

void TestVeltaInputPanel::keypad_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QString>("display");
    QTest::addColumn<QString>("focus");
    const QByteArray num("NumInput");
    const QByteArray hex("HexInput");
    const QByteArray alpha("AlphaNumInput");
    const QByteArray digits("0123456789");
    for (const QByteArray &mode : {num, hex, alpha}) {
        QTest::addRow("%s digits", mode.constData())
            << mode << digits << QString::fromLatin1(digits) << "";
        QTest::addRow("%s backspace", mode.constData()) << mode << QByteArray("123bR4") << "14"
                                                        << "";
        QTest::addRow("%s cursor", mode.constData()) << mode << QByteArray("12<<3>>4") << "3124"
                                                     << "";
        QTest::addRow("%s others", mode.constData()) << mode << QByteArray("AFX+,/") << ""
                                                     << "";
    }
    QTest::newRow("dot, numeric") << num << QByteArray("1.") << "1."
                                  << "";
    QTest::newRow("dot, hexadecimal") << hex << QByteArray("1.") << "1"
                                      << "";
    QTest::newRow("dot, alphanumeric") << alpha << QByteArray("1.") << "1"
                                       << "";
    QTest::newRow("space, numeric") << num << QByteArray("S_") << "2"
                                    << "panelButton_2";
    QTest::newRow("space, hexadecimal") << hex << QByteArray("S_") << "1"
                                        << "panelButton_h1";
    QTest::newRow("space, alphanumeric") << alpha << QByteArray("S_") << ""
                                         << "panelButton_a2";
    QTest::newRow("return, numeric") << num << QByteArray("nSn") << "12"
                                     << "panelButton_2";
    QTest::newRow("return, hexadecimal") << hex << QByteArray("nSn") << "01"
                                         << "panelButton_h1";
    QTest::newRow("return, alphanumeric") << alpha << QByteArray("nSn") << "12"
                                          << "panelButton_a2";
    QTest::newRow("wrap back, numeric") << num << QByteArray("T") << ""
                                        << "panelButton_ok";
    QTest::newRow("wrap back, hex") << hex << QByteArray("T") << ""
                                    << "panelButton_hok";
    QTest::newRow("wrap back, alpha") << alpha << QByteArray("T") << ""
                                      << "panelButton_aok";
    QTest::newRow("wrap forth, alpha") << alpha << QByteArray("TS") << ""
                                       << "panelButton_a1";
    QTest::newRow("return on backspace") << num << QByteArray("15TTTTTn") << "1"
                                         << "panelButton_backspace";
}

void TestVeltaInputPanel::keypad()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, keys);
    QFETCH(QString, focus);
    const KeyboardFixture keyboard(mode);
    keyboard.type(keys);
    QTEST(keyboard.pDisplay->text(), "display");
    if (!focus.isEmpty()) {
        QCOMPARE(QApplication::focusWidget()->objectName(), focus);
    }
    QVERIFY(keyboard.pContext->isVisible());
    QVERIFY(!keyboard.timer("repeatTimer")->isActive());
}

void TestVeltaInputPanel::focusVisitsEveryKeyAndWraps_data()
{
    QTest::addColumn<Qt::Key>("key");
    for (const char *mode : {"NumInput", "HexInput", "AlphaNumInput"}) {
        QTest::addRow("%s forth", mode) << Qt::Key_S;
        QTest::addRow("%s back", mode) << Qt::Key_T;
        QTest::addRow("%s tab", mode) << Qt::Key_Tab;
    }
}

void TestVeltaInputPanel::focusVisitsEveryKeyAndWraps()
{
    QFETCH(Qt::Key, key);
    const QByteArray mode = QByteArray(QTest::currentDataTag()).split(' ').first();
    const KeyboardFixture keyboard(mode);
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

void TestVeltaInputPanel::heldKeyRepeatsInThreePhases_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("focus"); // gets the focus first
    QTest::newRow("Backspace") << Qt::Key_Backspace << "";
    QTest::newRow("R") << Qt::Key_R << "";
    QTest::newRow("Return on backspace") << Qt::Key_Return << "backspace";
    QTest::newRow("Space on left") << Qt::Key_Space << "left";
    QTest::newRow("S") << Qt::Key_S << "";
    QTest::newRow("T") << Qt::Key_T << "";
}

void TestVeltaInputPanel::heldKeyRepeatsInThreePhases()
{
    QFETCH(Qt::Key, key);
    QFETCH(QString, focus);
    const KeyboardFixture keyboard("NumInputPW", "1234567890", "", 20);
    if (!focus.isEmpty()) {
        keyboard.key(focus.toLatin1())->setFocus();
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
    QCOMPARE(pTimer->interval(), 500);
    for (const int interval : {200, 200, 200, 200, 100, 100, 100}) {
        keyboard.call("UpdateTimeout");
        keyboard.call("DoAutoRepeat");
        ++steps;
        QVERIFY(effect());
        QCOMPARE(pTimer->interval(), interval);
        QCOMPARE(keyboard.countdown(), QStringLiteral("Timeout: 20"));
    }
    keyboard.release(key);
    QVERIFY(!pTimer->isActive());
    keyboard.press(key);
    QCOMPARE(pTimer->interval(), 500);
}

void TestVeltaInputPanel::repeatEnds_data()
{
    using Step = std::function<void(KeyboardFixture &)>;
    QTest::addColumn<Step>("end");
    QTest::newRow("OK") << Step([](auto &keyboard) { keyboard.touch("ok"); });
    QTest::newRow("Cancel") << Step([](auto &keyboard) { keyboard.touch("cancel"); });
    QTest::newRow("time-out") << Step([](auto &keyboard) { keyboard.call("UpdateTimeout"); });
    QTest::newRow("hidden") << Step([](auto &keyboard) { keyboard.pContext->hide(); });
    QTest::newRow("another window active") << Step([](auto &keyboard) {
        keyboard.pContext->setWindowModality(Qt::NonModal);
        keyboard.main.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&keyboard.main));
    });
    QTest::newRow("unplugged") << Step([](auto &) {
        QVERIFY(WindowServer::instance()->hasKeyboard());
        WindowServer::instance()->closeKeyboard();
    });
    QTest::newRow("context destroyed") << Step([](auto &keyboard) { keyboard.pContext.reset(); });
}

void TestVeltaInputPanel::repeatEnds()
{
    QFETCH(std::function<void(KeyboardFixture &)>, end);
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

void TestVeltaInputPanel::touchedKeyStopsWhenHidden()
{
    const KeyboardFixture keyboard("NumInput", "1234");
    QPushButton *pKey = keyboard.key("backspace");
    QVERIFY(pKey->autoRepeat());
    QTest::mousePress(pKey, Qt::LeftButton);
    QVERIFY(pKey->isDown());
    keyboard.pContext->hide();
    QVERIFY(!pKey->isDown());
}

void TestVeltaInputPanel::windowSystemRepeats_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::newRow("the panel repeats Backspace by itself") << Qt::Key_Backspace << "123" << 3;
    QTest::newRow("a digit does not repeat") << Qt::Key_5 << "12345" << 5;
    QTest::newRow("the keyboard repeats Left") << Qt::Key_Left << "1234" << 2;
}

void TestVeltaInputPanel::windowSystemRepeats()
{
    QFETCH(Qt::Key, key);
    const KeyboardFixture keyboard("NumInputPW", "1234", "", 20);
    keyboard.press(key);
    const bool bRepeats = keyboard.timer("repeatTimer")->isActive();
    for (const auto type : {QEvent::KeyRelease, QEvent::KeyPress}) {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(QApplication::focusWidget(), &event);
    }
    QTEST(keyboard.pDisplay->text(), "text");
    QTEST(keyboard.pDisplay->cursorPosition(), "cursor");
    QCOMPARE(keyboard.timer("repeatTimer")->isActive(), bRepeats);
}

void TestVeltaInputPanel::countdown()
{
    const KeyboardFixture keyboard("AlphaNumInputPW", "", "", 20);
    QSignalSpy canceled(keyboard.pPanel, &VeltaInputPanel::input_canceled);
    QCOMPARE(keyboard.timer("timeoutTimer")->interval(), 1000);
    const auto expectRestart = [&](bool restarts, const std::function<void()> &act) {
        keyboard.pPanel->restartTimeout();
        QCOMPARE(keyboard.countdown(), QStringLiteral("Timeout: 20"));
        keyboard.call("UpdateTimeout");
        QCOMPARE(keyboard.countdown(), QStringLiteral("Timeout: 19"));
        act();
        QCOMPARE(keyboard.countdown(),
                 restarts ? QStringLiteral("Timeout: 20") : QStringLiteral("Timeout: 19"));
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
    QCOMPARE(keyboard.countdown(), QStringLiteral("Timeout: 07"));
    for (int i = 0; i < 7; ++i) {
        QCOMPARE(canceled.count(), 0);
        keyboard.call("UpdateTimeout");
    }
    QCOMPARE(canceled.count(), 1);
    QVERIFY(!keyboard.timer("timeoutTimer")->isActive());
}

void TestVeltaInputPanel::countdownOnlyForPasswords_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<bool>("runs");
    QTest::newRow("NumInput") << 20 << false;
    QTest::newRow("HexInput") << 20 << false;
    QTest::newRow("AlphaNumInput") << 20 << false;
    QTest::newRow("NumInputPW") << 20 << true;
    QTest::newRow("HexInputPW") << 255 << true;
    QTest::newRow("AlphaNumInputPW") << 0 << false;
}

void TestVeltaInputPanel::countdownOnlyForPasswords()
{
    QFETCH(int, seconds);
    const KeyboardFixture keyboard(QTest::currentDataTag(), "", "", quint8(seconds));
    QTEST(keyboard.pPanel->findChild<QLabel *>(QStringLiteral("timeoutLabel"))->isVisible(),
          "runs");
    QTEST(keyboard.timer("timeoutTimer")->isActive(), "runs");
}

void TestVeltaInputPanel::countdownEndsBeforeTheSignal_data()
{
    QTest::addColumn<int>("stepsBack"); // from the first key
    QTest::newRow("OK") << 1;
    QTest::newRow("Cancel") << 2;
}

void TestVeltaInputPanel::countdownEndsBeforeTheSignal()
{
    QFETCH(int, stepsBack);
    const KeyboardFixture keyboard("NumInputPW", "", "", 20);
    const QTimer *pTimer = keyboard.timer("timeoutTimer");
    int ended = 0;
    const auto check = [&] {
        ++ended;
        QVERIFY(!pTimer->isActive());
    };
    connect(keyboard.pPanel, &VeltaInputPanel::input_ok, this, check);
    connect(keyboard.pPanel, &VeltaInputPanel::input_canceled, this, check);
    for (int i = 0; i < stepsBack; ++i) {
        keyboard.click(Qt::Key_T);
    }
    QWidget *pKey = QApplication::focusWidget();
    keyboard.press(Qt::Key_Return);
    QCOMPARE(ended, 1);
    QTest::keyRelease(pKey, Qt::Key_Return);
    QVERIFY(!pTimer->isActive());
}

void TestVeltaInputPanel::passwordIsNeverDrawn()
{
    const auto pictureOf = [](const char *digits) {
        KeyboardFixture keyboard("NumInputPW", "", PasswordMask, 20);
        keyboard.type(std::string(digits, 3).c_str());
        // The last one as a finger, which leaves the pointer over the key.
        QPushButton *pKey = keyboard.key(digits + 3);
        QTest::mouseClick(keyboard.pContext->windowHandle(), Qt::LeftButton, {},
                          pKey->mapTo(keyboard.pContext.get(), pKey->rect().center()));
        keyboard.pDisplay->findChild<QTimer *>()->stop();
        if (keyboard.pDisplay->text() != QLatin1String(digits)) {
            return QImage();
        }
        return keyboard.pPanel->grab().toImage();
    };
    const QImage picture = pictureOf("1111");
    QVERIFY(!picture.isNull());
    QCOMPARE(picture, pictureOf("8057"));
}

void TestVeltaInputPanel::focusHighlight_data()
{
    QTest::addColumn<bool>("highlight");
    QTest::addColumn<int>("styled");
    QTest::newRow("NumInput") << true << 81;
    QTest::newRow("AlphaNumInput") << true << 82;
    QTest::newRow("AlphaNumInputPW") << true << 81;
    QTest::newRow("HexInput") << false << 0;
}

void TestVeltaInputPanel::focusHighlight()
{
    QFETCH(bool, highlight);
    QWidget parent;
    const VeltaInputPanel panel(&parent, highlight, QLatin1String(QTest::currentDataTag()), 0);
    int styled = 0;
    for (const QPushButton *pKey : panel.findChildren<QPushButton *>()) {
        styled += pKey->styleSheet()
            == QLatin1String("QPushButton:focus { background-color:rgb(170,170,170);; } ");
    }
    QTEST(styled, "styled");
}

PANEL_TEST_MAIN(TestVeltaInputPanel)
#include "tst_veltainputpanel.moc"
