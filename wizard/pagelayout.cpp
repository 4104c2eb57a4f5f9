#include "wizard/pagelayout.h"

#include "settings/fittedfont.h"
#include "settings/settingsrecord.h"
#include "settings/veltautils.h"

#include <QFontMetrics>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSpacerItem>
#include <QStyle>

#include <algorithm>

namespace {

// Pixels; from here on the wizard leaves room beside, or above and below.
constexpr int WideScreen = 800;
constexpr int TallScreen = 500;
constexpr QSize WizardOnLargeScreen(640, 480);

// Pixels of a group box's width in which its title does not stand.
constexpr int TitleInset = 20;

// Between a field's border and its text, both sides, at the usual density.
constexpr int EditMargins = 4;
constexpr int UsualDpi = 96;

// The layout of a row, in that of its group box.
QLayout *rowLayout(const FieldRow &row)
{
    const auto layouts = row.pEdit->parentWidget()->layout()->findChildren<QLayout *>();
    const auto it = std::find_if(layouts.cbegin(), layouts.cend(), [&row](const QLayout *layout) {
        return layout->indexOf(row.pEdit) >= 0;
    });
    return it != layouts.cend() ? *it : row.pEdit->parentWidget()->layout();
}

// What the gaps of a row take of its width.
int gaps(const FieldRow &row)
{
    QLayout *pLayout = rowLayout(row);
    // A text that changes makes the page's own layout measure anew, but not those in it.
    for (int i = 0; i < pLayout->count(); ++i) {
        pLayout->itemAt(i)->invalidate();
    }
    pLayout->invalidate();
    int nGaps = pLayout->minimumSize().width();
    for (int i = 0; i < pLayout->count(); ++i) {
        nGaps -= pLayout->itemAt(i)->minimumSize().width();
    }
    return nGaps;
}

// Pixels of a page's width that are not for what stands in its rows: margins of wizard and group
// box, and the gaps.
int pageMargins(const FieldRow &row)
{
    const QWidget *pBox = row.pEdit->parentWidget();
    const QMargins inside = pBox->layout()->contentsMargins() + pBox->contentsMargins();
    return 2 * wizardMargin(pBox) + inside.left() + inside.right() + gaps(row);
}

// One that is longer than its fixed width gets a smaller font.
void fitButton(QPushButton *button)
{
    const int nPadding = 2 * button->style()->pixelMetric(QStyle::PM_ButtonMargin, nullptr, button);
    button->setFont(fittedFont(button->font(), button->text(), button->maximumWidth() - nPadding));
}

bool rowsFit(const QList<FieldRow> &rows, int width)
{
    int nLabel = 0;
    int nRest = 0;
    for (const FieldRow &row : rows) {
        nLabel = qMax(nLabel, row.pLabel->fontMetrics().horizontalAdvance(row.pLabel->text()));
        nRest = qMax(nRest,
                     row.pEdit->fontMetrics().horizontalAdvance(row.sLongestText)
                         + EditMargins * row.pEdit->logicalDpiX() / UsualDpi
                         + row.pButton->minimumWidth());
    }
    return nLabel + nRest <= width;
}

// False when the font is as small as it may get.
bool makeSmaller(QWidget *widget)
{
    QFont font = widget->font();
    const int nPoints = font.pointSize();
    if (nPoints <= smallestPoints()) {
        return false;
    }
    font.setPointSize(nPoints - 1);
    widget->setFont(font);
    return true;
}

} // namespace

int wizardMargin(const QWidget *widget)
{
    return widget->style()->pixelMetric(QStyle::PM_LayoutLeftMargin, nullptr, widget);
}

QSize wizardSize(const SettingsRecord &record)
{
    QSize size(record.nScreenWidth[record.nResolutionIndex],
               record.nScreenHeight[record.nResolutionIndex]);
    if (record.bFixedWidth) {
        size.setWidth(record.nFixedWidth);
    } else if (size.width() >= WideScreen) {
        size.setWidth(WizardOnLargeScreen.width());
    }
    if (size.height() >= TallScreen) {
        size.setHeight(WizardOnLargeScreen.height());
    }
    // A screen of no usual size may be smaller than its class.
    return size.boundedTo(QGuiApplication::primaryScreen()->size());
}

void fitRows(const SettingsRecord &record, const QList<FieldRow> &rows)
{
    const int nWidth = wizardSize(record).width() - pageMargins(rows.constFirst());
    for (const FieldRow &row : rows) {
        // However small the texts get, the finger that presses it stays the same.
        row.pButton->setMinimumHeight(
            qMax(row.pButton->minimumHeight(), row.pButton->sizeHint().height()));
        fitButton(row.pButton);
    }
    bool bSmaller = true;
    while (bSmaller && !rowsFit(rows, nWidth)) {
        bSmaller = false;
        for (const FieldRow &row : rows) {
            // The field is the larger one at first: it comes down to the caption, then both.
            if (row.pEdit->font().pointSize() >= row.pLabel->font().pointSize()) {
                bSmaller = makeSmaller(row.pEdit) || bSmaller;
            } else {
                bSmaller = makeSmaller(row.pLabel) || bSmaller;
            }
        }
    }
}

void fitTitle(const SettingsRecord &record, QGroupBox *box)
{
    box->setTitle(record.pUtils->shortGroupBoxTitle(box));
    const int nFrame = box->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, box);
    const int nWidth = wizardSize(record).width() - 2 * (wizardMargin(box) + nFrame) - TitleInset;
    box->setFont(fittedFont(box->font(), box->title(), nWidth));
}

void setCommonWidth(const QList<QLabel *> &labels)
{
    int nWidth = 0;
    for (const QLabel *pLabel : labels) {
        nWidth = qMax(nWidth, pLabel->fontMetrics().horizontalAdvance(pLabel->text()));
    }
    for (QLabel *pLabel : labels) {
        pLabel->setFixedWidth(nWidth);
    }
}

void shrinkSpacers(int screenClass, QSpacerItem *above, QSpacerItem *below)
{
    if (screenClassRow(screenClass).room == Room::Tight) {
        above->changeSize(20, 5);
        below->changeSize(20, 15);
    }
}

void keepAsSpace(const QList<QWidget *> &placeholders)
{
    for (QWidget *pWidget : placeholders) {
        QSizePolicy policy = pWidget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        pWidget->setSizePolicy(policy);
        pWidget->hide();
    }
}
