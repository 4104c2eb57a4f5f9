#include "keyboardfixture.h"

#include "input/inputpanellayout.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"

#include <QGroupBox>
#include <QStackedWidget>

namespace {

/// On a screen 240 pixels wide ten keys of 20 pixels, the special keys and the frame do not fit.
bool mayBeNarrow(const QSize &screen, const QWidget &key)
{
    return screen.width() == 240 && !key.parentWidget()->objectName().startsWith(u"Num");
}

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

    void pads_data()
    {
        row("dense and small", QSize(480, 272), "AlphaNumInput", 160);
        row("dense and large", QSize(1280, 800), "HexInput", 240);
        for (const PanelScreen &screen : panelScreens()) {
            for (const char *mode : {"NumInputPW", "HexInput", "AlphaNumInput"}) {
                row(screen.name() + ' ' + mode, screen.size, mode, 96);
            }
        }
    }
    void pads()
    {
        FETCH(QSize, screen, QString, mode, int, dpi);
        setScreen(screen, dpi);
        KeyboardFixture keyboard(mode, "", "", 20);
        const QWidget *pPanel = keyboard.pPanel;
        const QWidget *pPage = pPanel->findChild<QStackedWidget *>()->currentWidget();
        const QWidget *pBox = pPanel->findChild<QGroupBox *>();
        QVERIFY(keyboard.pContext->rect().contains(placeIn(pBox, keyboard.pContext.get())));
        QVERIFY(pBox->contentsRect().contains(placeIn(pPage, pBox)));

        // As little as the display of a field without a mask needs.
        const QFontMetrics display(keyboard.pDisplay->font());
        QVERIFY(display.height() + 4 <= keyboard.pDisplay->height());
        QVERIFY(display.horizontalAdvance(QStringLiteral("255.255.255.255")) + 8
                <= keyboard.pDisplay->width());

        QRect used;
        for (const QPushButton *pKey : keyboard.visibleKeys()) {
            const auto name = qPrintable(pKey->objectName());
            const auto spec =
                std::find_if(inputKeys().begin(), inputKeys().end(), [pKey](auto &key) {
                    return pKey->objectName() == QLatin1String(key.name);
                });
            const QRect place = placeIn(pKey, pPage);
            used |= place;
            QVERIFY2(pPage->rect().contains(place), name);
            QVERIFY2(pKey->height() >= spec->look().minimum.height(), name);
            QVERIFY2(pKey->width() >= spec->look().minimum.width() || mayBeNarrow(screen, *pKey),
                     name);
            QCOMPARE(place.size().boundedTo(spec->look().maximum), place.size());
            const QFontMetrics metrics(pKey->font());
            QVERIFY2(metrics.height() + 4 <= pKey->height(), name);
            for (int level = 0; level < ShiftLevels; ++level) {
                QString text = spec->text(level);
                text.replace(QLatin1String("&&"), QLatin1String("&"));
                QVERIFY2(metrics.horizontalAdvance(text) + 4 <= pKey->width(), name);
            }
            QVERIFY2(metrics.ascent() >= 7, name);
        }
        // What is left over stands evenly at both sides.
        const QMargins left(used.left(), used.top(), pPage->width() - 1 - used.right(),
                            pPage->height() - 1 - used.bottom());
        QVERIFY(qAbs(left.left() - left.right()) <= 1);
        const int headroom = mode.startsWith("Alpha") ? inputPanelFrame(screen).nPadHeadroom : 0;
        QVERIFY(qAbs(left.top() - headroom - left.bottom()) <= 1);
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
