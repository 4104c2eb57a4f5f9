#pragma once

#include "platform/firmwaretext.h"

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <span>

/// PLC states that mean "not running". Any other value: the runtime runs and owns the screen.
enum PlcState : qint32 {
    PlcStateUnknown = 0,
    PlcStateStopped = 2, ///< An application can be started.
    PlcStateNoApplication = 6
};

/// Record that rctrl_get_status() fills; its layout is the firmware library's. Bytes that this
/// program does not know belong to the library.
struct PlcStatus
{
    static constexpr std::size_t Size = 2208; ///< bytes

    quint8 appCount; ///< Number of application entries; may be more than the record has room for.
    quint8 reserved1[3];
    qint32 state; ///< A PlcState, or any other value.
    quint8 reserved2[80];
    char entries[Size - 88]; ///< Entry i begins at EntrySize * i with its name.

    static constexpr std::size_t EntrySize = 440;

    bool isPlcStopped() const
    {
        return state == PlcStateUnknown || state == PlcStateStopped
            || state == PlcStateNoApplication;
    }

    /// Name of the first entry that has one, or an empty text. Never reads past an entry or the
    /// record, whatever appCount says and wherever a NUL is missing.
    QString firstAppName() const
    {
        for (std::size_t i = 0; i < appCount && i * EntrySize < sizeof(entries); ++i) {
            const std::size_t nRoom = std::min(EntrySize, sizeof(entries) - i * EntrySize);
            QString name = firmwareText(std::span(entries + i * EntrySize, nRoom));
            if (!name.isEmpty()) {
                return name;
            }
        }
        return {};
    }
};
static_assert(sizeof(PlcStatus) == PlcStatus::Size);
static_assert(offsetof(PlcStatus, state) == 4 && offsetof(PlcStatus, entries) == 88);
