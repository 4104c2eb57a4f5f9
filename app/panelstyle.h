#pragma once

#include <QList>
#include <QPalette>
#include <QProxyStyle>

/// The program's look, the same on every platform. Differs from Fusion in the busy bar, which
/// moves when its value does and only then: Fusion's own animation takes power from the PLC
/// runtime while that starts. And buttons look alike whether the pointer is over them or not.
class PanelStyle : public QProxyStyle
{
    Q_OBJECT

public:
    PanelStyle();

    using QProxyStyle::polish;
    void polish(QWidget *widget) override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;

private:
    QPalette sharedPalette(const QPalette &palette) const;

    mutable QList<QPalette> palettes; ///< seen so far, all different
};
