#include "app/keyrepeatfilter.h"
#include "app/panelstyle.h"
#include "app/veltakbdinput.h"
#include "tests/support/devicetest.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOptionButton>

namespace {

// Notes every key that reaches it.
class KeyLog : public QWidget
{
public:
    QStringList log;

protected:
    bool event(QEvent *pEvent) override
    {
        if (pEvent->type() == QEvent::KeyPress || pEvent->type() == QEvent::KeyRelease) {
            const auto *pKey = static_cast<QKeyEvent *>(pEvent);
            log += QStringLiteral("%1%2/%3/%4")
                       .arg(pEvent->type() == QEvent::KeyPress ? QChar('+') : QChar('-'))
                       .arg(pKey->key(), 0, 16)
                       .arg(pKey->text())
                       .arg(pKey->modifiers());
            return true;
        }
        return QWidget::event(pEvent);
    }
};

/// A button in \a style.
QImage picture(const QStyle &style, QStyle::State state)
{
    QStyleOptionButton button;
    button.rect = {0, 0, 80, 30};
    button.state = state | QStyle::State_Raised;
    button.features = QStyleOptionButton::DefaultButton;
    button.palette = QPalette(Qt::lightGray); // with a number of its own
    button.palette.setColor(QPalette::Active, QPalette::Highlight, Qt::blue);
    button.palette.setColor(QPalette::Disabled, QPalette::Highlight, Qt::gray);
    button.palette.setCurrentColorGroup(state & QStyle::State_Enabled ? QPalette::Active
                                                                      : QPalette::Disabled);
    QImage image(button.rect.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    style.drawPrimitive(QStyle::PE_PanelButtonCommand, &button, &painter);
    return image;
}

} // namespace

class VeltaKbdInputTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void translation_data()
    {
        row("S", int(Qt::Key_S), int(Qt::Key_Tab));
        row("T", int(Qt::Key_T), int(Qt::Key_Backtab));
        row("R", int(Qt::Key_R), int(Qt::Key_Backspace));
        row("Q", int(Qt::Key_Q), 0);
        row("Return", int(Qt::Key_Return), 0);
    }
    void translation()
    {
        FETCH(int, key, int, sent);
        KeyLog target;
        VeltaKbdInput input(&target);
        QKeyEvent event(QEvent::KeyPress, key, Qt::ShiftModifier, "s");
        QCOMPARE(input.handleKey(&event), sent != 0);
        QCOMPARE(event.isAccepted(), sent != 0);
        const QStringList expected = sent == 0
            ? QStringList()
            : QStringList({QStringLiteral("+%1//0").arg(sent, 0, 16),
                           QStringLiteral("-%1//0").arg(sent, 0, 16)});
        QCOMPARE(target.log, expected);
    }

    // A Return that is held down presses a button once, every other key repeats.
    void heldReturn()
    {
        KeyRepeatFilter filter;
        qApp->installEventFilter(&filter);
        QDialog dialog; // its buttons take Return
        QPushButton button(&dialog);
        QSignalSpy clicks(&button, &QPushButton::clicked);
        for (const bool bRepeat : {false, true, true}) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), bRepeat);
            QCoreApplication::sendEvent(&button, &press);
        }
        QCOMPARE(clicks.size(), 1);
        KeyLog other;
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(&other, &press);
        QCOMPARE(other.log.size(), 1);
    }

    // In an order in which each could get the picture of another.
    void styledButtons()
    {
        const PanelStyle style;
        const std::unique_ptr<QStyle> fusion(QStyleFactory::create("Fusion"));
        for (const QStyle::State state :
             {QStyle::State(QStyle::State_None), QStyle::State(QStyle::State_Enabled),
              QStyle::State_Enabled | QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange,
              QStyle::State_Enabled | QStyle::State_Sunken}) {
            const QImage expected = picture(*fusion, state);
            QCOMPARE(picture(style, state), expected);
            QCOMPARE(picture(style, state | QStyle::State_MouseOver), expected);
        }
    }

    void receivers()
    {
        KeyLog parent;
        VeltaKbdInput input(nullptr);
        QKeyEvent event(QEvent::KeyPress, Qt::Key_S, Qt::NoModifier);
        QVERIFY(!input.handleKey(&event)); // nobody there
        input.setParent(&parent);
        QVERIFY(input.handleKey(&event));
        QCOMPARE(parent.log.size(), 2);
        KeyLog modal;
        modal.setWindowModality(Qt::ApplicationModal);
        modal.show();
        QVERIFY(input.handleKey(&event));
        QCOMPARE(modal.log.size(), 2);
        QCOMPARE(parent.log.size(), 2);
    }
};

PANEL_TEST_MAIN(VeltaKbdInputTest)
#include "tst_veltakbdinput.moc"
