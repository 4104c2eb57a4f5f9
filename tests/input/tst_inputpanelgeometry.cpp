#include "keyboardfixture.h"

#include <QGroupBox>

namespace {

QRect placeIn(const QWidget *widget, const QWidget *ancestor)
{
    return {widget->mapTo(ancestor, QPoint()), widget->size()};
}

} // namespace

class TestInputPanelGeometry : public DeviceTest
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
            QVERIFY2(!pKey->isVisible() || context.rect().contains(placeIn(pKey, &context)),
                     qPrintable(pKey->objectName()));
        }
    }
};

PANEL_TEST_MAIN(TestInputPanelGeometry)
#include "tst_inputpanelgeometry.moc"
