#pragma once

#include <QFont>
#include <QHash>
#include <QSet>

#include <initializer_list>

class QLabel;
class QWidget;

/// Shows the texts of a full-screen page that would be cut off in a smaller font. GUI thread.
class RowFit
{
public:
    /// \a page: with its layout; it outlives this.
    explicit RowFit(const QWidget *page);

    /// Gives all \a labels, which stand in one row of the page, the largest font, up to the one
    /// that they had at first, with which the row fits into the screen's width. Where even the
    /// smallest one is too large the texts go on on a second line.
    void fit(std::initializer_list<QLabel *> labels);

private:
    QFont firstFont(const QLabel *label);

    const QWidget *pPage;
    QHash<const QLabel *, QFont> firstFonts; ///< of each row's first label
    QHash<const QLabel *, QStringList> fittedTexts; ///< of each row, by its first label
    QSet<QLabel *> wrapped; ///< by fit()
};
