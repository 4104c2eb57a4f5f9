#include "app/rowfit.h"

#include "settings/fittedfont.h"

#include <QGuiApplication>
#include <QLabel>
#include <QLayout>
#include <QScreen>

namespace {

bool holds(QLayoutItem *item, const QWidget &widget)
{
    if (QLayout *pLayout = item->layout()) {
        for (int i = 0; i < pLayout->count(); ++i) {
            if (holds(pLayout->itemAt(i), widget)) {
                return true;
            }
        }
    }
    return item->widget() == &widget;
}

// What stands beside and with the widget on a page.
QLayoutItem *rowOf(const QLayout &pageLayout, const QWidget &widget)
{
    int i = 0;
    while (!holds(pageLayout.itemAt(i), widget)) {
        ++i;
    }
    return pageLayout.itemAt(i);
}

// A label that changes makes the page's own layout measure anew, but not those between them.
void forgetSizes(QLayoutItem *item)
{
    if (QLayout *pLayout = item->layout()) {
        for (int i = 0; i < pLayout->count(); ++i) {
            forgetSizes(pLayout->itemAt(i));
        }
    }
    item->invalidate();
}

} // namespace

RowFit::RowFit(const QWidget *page) : pPage(page)
{ }

void RowFit::fit(std::initializer_list<QLabel *> labels)
{
    QStringList texts;
    for (const QLabel *pLabel : labels) {
        texts += pLabel->text();
    }
    QStringList &fitted = fittedTexts[*labels.begin()];
    if (fitted == texts) {
        return; // trying the fonts anew would paint all of them
    }
    fitted = texts;
    QLayoutItem *pRow = rowOf(*pPage->layout(), **labels.begin());
    const QMargins margins = pPage->layout()->contentsMargins();
    const int nWidth =
        QGuiApplication::primaryScreen()->geometry().width() - margins.left() - margins.right();
    const auto fits = [&] {
        forgetSizes(pRow);
        return pRow->minimumSize().width() <= nWidth;
    };
    for (QLabel *pLabel : labels) {
        if (wrapped.remove(pLabel)) {
            pLabel->setWordWrap(false);
        }
    }
    fittedFont(firstFont(*labels.begin()), [&](const QFont &font) {
        for (QLabel *pLabel : labels) {
            pLabel->setFont(font);
        }
        return fits();
    });
    if (fits()) {
        return;
    }
    for (QLabel *pLabel : labels) {
        if (!pLabel->wordWrap()) {
            pLabel->setWordWrap(true);
            wrapped.insert(pLabel);
        }
    }
}

QFont RowFit::firstFont(const QLabel *label)
{
    auto it = firstFonts.constFind(label);
    if (it == firstFonts.cend()) {
        it = firstFonts.insert(label, label->font());
    }
    return *it;
}
