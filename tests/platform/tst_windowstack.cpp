#include "platform/windowstack.h"
#include "tests/support/devicetest.h"

#include <QDialog>

/// Windows that come and go as the program's do, on a window system without a window manager.
class TestWindowStack : public DeviceTest
{
    Q_OBJECT

private:
    struct Windows
    {
        std::unique_ptr<QWidget> pMain = std::make_unique<QWidget>();
        std::unique_ptr<QDialog> pFirst = std::make_unique<QDialog>();
        std::unique_ptr<QDialog> pSecond = std::make_unique<QDialog>();

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
    };
    using Step = std::function<void(Windows &)>;

private Q_SLOTS:
    // The topmost one, the last of the order, has the keys.
    void topmostHasTheKeys_data()
    {
        const auto step = [](const char *name, const QByteArray &order, const Step &taken) {
            row(name, taken, order);
        };
        step("one after the other", "m12", [](Windows &w) {
            w.pFirst->show();
            w.pSecond->show();
        });
        step("raised", "m21", [](Windows &w) {
            w.pFirst->show();
            w.pSecond->show();
            w.pFirst->raise();
        });
        step("hidden", "m1", [](Windows &w) {
            w.pFirst->show();
            w.pSecond->show();
            QTRY_VERIFY(w.pSecond->isActiveWindow());
            w.pSecond->hide();
        });
        step("the lower one hidden", "m2", [](Windows &w) {
            w.pFirst->show();
            w.pSecond->show();
            w.pFirst->hide();
        });
        step("destroyed", "m", [](Windows &w) {
            w.pFirst->show();
            QTRY_VERIFY(w.pFirst->isActiveWindow());
            w.pFirst.reset();
        });
        step("gone at once", "m", [](Windows &w) {
            w.pFirst->show();
            w.pFirst->activateWindow();
            w.pFirst->hide();
        });
        step("hidden and shown at once", "m1", [](Windows &w) {
            w.pFirst->show();
            QTRY_VERIFY(w.pFirst->isActiveWindow());
            w.pFirst->hide();
            w.pFirst->show();
        });
        step("a modal one made anew", "m1", [](Windows &w) {
            w.pFirst->setModal(true);
            w.pFirst->show();
            QTRY_VERIFY(w.pFirst->isActiveWindow());
            w.pFirst->setWindowFlag(Qt::FramelessWindowHint);
            w.pFirst->show();
        });
        step("an active modal one destroyed", "m1", [](Windows &w) {
            w.pFirst->show();
            w.pSecond->setModal(true);
            w.pSecond->show();
            QTRY_VERIFY(w.pSecond->isActiveWindow());
            w.pSecond.reset();
        });
        step("the main window comes back below", "m12", [](Windows &w) {
            w.pMain->hide();
            for (QDialog *pBox : {w.pFirst.get(), w.pSecond.get()}) {
                pBox->setModal(true);
                pBox->show();
            }
            w.pMain->showFullScreen();
            keepBelowOthers(w.pMain.get());
        });
        step("the upper of two modal ones closed", "m1", [](Windows &w) {
            w.pFirst->setModal(true);
            w.pFirst->show();
            w.pSecond->setModal(true);
            w.pSecond->show();
            QTRY_VERIFY(w.pSecond->isActiveWindow());
            w.pSecond->accept();
        });
        step("shown above a modal one, which is raised", "m21", [](Windows &w) {
            w.pFirst->setModal(true);
            w.pFirst->show();
            w.pSecond->show(); // cannot be worked
            w.pFirst->raise();
        });
    }
    void topmostHasTheKeys()
    {
        FETCH(Step, step, QByteArray, order);
        Windows windows;
        windows.pMain->show();
        QTRY_VERIFY(windows.pMain->isActiveWindow()); // though nobody asked for it
        step(windows);
        QCOMPARE(windows.order(), order);
        QTRY_COMPARE(QApplication::activeWindow(), visibleWindows().constLast());
        QTest::qWait(1);
        QCOMPARE(QApplication::activeWindow(), visibleWindows().constLast());
    }
};

PANEL_TEST_MAIN(TestWindowStack)
#include "tst_windowstack.moc"
