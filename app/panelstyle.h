#pragma once

#include <QList>
#include <QPalette>
#include <QProxyStyle>

/// The program's look, the same on every platform. Differs from Fusion in the busy bar, which
/// moves when its value does and only then: Fusion's own animation takes power from the PLC
/// runtime while that starts. Buttons of the same colours share their drawn pictures, from one
/// opening of a dialog to the next: Fusion keeps them under the number of a palette, of which every
/// widget has its own, and the names of those pictures would grow without end. And no button shows
/// that the pointer is over it: after a touch it would stay over the last digit of a password.
class PanelStyle : public QProxyStyle
{
    Q_OBJECT

public:
    PanelStyle();

    using QProxyStyle::polish;
    void polish(QWidget *pWidget) override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *pOption, QPainter *pPainter,
                       const QWidget *pWidget) const override;
    void drawControl(ControlElement element, const QStyleOption *pOption, QPainter *pPainter,
                     const QWidget *pWidget) const override;

private:
    const QPalette &sharedPalette(const QPalette &palette) const;

    mutable QList<QPalette> palettes; ///< seen so far, all different
};
