#pragma once

#include <QString>

/// The texts of the info box, computed without widgets.
namespace InfoText {

/// The catalogue message \a message with its "%1" replaced by \a argument. Without an argument (""
/// or one blank) the placeholder goes, and with it a blank too many.
QString compose(const QString &message, const QString &argument);

/// Plain \a text as rich text with lines of at most \a lineLength (1 or more) characters, broken at
/// a blank, else after a slash, else hard. Characters that rich text gives a meaning are escaped
/// and count as one.
QString wrap(const QString &text, int lineLength);

} // namespace InfoText
