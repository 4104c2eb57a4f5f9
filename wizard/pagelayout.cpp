#include "wizard/pagelayout.h"

#include <QFontMetrics>
#include <QLabel>
#include <QSpacerItem>

namespace {
constexpr int FirstRoomyClass = 5; // 480 x 640
}

void setCommonWidth(std::initializer_list<QLabel *> labels)
{
    int nWidth = 0;
    for (const QLabel *pLabel : labels) {
        nWidth = qMax(nWidth, pLabel->fontMetrics().horizontalAdvance(pLabel->text()));
    }
    for (QLabel *pLabel : labels) {
        pLabel->setFixedWidth(nWidth);
    }
}

void shrinkSpacers(int nResolutionIndex, QSpacerItem *pAbove, QSpacerItem *pBelow)
{
    if (nResolutionIndex < FirstRoomyClass) {
        pAbove->changeSize(20, 5);
        pBelow->changeSize(20, 15);
    }
}

void keepAsSpace(std::initializer_list<QWidget *> placeholders)
{
    for (QWidget *pWidget : placeholders) {
        QSizePolicy policy = pWidget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        pWidget->setSizePolicy(policy);
        pWidget->hide();
    }
}
