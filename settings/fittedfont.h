#pragma once

#include <QFont>

#include <functional>

class QSize;
class QString;

/// \a font, made smaller in steps of a point (or pixel) until \a text fits into \a width pixels on
/// one line, but never below a size that can still be read. Narrow screens need it: the texts of
/// the forms were written for wider ones.
QFont fittedFont(const QFont &font, const QString &text, int width);

/// The same, until the text fits into \a room in height as well.
QFont fittedFont(const QFont &font, const QString &text, const QSize &room);

/// The same, until \a fits says so. It is asked for each font in turn; the last one that it was
/// asked for is the one returned.
QFont fittedFont(const QFont &font, const std::function<bool(const QFont &)> &fits);

/// The size of \a font in points, or in pixels when it is sized in pixels.
int fontSize(const QFont &font);
/// Sets the size of \a font in the unit of fontSize().
void setFontSize(QFont *font, int size);

/// Point size of the smallest font that can still be read on this screen. A dense screen shows the
/// same points larger.
int smallestPoints();
