#pragma once

class QFont;
class QString;

/// Installs the translation of the first language that the operator wants and that is there: the
/// environment's locale names them (LANGUAGE, LC_ALL, LC_MESSAGES, LANG). English needs none, so
/// the search ends there; without a locale, or with one that is not known, all is English, too.
///
/// A translation with letters that the fonts of the device lack is left out, with one warning line.
/// To be called once, when the fonts are loaded and before the first text is made; GUI thread. The
/// translation lives as long as the application.
void installLanguage();

/// Whether every character of \a text can be drawn with \a font, or with one that stands in for it.
bool hasLetters(const QFont &font, const QString &text);
