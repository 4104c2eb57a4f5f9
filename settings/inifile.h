#pragma once

#include "platform/memoryfile.h"
#include "platform/regularfile.h"

#include <QList>
#include <QSettings>

/// An ini file of the device as it was at one moment, for reading.
///
/// The file is read once and whole, and QSettings gets that copy: so nothing blocks on what stands
/// at the path, nobody changes values between two look-ups, no lock is waited for, nothing is ever
/// written, and a file that cannot be read is told from one that is not there. GUI thread.
class IniFile : private MemoryFile, public QSettings
{
public:
    enum State {
        Absent, ///< There is no file; every value has its default.
        Sound,
        Damaged, ///< An accident has happened to it; the values are what could still be read.
        Unreadable ///< It is there and cannot be read; there are no values.
    };

    /// Reads \a path, a path on the device. A link leads to its target, as only the system writes
    /// where the device keeps its files; one that leads nowhere is an unreadable file.
    explicit IniFile(const QString &path, QSettings::Format format = QSettings::IniFormat);
    /// Reads \a file, which has been read before.
    explicit IniFile(const FileContent &file, QSettings::Format format = QSettings::IniFormat);

    State state() const { return current; }
    /// What is wrong with a damaged or unreadable file, for a warning line; else empty.
    QString problem() const { return sProblem; }
    /// Every "group/key" that the file has.
    QStringList keys() const;

private:
    void judge(const QByteArray &text);
    bool swallowsLines(const QByteArray &text) const;

    State current = Absent;
    QString sProblem;
};

/// One line of an ini file.
struct IniEntry
{
    QString sKey;
    QString sValue;
};

/// The ini file, as QSettings would write it, of one \a group with \a entries: sorted by key. The
/// names are plain words (letters, digits, dots, underscores), the values one line of any text.
/// Nothing at all when there are no entries.
QByteArray iniText(const QString &group, QList<IniEntry> entries);
