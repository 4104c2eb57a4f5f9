#include "keyboardfixture.h"

#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <QDialog>

class TestVeltaInputPanelContext : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void okWritesCancelDoesNot_data();
    void okWritesCancelDoesNot();
    void maskedEditing_data();
    void maskedEditing();
    void reopened();
    void caption();
    void passwordTargetInPasswordEcho();
    void needsTargetAndLabel_data();
    void needsTargetAndLabel();
    void targetDestroyed_data();
    void targetDestroyed();
    void destroyedByItsReceiver();
    void endsOnce();
    void keyboardGrab_data();
    void keyboardGrab();
    void sizeOfTheTargetsWindow();
    void nothingBelowIsTouched();
    void fingerOfAMultiTouchScreen();
    void windowBelowGetsTheKeysBack();
};

void TestVeltaInputPanelContext::okWritesCancelDoesNot_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("mask");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QString>("result");
    QTest::newRow("no mask") << QByteArray("NumInput") << QByteArray() << QByteArray("12")
                             << QByteArray("3.") << "123.";
    QTest::newRow("address") << QByteArray("") << QByteArray(AddressMask)
                             << QByteArray("192.168.0.1") << QByteArray("<<5") << "192.168.0.15";
    QTest::newRow("password") << QByteArray("NumInputPW") << QByteArray(PasswordMask)
                              << QByteArray() << QByteArray("4711") << "4711";
}

void TestVeltaInputPanelContext::okWritesCancelDoesNot()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, mask);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, keys);
    KeyboardFixture keyboard(mode, text, mask, 20);
    QSignalSpy okay(keyboard.pContext.get(), &VeltaInputPanelContext::input_okay);
    QSignalSpy canceled(keyboard.pContext.get(), &VeltaInputPanelContext::input_canceled);
    const QString before = keyboard.target.displayText();

    keyboard.type(keys);
    keyboard.touch("cancel");
    QCOMPARE(keyboard.target.displayText(), before);
    QVERIFY(!keyboard.pContext->isVisible());

    keyboard.pContext->showPanel();
    QVERIFY(QTest::qWaitForWindowActive(keyboard.pContext.get()));
    keyboard.type(keys);
    keyboard.touch("ok");
    QTEST(keyboard.target.text(), "result");
    QVERIFY(!keyboard.pContext->isVisible());
    QCOMPARE(okay.count(), 1);
    QCOMPARE(canceled.count(), 1);
}

void TestVeltaInputPanelContext::maskedEditing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("result");
    QTest::newRow("emptied field starts in front")
        << QByteArray() << QByteArray("10.1.2.30") << "10 .1  .2  .30 "
        << "10.1.2.30";
    QTest::newRow("dots without digits are empty too")
        << QByteArray("...") << QByteArray("192168178001") << "192.168.178.001"
        << "192.168.178.001";
    QTest::newRow("a full field takes no more")
        << QByteArray("192.168.178.200") << QByteArray("5") << "192.168.178.200"
        << "192.168.178.200";
    QTest::newRow("backspace passes the dots")
        << QByteArray("192.168.178.200") << QByteArray("bbbb") << "192.168.17 .   "
        << "192.168.17.";
    QTest::newRow("overwrite to the left")
        << QByteArray("10.0.0.1") << QByteArray("<<<7") << "10 .0  .0  .7  "
        << "10.0.0.7";
    QTest::newRow("cursor keys stop at the ends")
        << QByteArray("1.2.3.4") << QByteArray("<<<<<<<<<<<<<<<<<<9>>>>>>>>>>>>>>>>>>b8")
        << "9  .2  .3  .4 8"
        << "9.2.3.48";
    QTest::newRow("all erased") << QByteArray("1.2.3.4") << QByteArray("bbbbbbbbbbbbbbbb")
                                << "   .   .   .   "
                                << "...";
}

void TestVeltaInputPanelContext::maskedEditing()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, keys);
    const KeyboardFixture keyboard("", text, AddressMask);
    keyboard.type(keys);
    QTEST(keyboard.pDisplay->displayText(), "shown");
    keyboard.touch("ok");
    QTEST(keyboard.target.text(), "result");
}

void TestVeltaInputPanelContext::reopened()
{
    KeyboardFixture keyboard("AlphaNumInput", "a");
    keyboard.touch("aMode");
    keyboard.touch("aB");
    keyboard.touch("acancel");
    keyboard.target.setText(QStringLiteral("new"));
    keyboard.pContext->showPanel();
    QCOMPARE(keyboard.pDisplay->text(), QStringLiteral("new"));
    QCOMPARE(keyboard.key("aB")->text(), QStringLiteral("B"));
    QTRY_VERIFY(keyboard.key("a1")->hasFocus());
}

void TestVeltaInputPanelContext::caption()
{
    const KeyboardFixture keyboard("", "", AddressMask);
    const auto *pCaption = keyboard.pPanel->findChild<QLabel *>(QStringLiteral("panelLabel"));
    QCOMPARE(pCaption->text(), QStringLiteral("Address: "));
    QLabel other(QStringLiteral("DNS 3: "));
    keyboard.pContext->showPanel(&other);
    QCOMPARE(pCaption->text(), QStringLiteral("DNS 3: "));
    other.setText(keyboard.pPanel->windowTitle());
    keyboard.pContext->showPanel(&other);
    keyboard.pContext->showPanel();
    QCOMPARE(pCaption->text(), QStringLiteral("DNS 3: "));
}

void TestVeltaInputPanelContext::passwordTargetInPasswordEcho()
{
    KeyboardFixture keyboard("NumInputPW", "12", "");
    keyboard.target.setEchoMode(QLineEdit::Password);
    keyboard.pContext->showPanel();
    keyboard.touch("3");
    keyboard.touch("ok");
    QCOMPARE(keyboard.target.text(), QStringLiteral("123"));
}

void TestVeltaInputPanelContext::needsTargetAndLabel_data()
{
    QTest::addColumn<bool>("target");
    QTest::newRow("no label") << true;
    QTest::newRow("no target") << false;
}

void TestVeltaInputPanelContext::needsTargetAndLabel()
{
    QFETCH(bool, target);
    QLineEdit edit;
    QLabel label;
    VeltaInputPanelContext context(target ? &edit : nullptr, target ? nullptr : &label, false, 20,
                                   800, 480);
    QVERIFY(!context.findChild<VeltaInputPanel *>());
    context.showPanel(&label);
    QVERIFY(!context.isVisible());
}

void TestVeltaInputPanelContext::targetDestroyed_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("OK") << QByteArray("aok");
    QTest::newRow("Cancel") << QByteArray("acancel");
}

void TestVeltaInputPanelContext::targetDestroyed()
{
    QFETCH(QByteArray, key);
    auto pTarget = std::make_unique<QLineEdit>(QStringLiteral("x"));
    pTarget->setWhatsThis(QStringLiteral("AlphaNumInput"));
    QLabel label;
    VeltaInputPanelContext context(pTarget.get(), &label, false, 800, 480);
    QSignalSpy okay(&context, &VeltaInputPanelContext::input_okay);
    QSignalSpy canceled(&context, &VeltaInputPanelContext::input_canceled);
    context.showPanel();
    pTarget.reset();
    for (const char *name : {"panelButton_a1", "panelButton_abackspace"}) {
        QTest::mouseClick(context.findChild<QPushButton *>(QLatin1String(name)), Qt::LeftButton);
    }
    QTest::mouseClick(context.findChild<QPushButton *>("panelButton_" + QString::fromLatin1(key)),
                      Qt::LeftButton);
    QVERIFY(!context.isVisible());
    QCOMPARE(okay.count(), 0);
    QCOMPARE(canceled.count(), 1);
    context.showPanel();
    QVERIFY(!context.isVisible());
}

void TestVeltaInputPanelContext::destroyedByItsReceiver()
{
    KeyboardFixture keyboard("NumInput");
    const QPointer<VeltaInputPanel> pPanel = keyboard.pPanel;
    connect(keyboard.pContext.get(), &VeltaInputPanelContext::input_okay, this,
            [&keyboard] { keyboard.pContext.reset(); });
    keyboard.touch("ok");
    QVERIFY(!keyboard.pContext);
    QTRY_VERIFY(!pPanel);
}

void TestVeltaInputPanelContext::endsOnce()
{
    const KeyboardFixture keyboard("NumInputPW", "", PasswordMask, 20);
    QSignalSpy okay(keyboard.pContext.get(), &VeltaInputPanelContext::input_okay);
    QSignalSpy canceled(keyboard.pContext.get(), &VeltaInputPanelContext::input_canceled);
    QPushButton *pOk = keyboard.key("ok");
    pOk->setFocus();
    // Two presses were under way when the first one closed the keyboard.
    QTest::keyClick(pOk, Qt::Key_Return);
    QTest::keyClick(pOk, Qt::Key_Return);
    pOk->click();
    keyboard.key("cancel")->click();
    QCOMPARE(okay.count(), 1);
    QCOMPARE(canceled.count(), 0);
}

void TestVeltaInputPanelContext::keyboardGrab_data()
{
    QTest::addColumn<bool>("grabs");
    QTest::newRow("VNC") << true;
    QTest::newRow("SHM") << true;
    QTest::newRow("VNC:0") << false;
    QTest::newRow("vnc") << false;
    QTest::newRow("") << false;
}

void TestVeltaInputPanelContext::keyboardGrab()
{
    QFETCH(bool, grabs);
    // Three grabs and as many releases.
    for (int i = 0; i < (grabs ? 6 : 0); ++i) {
        QTest::ignoreMessage(QtWarningMsg, "This plugin does not support grabbing the keyboard");
    }
    qputenv("QWS_DISPLAY", QTest::currentDataTag());
    const KeyboardFixture keyboard("NumInput");
    qunsetenv("QWS_DISPLAY");
    for (const char *end : {"ok", "cancel"}) {
        keyboard.pContext->showPanel();
        QCOMPARE(QWidget::keyboardGrabber() == keyboard.pPanel, grabs);
        keyboard.click(Qt::Key_4);
        QVERIFY(keyboard.pDisplay->text().contains(u'4'));
        keyboard.touch(end);
        QVERIFY(!QWidget::keyboardGrabber());
    }
}

void TestVeltaInputPanelContext::sizeOfTheTargetsWindow()
{
    QWidget window;
    window.resize(700, 900);
    QLineEdit target(&window);
    QLabel label;
    const VeltaInputPanelContext context(&target, &label, false, 0, 0);
    QCOMPARE(context.geometry(), QRect(0, 0, 700, 480));
}

void TestVeltaInputPanelContext::nothingBelowIsTouched()
{
    // As the program uses it: the page's dialog is a child of the main window, and modal.
    QWidget main;
    main.resize(800, 480);
    QDialog dialog(&main, Qt::FramelessWindowHint);
    dialog.setWindowFlags(Qt::FramelessWindowHint);
    QLineEdit target(&dialog);
    QLabel label(&dialog);
    QPushButton below(&main);
    below.resize(800, 480);
    below.raise();
    main.show();
    int touches = 0;
    connect(&below, &QPushButton::clicked, this, [&touches] { ++touches; });
    VeltaInputPanelContext context(&target, &label, false, 800, 480);

    QTimer::singleShot(0, &dialog, [&] {
        context.showPanel();
        QVERIFY(QTest::qWaitForWindowActive(&context));
        QTest::mouseClick(main.windowHandle(), Qt::LeftButton, {}, {400, 240});
        QCOMPARE(touches, 0);
        QTest::keyClick(context.windowHandle(), Qt::Key_5);
        auto *pOk = context.findChild<QPushButton *>(QStringLiteral("panelButton_ok"));
        QTest::mouseClick(context.windowHandle(), Qt::LeftButton, {},
                          pOk->mapTo(&context, pOk->rect().center()));
        dialog.accept();
    });
    dialog.setModal(true);
    dialog.exec();
    QCOMPARE(target.text(), QStringLiteral("5"));
    QTest::mouseClick(main.windowHandle(), Qt::LeftButton, {}, {400, 240});
    QCOMPARE(touches, 1);
}

void TestVeltaInputPanelContext::fingerOfAMultiTouchScreen()
{
    const std::unique_ptr<QPointingDevice> pDevice(QTest::createTouchDevice());
    const KeyboardFixture keyboard("HexInput");
    for (const char *name : {"hA", "h7", "hbackspace", "hF", "hok"}) {
        const QPushButton *pKey = keyboard.key(name);
        const QPoint at = pKey->mapTo(keyboard.pContext.get(), pKey->rect().center());
        QTest::touchEvent(keyboard.pContext->windowHandle(), pDevice.get()).press(0, at);
        QTest::touchEvent(keyboard.pContext->windowHandle(), pDevice.get()).release(0, at);
    }
    QCOMPARE(keyboard.target.text(), QStringLiteral("AF"));
}

void TestVeltaInputPanelContext::windowBelowGetsTheKeysBack()
{
    KeyboardFixture keyboard("NumInput");
    for (int way = 0; way < 3; ++way) {
        keyboard.pContext->showPanel();
        QVERIFY(QTest::qWaitForWindowActive(keyboard.pContext.get()));
        switch (way) {
        case 0:
            keyboard.touch("ok");
            break;
        case 1:
            keyboard.touch("cancel");
            break;
        default:
            keyboard.pContext.reset();
            break;
        }
        QVERIFY(QTest::qWaitForWindowActive(&keyboard.main));
    }
}

PANEL_TEST_MAIN(TestVeltaInputPanelContext)
#include "tst_veltainputpanelcontext.moc"
