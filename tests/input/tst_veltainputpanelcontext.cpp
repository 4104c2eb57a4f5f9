#include "keyboardfixture.h"

#include <QGroupBox>

namespace {

/// Pixels of the cursor's colour in the column where \a edit has its cursor.
int cursorHeight(QVeltaLineEdit *pEdit)
{
    QKeyEvent end(QEvent::KeyPress, Qt::Key_End, Qt::NoModifier);
    QCoreApplication::sendEvent(pEdit, &end);
    const QRect cursor = pEdit->inputMethodQuery(Qt::ImCursorRectangle).toRect();
    const QImage image = pEdit->grab().toImage();
    const int x = cursor.left() + cursor.width() / 2;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        count += image.pixelColor(x, y) == QColor(Qt::black);
    }
    return count;
}

} // namespace

class TestVeltaInputPanelContext : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void frame_data()
    {
        row("320x240", QSize(320, 240), QSize(309, 230), 18, 31);
        row("240x320", QSize(240, 320), QSize(230, 300), 21, 36);
        row("480x272", QSize(480, 272), QSize(361, 252), 19, 33);
        row("640x480", QSize(640, 480), QSize(628, 460), 28, 45);
        row("800x480", QSize(800, 480), QSize(638, 460), 28, 45);
        row("600x800", QSize(600, 800), QSize(590, 460), 28, 45);
        row("1080x1920", QSize(1080, 1920), QSize(790, 460), 28, 45);
        row("1920x1080", QSize(1920, 1080), QSize(638, 460), 28, 45);
    }
    void frame()
    {
        FETCH(QSize, screen, QSize, groupBox, int, caption, int, display);
        setScreen(screen);
        const KeyboardFixture keyboard("NumInputPW", "", PasswordMask, 20);
        const VeltaInputPanel &panel = *keyboard.pPanel;
        QCOMPARE(panel.findChild<QGroupBox *>()->size(), groupBox);
        QCOMPARE(panel.findChild<QLabel *>("panelLabel")->height(), caption);
        QCOMPARE(panel.findChild<QLabel *>("timeoutLabel")->height(), caption);
        QCOMPARE(keyboard.pDisplay->height(), display);
        QCOMPARE(keyboard.pContext->geometry(), QRect(QPoint(), screen));
        QCOMPARE(panel.size(), screen.boundedTo({800, 480}));
        QVERIFY((panel.geometry().center() - keyboard.pContext->rect().center()).manhattanLength()
                < 2);
    }

    void smallAreas_data()
    {
        row("screen smaller than asked for", QSize(400, 300));
        row("screen larger than asked for", QSize(700, 500));
        row("tiny", QSize(160, 120));
        row("854x480", QSize(854, 480));
        row("1440x900", QSize(1440, 900));
    }
    void smallAreas()
    {
        FETCH(QSize, screen);
        // The fallback class asks for 640 x 480 on a screen of any other size.
        const QSize requested(640, 480);
        setScreen(screen);
        QLineEdit target;
        target.setWhatsThis("AlphaNumInput");
        QLabel label;
        VeltaInputPanelContext context(&target, &label, false, requested.width(),
                                       requested.height());
        context.showPanel();
        QCOMPARE(context.geometry(), QRect(QPoint(), screen)); // nothing beside it
        const QRect place = context.findChild<VeltaInputPanel *>()->geometry();
        const QPoint offCentre = place.center() - context.rect().center();
        QVERIFY(offCentre.manhattanLength() <= 2);
        for (const QPushButton *pKey : context.findChildren<QPushButton *>()) {
            const QRect key(pKey->mapTo(&context, QPoint()), pKey->size());
            QVERIFY2(!pKey->isVisible() || context.rect().contains(key),
                     qPrintable(pKey->objectName()));
        }
    }

    void maskedEditing_data()
    {
        row("emptied field starts in front", QString(), "10.1.2.30", "10 .1  .2  .30 ",
            "10.1.2.30");
        row("dots without digits are empty too", "...", "192168178001", "192.168.178.001",
            "192.168.178.001");
        row("a full field takes no more", "192.168.178.200", "5", "192.168.178.200",
            "192.168.178.200");
        row("backspace passes the dots", "192.168.178.200", "bbbb", "192.168.17 .   ",
            "192.168.17.");
        row("overwrite to the left", "10.0.0.1", "<<<7", "10 .0  .0  .7  ", "10.0.0.7");
        row("cursor keys stop at the ends", "1.2.3.4", "<<<<<<<<<<<<<<<<<<9>>>>>>>>>>>>>>>>>>b8",
            "9  .2  .3  .4 8", "9.2.3.48");
        row("all erased", "1.2.3.4", "bbbbbbbbbbbbbbbb", "   .   .   .   ", "...");
    }
    void maskedEditing()
    {
        FETCH(QString, text, QString, keys, QString, shown, QString, result);
        const KeyboardFixture keyboard("", text, AddressMask);
        keyboard.type(keys);
        QCOMPARE(keyboard.pDisplay->displayText(), shown);
        keyboard.touch("ok");
        QCOMPARE(keyboard.pTarget->text(), result);
    }

    // A sliding finger, a double and a triple tap: the next key replaces nothing.
    void displaySelectsNothing_data()
    {
        row("address", "NumInput", "192.168.178.200", AddressMask);
        row("password", "NumInputPW", "1234567", PasswordMask);
        row("no mask", "AlphaNumInput", "text", "");
    }
    void displaySelectsNothing()
    {
        FETCH(QString, mode, QString, text, QString, mask);
        const KeyboardFixture keyboard(mode, text, mask);
        QWidget *pDisplay = keyboard.pDisplay;
        const QPoint left(3, pDisplay->height() / 2);
        const QPoint right(pDisplay->width() - 3, pDisplay->height() / 2);
        const QString before = keyboard.pDisplay->displayText();
        for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ShiftModifier}) {
            QTest::mouseClick(pDisplay, Qt::LeftButton, {}, left);
            QCOMPARE(keyboard.pDisplay->cursorPosition(), 0); // placing it does no harm
            QTest::mousePress(pDisplay, Qt::LeftButton, modifier, right);
            QTest::mouseMove(pDisplay, left);
            QTest::mouseMove(pDisplay, right);
            QTest::mouseRelease(pDisplay, Qt::LeftButton, modifier, right);
            QVERIFY(!keyboard.pDisplay->hasSelectedText());
        }
        QTest::mouseDClick(pDisplay, Qt::LeftButton, {}, left);
        QTest::mouseClick(pDisplay, Qt::LeftButton, {}, left);
        QVERIFY(!keyboard.pDisplay->hasSelectedText());
        QCOMPARE(keyboard.pDisplay->displayText(), before);
    }

    void reopened()
    {
        KeyboardFixture keyboard("AlphaNumInput", "a");
        keyboard.touch("aMode");
        keyboard.touch("aB");
        keyboard.touch("acancel");
        keyboard.pTarget->setText("new");
        keyboard.pContext->showPanel();
        QCOMPARE(keyboard.pDisplay->text(), "new");
        QCOMPARE(keyboard.key("aB")->text(), "B");
        QTRY_VERIFY(keyboard.key("a1")->hasFocus());
    }

    void caption()
    {
        const KeyboardFixture keyboard("", "", AddressMask);
        const auto *pCaption = keyboard.pPanel->findChild<QLabel *>("panelLabel");
        QCOMPARE(pCaption->text(), "Address: ");
        QLabel other("DNS 3: ");
        keyboard.pContext->showPanel(&other);
        QCOMPARE(pCaption->text(), "DNS 3: ");
        other.setText(keyboard.pPanel->windowTitle());
        keyboard.pContext->showPanel(&other);
        keyboard.pContext->showPanel();
        QCOMPARE(pCaption->text(), "DNS 3: ");
    }

    void passwordTargetInPasswordEcho()
    {
        KeyboardFixture keyboard("NumInputPW", "12", "");
        keyboard.pTarget->setEchoMode(QLineEdit::Password);
        keyboard.pContext->showPanel();
        keyboard.touch("3");
        keyboard.touch("ok");
        QCOMPARE(keyboard.pTarget->text(), "123");
    }

    void needsTargetAndLabel()
    {
        QLineEdit edit;
        QLabel label;
        for (const bool bTarget : {true, false}) {
            VeltaInputPanelContext context(bTarget ? &edit : nullptr, bTarget ? nullptr : &label,
                                           false, 20, 800, 480);
            QVERIFY(!context.findChild<VeltaInputPanel *>());
            context.showPanel(&label);
            QVERIFY(!context.isVisible());
        }
    }

    void targetDestroyed()
    {
        for (const char *end : {"aok", "acancel"}) {
            KeyboardFixture keyboard("AlphaNumInput", "x");
            QSignalSpy okay(keyboard.pContext.get(), &VeltaInputPanelContext::input_okay);
            QSignalSpy canceled(keyboard.pContext.get(), &VeltaInputPanelContext::input_canceled);
            keyboard.pTarget.reset();
            for (const char *name : {"a1", "abackspace", end}) {
                keyboard.touch(name);
            }
            QVERIFY(!keyboard.pContext->isVisible());
            QCOMPARE(okay.count(), 0);
            QCOMPARE(canceled.count(), 1);
            keyboard.pContext->showPanel();
            QVERIFY(!keyboard.pContext->isVisible());
        }
    }

    void destroyedByItsReceiver()
    {
        KeyboardFixture keyboard("NumInput");
        const QPointer<VeltaInputPanel> pPanel = keyboard.pPanel;
        connect(keyboard.pContext.get(), &VeltaInputPanelContext::input_okay, this,
                [&keyboard] { keyboard.pContext.reset(); });
        keyboard.touch("ok");
        QVERIFY(!keyboard.pContext);
        QTRY_VERIFY(!pPanel);
    }

    void endsOnce()
    {
        const KeyboardFixture keyboard("NumInputPW", "", PasswordMask, 20);
        QSignalSpy okay(keyboard.pContext.get(), &VeltaInputPanelContext::input_okay);
        QSignalSpy canceled(keyboard.pContext.get(), &VeltaInputPanelContext::input_canceled);
        keyboard.touch("7");
        QPushButton *pOk = keyboard.key("ok");
        pOk->setFocus();
        // Two presses were under way when the first one closed the keyboard.
        QTest::keyClick(pOk, Qt::Key_Return);
        QTest::keyClick(pOk, Qt::Key_Return);
        pOk->click();
        keyboard.key("cancel")->click();
        QCOMPARE(okay.count(), 1);
        QCOMPARE(canceled.count(), 0);
        QCOMPARE(keyboard.pTarget->text(), "7");
        QCOMPARE(keyboard.pDisplay->text(), ""); // the password stays nowhere else
    }

    void drawsItsCursorWithoutFocus()
    {
        QWidget window;
        QVeltaLineEdit edit(&window);
        edit.setFocusPolicy(Qt::NoFocus);
        edit.setText("....");
        edit.resize(200, 40);
        window.show();
        QVERIFY(!edit.hasFocus() && cursorHeight(&edit) > edit.fontMetrics().height());
        QMetaObject::invokeMethod(&edit, "timerToggle");
        QCOMPARE(edit.findChild<QTimer *>()->interval(), 500);
        const QImage without = edit.grab().toImage();
        QMetaObject::invokeMethod(&edit, "timerToggle");
        QVERIFY(edit.grab().toImage() != without);
    }

    void moveShowsTheCursorForAFullInterval()
    {
        QVeltaLineEdit edit;
        edit.resize(200, 40);
        edit.show();
        QTimer *pTimer = edit.findChild<QTimer *>();
        QMetaObject::invokeMethod(&edit, "timerToggle"); // dark
        pTimer->stop();
        edit.insert("1");
        QVERIFY(pTimer->isActive() && !pTimer->isSingleShot());
        const QImage solid = edit.grab().toImage();
        QMetaObject::invokeMethod(&edit, "timerToggle");
        QVERIFY(edit.grab().toImage() != solid);
    }

    void keyboardGrab_data()
    {
        row("VNC", true);
        row("SHM", true);
        row("VNC:0", false);
        row("vnc", false);
        row("", false);
    }
    void keyboardGrab()
    {
        FETCH(bool, grabs);
        // Three grabs and as many releases.
        for (int i = 0; i < (grabs ? 6 : 0); ++i) {
            QTest::ignoreMessage(QtWarningMsg,
                                 "This plugin does not support grabbing the keyboard");
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

    void nothingBelowIsTouched()
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
            auto *pOk = context.findChild<QPushButton *>("panelButton_ok");
            QTest::mouseClick(context.windowHandle(), Qt::LeftButton, {},
                              pOk->mapTo(&context, pOk->rect().center()));
            dialog.accept();
        });
        dialog.setModal(true);
        dialog.exec();
        QCOMPARE(target.text(), "5");
        QTest::mouseClick(main.windowHandle(), Qt::LeftButton, {}, {400, 240});
        QCOMPARE(touches, 1);
    }

    void fingerOfAMultiTouchScreen()
    {
        const std::unique_ptr<QPointingDevice> pDevice(QTest::createTouchDevice());
        const KeyboardFixture keyboard("HexInput");
        for (const char *name : {"hA", "h7", "hbackspace", "hF", "hok"}) {
            const QPoint at = keyboard.centre(name);
            QTest::touchEvent(keyboard.pContext->windowHandle(), pDevice.get()).press(0, at);
            QTest::touchEvent(keyboard.pContext->windowHandle(), pDevice.get()).release(0, at);
        }
        QCOMPARE(keyboard.pTarget->text(), "AF");
    }
};

PANEL_TEST_MAIN(TestVeltaInputPanelContext)
#include "tst_veltainputpanelcontext.moc"
