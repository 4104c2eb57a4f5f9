#pragma once

#include <initializer_list>

class QLabel;
class QSpacerItem;
class QWidget;

/// Gives all \a labels one fixed width, that of the widest of their texts in its font.
void setCommonWidth(std::initializer_list<QLabel *> labels);

/// Pulls the rows of a page together on the small screen classes. \a nResolutionIndex: 0 to 24.
/// \a pAbove and \a pBelow: the spacers above and below the rows.
void shrinkSpacers(int nResolutionIndex, QSpacerItem *pAbove, QSpacerItem *pBelow);

/// Hides the placeholder rows of a page but keeps their room, so that the rows of all pages stand
/// at the same height. Empty fields and buttons without effect would only puzzle the operator.
void keepAsSpace(std::initializer_list<QWidget *> placeholders);
