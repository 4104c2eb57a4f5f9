#include "platform/devicepath.h"

#include <QDir>

QString devicePath(const QString &path)
{
    // Read at every call: tests change the root while the process runs.
    const QString root = qEnvironmentVariable("PANEL_ROOT");
    if (root.isEmpty()) {
        return path;
    }
    // Absolute, so that it holds for child processes and for drivers with another idea of ".".
    return QDir::cleanPath(QDir(root).absolutePath() + path);
}
