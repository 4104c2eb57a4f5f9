#include "platform/windowstack.h"
#include "tests/support/devicetest.h"

/// Windows that come and go as the program's do, on a window system without a window manager.
class TestWindowStack : public DeviceTest
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> pMain;
    std::unique_ptr<QDialog> pFirst, pSecond;

    void closeWindows() override
    {
        pSecond.reset();
        pFirst.reset();
        pMain.reset();
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

private Q_SLOTS:
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
};

PANEL_TEST_MAIN(TestWindowStack)
#include "tst_windowstack.moc"
