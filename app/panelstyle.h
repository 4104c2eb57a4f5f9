#pragma once

#include <QProxyStyle>

/// The program's look, the same on every platform. Differs from Fusion in the busy bar, which
/// moves when its value does and only then: Fusion's own animation takes power from the PLC
/// runtime while that starts.
class PanelStyle : public QProxyStyle
{
    Q_OBJECT

public:
    PanelStyle();

    void drawControl(ControlElement element, const QStyleOption *pOption, QPainter *pPainter,
                     const QWidget *pWidget) const override;
};
