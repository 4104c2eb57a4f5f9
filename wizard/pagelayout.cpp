#include "wizard/pagelayout.h"

#include "settings/settingsrecord.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSpacerItem>

namespace {

// Pixels; from here on the wizard leaves room beside, or above and below.
constexpr int WideScreen = 800;
constexpr int TallScreen = 500;
constexpr QSize WizardOnLargeScreen(640, 480);

// Pixels of a page's width that are not for its rows: margins of wizard and group box, and the two
// gaps inside a row.
constexpr int PageMargins = 2 * (11 + 5) + 2 * 6;
constexpr int EditMargins = 8; // between a field's border and its text, both sides
constexpr int SmallestPoints = 6;

bool rowsFit(const QList<FieldRow> &rows, int nWidth)
{
    int nLabel = 0;
    int nRest = 0;
    for (const FieldRow &row : rows) {
        nLabel = qMax(nLabel, row.pLabel->fontMetrics().horizontalAdvance(row.pLabel->text()));
        nRest = qMax(nRest,
                     row.pEdit->fontMetrics().horizontalAdvance(row.sLongestText) + EditMargins
                         + row.pButton->minimumWidth());
    }
    return nLabel + nRest <= nWidth;
}

// False when the font is as small as it may get.
bool makeSmaller(QWidget *pWidget)
{
    QFont font = pWidget->font();
    const int nPoints = font.pointSize();
    if (nPoints <= SmallestPoints) {
        return false;
    }
    font.setPointSize(nPoints - 1);
    pWidget->setFont(font);
    return true;
}

} // namespace

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
    const int nWidth = wizardSize(record).width() - PageMargins;
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

void shrinkSpacers(int nResolutionIndex, QSpacerItem *pAbove, QSpacerItem *pBelow)
{
    if (screenClassRow(nResolutionIndex).room == Room::Tight) {
        pAbove->changeSize(20, 5);
        pBelow->changeSize(20, 15);
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
