#pragma once

#include <QString>

/// Hardware address ("02:FC:00:00:00:01") of the network interface \a name, or an empty text when
/// there is none or the interface has no IP address entry. In a device root the interface's file
/// alone decides.
QString interfaceMacAddress(const QString &name);
