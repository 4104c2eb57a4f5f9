#include "app/panelstyle.h"
#include "tests/support/testmain.h"

#include <QPainter>
#include <QStyleFactory>
#include <QStyleOptionButton>

class PanelStyleTest : public QObject
{
    Q_OBJECT

private:
    static QImage picture(const QStyle &style, QStyle::State state)
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

private Q_SLOTS:
    // In an order in which each could get the picture of another.
    void buttons()
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
};

PANEL_TEST_MAIN(PanelStyleTest)
#include "tst_panelstyle.moc"
