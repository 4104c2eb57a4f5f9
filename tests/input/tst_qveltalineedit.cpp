#include "input/qveltalineedit.h"
#include "tests/support/devicetest.h"

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

class TestQVeltaLineEdit : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
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
};

PANEL_TEST_MAIN(TestQVeltaLineEdit)
#include "tst_qveltalineedit.moc"
