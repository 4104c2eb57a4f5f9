#pragma once

#include "simulator/devicefolder.h"

#include <QList>
#include <QString>

#include <utility>

/// The state file of the simulated firmware library, as panelctl edits it.
///
/// Values are text in which \xNN stands for the byte NN; the library reads the file at every call.
class FirmwareState
{
public:
    /// The state of \a device; empty when it has no readable one.
    explicit FirmwareState(const DeviceFolder &device);

    /// Sets \a key; at its place when it is there already.
    void set(const QString &key, const QString &value);
    void remove(const QString &key);
    /// Removes every key that begins with \a prefix.
    void removeAll(const QString &prefix);
    /// Replaces the file whole. False, after a line on stderr, when it cannot be written.
    bool save() const;

private:
    DeviceFolder device;
    QList<std::pair<QString, QString>> entries;
};
