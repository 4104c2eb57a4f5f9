#pragma once

#include <QWidget>

class QAbstractButton;

/// Marks a button that has no frame of its own, as long as it has the focus and got it by a key: a
/// coloured frame inside the button's border. A finger leaves no mark.
///
/// A button that is made \a onlyMarked takes keys only while it is seen to be marked; without a
/// mark all of them go on to its parent. Child of the button; GUI thread.
class FocusMark : public QWidget
{
    Q_OBJECT

public:
    FocusMark(QAbstractButton *button, bool onlyMarked);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool bOnlyMarked;
};
