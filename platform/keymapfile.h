#pragma once

#include <QByteArray>
#include <QString>

/// \file
/// Key map files of Qt's evdev keyboard driver, which believes every number in them: a damaged one
/// costs all memory, or half a minute.

/// Empty when the content \a file of a key map file is whole, else what is wrong with it. Entries
/// are not judged: the driver takes any.
QString keyMapFault(const QByteArray &file);

/// Whether the driver can be given the key map file \a path; one warning line when not.
bool isKeyMapUsable(const QString &path);
