#pragma once

#include "input/qveltalineedit.h"
#include "input/veltainputpanel.h"
#include "input/veltainputpanelcontext.h"
#include "tests/support/devicetest.h"

constexpr char AddressMask[] = "000.000.000.000; ";
constexpr char PasswordMask[] = "00000000; ";

/// A main window with a line edit, and the keyboard that edits it.
struct KeyboardFixture
{
    explicit KeyboardFixture(const QString &mode, const QString &text = {},
                             const QString &mask = {}, quint8 timeoutSeconds = 0)
    {
        const QSize screen = QGuiApplication::primaryScreen()->size();
        main.resize(screen);
        main.show();
        pTarget->setWhatsThis(mode);
        pTarget->setInputMask(mask);
        pTarget->setText(text);
        pContext = std::make_unique<VeltaInputPanelContext>(
            pTarget.get(), &label, false, timeoutSeconds, screen.width(), screen.height());
        pPanel = pContext->findChild<VeltaInputPanel *>();
        pDisplay = pPanel->lineEdit();
        pContext->showPanel();
        need(QTest::qWaitForWindowActive(pContext.get()), "keys for the keyboard");
    }

    QPushButton *key(const QString &name) const
    {
        auto *pKey = pPanel->findChild<QPushButton *>("panelButton_" + name);
        need(pKey, "the key " + name);
        return pKey;
    }
    void touch(const QString &name) const { QTest::mouseClick(key(name), Qt::LeftButton); }
    /// Where a finger hits the key \a name of the context's window.
    QPoint centre(const QString &name) const
    {
        return key(name)->mapTo(pContext.get(), key(name)->rect().center());
    }
    /// A key of the keypad, as the window system delivers it.
    void press(Qt::Key key) const { QTest::keyPress(pContext->windowHandle(), key); }
    void release(Qt::Key key) const { QTest::keyRelease(pContext->windowHandle(), key); }
    void click(Qt::Key key) const { QTest::keyClick(pContext->windowHandle(), key); }
    /// Presses one key of the keypad for each character: 'b' is Backspace, '<' Left, '>' Right,
    /// '_' Space, 'n' Return, other characters are themselves.
    void type(const QString &keys) const
    {
        static const QMap<QChar, Qt::Key> special{{'b', Qt::Key_Backspace},
                                                  {'<', Qt::Key_Left},
                                                  {'>', Qt::Key_Right},
                                                  {'_', Qt::Key_Space},
                                                  {'n', Qt::Key_Return}};
        for (const QChar c : keys) {
            click(special.value(c, Qt::Key(c.unicode())));
        }
    }
    /// The visible keys, in the order in which the focus visits them.
    QList<QPushButton *> visibleKeys() const
    {
        QList<QPushButton *> keys;
        for (const KeySpec &spec : inputKeys()) {
            auto *pKey = pPanel->findChild<QPushButton *>(QLatin1String(spec.pName));
            if (pKey->isVisible()) {
                keys << pKey;
            }
        }
        return keys;
    }
    QTimer *timer(const char *name) const { return pPanel->findChild<QTimer *>(name); }
    const QLabel *countdownLabel() const { return pPanel->findChild<QLabel *>("timeoutLabel"); }
    QString countdown() const { return countdownLabel()->text(); }
    void call(const char *slot) const { QMetaObject::invokeMethod(pPanel, slot); }

    QWidget main;
    std::unique_ptr<QLineEdit> pTarget = std::make_unique<QLineEdit>(&main);
    QLabel label{"Address: ", &main};
    std::unique_ptr<VeltaInputPanelContext> pContext;
    VeltaInputPanel *pPanel = nullptr;
    QVeltaLineEdit *pDisplay = nullptr;
};
