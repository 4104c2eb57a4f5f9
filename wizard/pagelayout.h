#pragma once

#include <QList>
#include <QSize>
#include <QString>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpacerItem;
class QWidget;

struct SettingsRecord;

/// One row of a page: caption, field and the button that changes the field.
struct FieldRow
{
    QLabel *pLabel;
    QLineEdit *pEdit;
    QPushButton *pButton;
    QString sLongestText; ///< The longest text that the field has to show.
};

/// What surrounds the rows of a page.
struct PageFrame
{
    QGroupBox *pGroupBox;
    QSpacerItem *pAbove;
    QSpacerItem *pBelow;
};

/// Size in pixels of the wizard on the screen of \a record.
QSize wizardSize(const SettingsRecord &record);

/// Pixels between the wizard's border and what it holds, larger on a dense screen. \a widget: the
/// wizard or a part of it.
int wizardMargin(const QWidget *widget);

/// Makes the captions and fields of \a rows smaller, all alike, until every row can show its texts
/// whole in the wizard's width. No effect on wide screens.
void fitRows(const SettingsRecord &record, const QList<FieldRow> &rows);

/// Shows the title of \a box in its short form where the screen is upright, in a font in which it
/// fits into the wizard's width.
void fitTitle(const SettingsRecord &record, QGroupBox *box);

/// Gives all \a labels one fixed width, that of the widest of their texts in its font.
void setCommonWidth(const QList<QLabel *> &labels);

/// Pulls the rows of a page together on the screen classes without room to spare. \a screenClass:
/// below ScreenClassCount. \a above and \a below: the spacers above and below the rows.
void shrinkSpacers(int screenClass, QSpacerItem *above, QSpacerItem *below);

/// Hides the placeholder rows of a page but keeps their room, so that the rows of all pages stand
/// at the same height. Empty fields and buttons without effect would only puzzle the operator.
void keepAsSpace(const QList<QWidget *> &placeholders);
