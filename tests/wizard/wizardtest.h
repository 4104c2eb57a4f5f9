#pragma once

#include "input/qveltalineedit.h"
#include "input/veltainputpanel.h"
#include "tests/support/devicetest.h"
#include "tests/support/openkeyboard.h"
#include "wizard/veltawizard.h"

#include <QListWidget>
#include <QWizard>

/// Base of the tests that run the wizard on a full-screen window, as an operator would.
class WizardTest : public DeviceTest
{
protected:
    std::unique_ptr<QWidget> pParent;
    std::unique_ptr<VeltaWizard> pWizard;

    void create(const QByteArray &settings = StaticSettings)
    {
        writeSettings(settings);
        pParent = std::make_unique<QWidget>();
        pParent->setWindowFlags(Qt::FramelessWindowHint);
        pParent->showFullScreen();
        [this] { QVERIFY(QTest::qWaitForWindowActive(pParent.get())); }();
        pWizard = std::make_unique<VeltaWizard>(pParent.get());
    }

    // Runs the wizard that was created, else one of StaticSettings; the steps are taken one after
    // the other inside its event loop.
    bool run(const std::function<void()> &steps)
    {
        if (!pWizard) {
            create();
        }
        QTimer::singleShot(0, pWizard.get(), [this, steps] {
            steps();
            if (pWizard->isVisible()) {
                pWizard->reject();
            }
        });
        return pWizard->Run();
    }

    template <typename Widget = QPushButton>
    Widget *find(const QString &name) const
    {
        return pWizard->findChild<Widget *>(name);
    }

    /// Which of the wizard's buttons can be seen.
    QList<bool> buttonsVisible() const
    {
        QList<bool> states;
        for (const auto which : {QWizard::BackButton, QWizard::CustomButton1, QWizard::CancelButton,
                                 QWizard::NextButton, QWizard::FinishButton}) {
            states += pWizard->button(which)->isVisible();
        }
        return states;
    }

    void press(QWizard::WizardButton which)
    {
        QAbstractButton *pButton = pWizard->button(which);
        QVERIFY2(pButton->isVisible() && pButton->isEnabled(), qPrintable(pButton->text()));
        QTest::mouseClick(pButton, Qt::LeftButton);
    }

    void toPage(int nId)
    {
        for (int i = 0; i < WizardPageCount && pWizard->currentId() != nId; ++i) {
            press(QWizard::NextButton);
        }
        QCOMPARE(pWizard->currentId(), nId);
    }
    void toSummary() { toPage(SummaryPageId); }

    void toggleMode() { QTest::mouseClick(find("NetOpModeSelectButton"), Qt::LeftButton); }

    QStringList changes() const
    {
        const auto *pList = pWizard->findChild<QListWidget *>();
        QStringList lines;
        for (int i = 0; i < pList->count() && pList->isVisible(); ++i) {
            lines += pList->item(i)->text();
        }
        return lines;
    }

    static QPushButton *key(const QString &name)
    {
        return openKeyboard()->findChild<QPushButton *>(QLatin1String("panelButton_") + name);
    }
    static void touch(QWidget *pWidget) { QTest::mouseClick(pWidget, Qt::LeftButton); }

    static void type(Qt::Key code)
    {
        QTRY_VERIFY(QGuiApplication::focusWindow()); // the window system hands the keys over
        QTest::keyClick(QGuiApplication::focusWindow(), code);
    }

    /// Empties the keyboard's display and enters \a text, digits and dots, on the screen or with
    /// \a bKeys on a keypad.
    static void enter(const QString &text, bool bKeys = false)
    {
        const auto press = [bKeys](const QString &name, int nKeypad) {
            bKeys ? type(Qt::Key(nKeypad)) : touch(key(name));
        };
        const auto nLength = openKeyboard()->lineEdit()->displayText().size();
        for (int i = 0; i < nLength; ++i) {
            press("right", Qt::Key_Right);
        }
        for (int i = 0; i < nLength; ++i) {
            press("backspace", Qt::Key_R);
        }
        for (const QChar c : text) {
            press(c == u'.' ? QStringLiteral("dot") : QString(c), c.unicode());
        }
    }

    void closeWindows() override
    {
        pWizard.reset();
        pParent.reset();
    }
};
