#pragma once

#include <QString>

/// Hardware address ("02:FC:00:00:00:01") of the network interface \a name, or an empty text when
/// there is none or the interface has no address entry of any protocol.
QString interfaceMacAddress(const QString &name);
