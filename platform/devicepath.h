#pragma once

#include <QString>

/// The path under which this process finds the device's file \a path.
///
/// \a path is absolute, as it is on the device ("/etc/settings.ini"). On a device the result is
/// \a path itself. Where the environment variable PANEL_ROOT names a directory, that directory
/// stands in front, so that the whole program runs on a simulated device without touching the
/// machine's own files. Texts shown to the operator name the device's path, never this one.
/// Paths that come from the environment or from the operator do not pass through here.
QString devicePath(const QString &path);
