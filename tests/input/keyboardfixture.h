#pragma once

#include "input/qveltalineedit.h"
#include "input/veltainputpanel.h"
#include "input/veltainputpanelcontext.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

constexpr char AddressMask[] = "000.000.000.000; ";
constexpr char PasswordMask[] = "00000000; ";

/// A main window with a line edit, and the keyboard that edits it.
struct KeyboardFixture
{
    explicit KeyboardFixture(const char *mode, const char *text = "", const char *mask = "",
                             quint8 timeoutSeconds = 0)
    {
        const QSize screen = QGuiApplication::primaryScreen()->size();
        main.resize(screen);
        main.show();
        target.setWhatsThis(QLatin1String(mode));
        target.setInputMask(QLatin1String(mask));
        target.setText(QLatin1String(text));
        pContext = std::make_unique<VeltaInputPanelContext>(&target, &label, false, timeoutSeconds,
                                                            screen.width(), screen.height());
        pPanel = pContext->findChild<VeltaInputPanel *>();
        pDisplay = pPanel->lineEdit();
        pContext->showPanel();
        if (!QTest::qWaitForWindowActive(pContext.get())) {
            qFatal("the keyboard did not get the keys");
        }
    }

    QPushButton *key(const char *name) const
    {
        auto *pKey =
            pPanel->findChild<QPushButton *>(QLatin1String("panelButton_") + QLatin1String(name));
        if (!pKey) {
            qFatal("no key %s", name);
        }
        return pKey;
    }
    void touch(const char *name) const { QTest::mouseClick(key(name), Qt::LeftButton); }
    /// A key of the keypad, as the window system delivers it.
    void press(Qt::Key key) const { QTest::keyPress(pContext->windowHandle(), key); }
    void release(Qt::Key key) const { QTest::keyRelease(pContext->windowHandle(), key); }
    void click(Qt::Key key) const { QTest::keyClick(pContext->windowHandle(), key); }
    /// Presses one key of the keypad for each character: 'b' is Backspace, '<' Left, '>' Right,
    /// '_' Space, 'n' Return, other characters are themselves.
    void type(const char *keys) const
    {
        for (const char *pKey = keys; *pKey; ++pKey) {
            click(*pKey == 'b'       ? Qt::Key_Backspace
                      : *pKey == '<' ? Qt::Key_Left
                      : *pKey == '>' ? Qt::Key_Right
                      : *pKey == '_' ? Qt::Key_Space
                      : *pKey == 'n' ? Qt::Key_Return
                                     : Qt::Key(*pKey));
        }
    }
    /// The visible keys, in the order in which the focus visits them.
    QList<QPushButton *> visibleKeys() const
    {
        QList<QPushButton *> keys;
        for (const KeySpec &spec : inputKeys()) {
            auto *pKey = pPanel->findChild<QPushButton *>(QLatin1String(spec.name));
            if (pKey->isVisible()) {
                keys << pKey;
            }
        }
        return keys;
    }
    QTimer *timer(const char *name) const
    {
        return pPanel->findChild<QTimer *>(QLatin1String(name));
    }
    QString countdown() const
    {
        return pPanel->findChild<QLabel *>(QStringLiteral("timeoutLabel"))->text();
    }
    void call(const char *slot) const { QMetaObject::invokeMethod(pPanel, slot); }

    QWidget main;
    QLineEdit target{&main};
    QLabel label{QStringLiteral("Address: "), &main};
    std::unique_ptr<VeltaInputPanelContext> pContext;
    VeltaInputPanel *pPanel = nullptr;
    QVeltaLineEdit *pDisplay = nullptr;
};
