#pragma once

#include "tests/support/deviceroot.h"

#include <sys/stat.h>
#include <unistd.h>

/// A folder of the device whose entries cannot be made or removed while this lives, not even where
/// the tests run as root.
class LockedFolder
{
public:
    LockedFolder(const DeviceRoot &root, const QString &devicePath)
        : sFolder(root.path(devicePath)), bRoot(geteuid() == 0)
    {
        constexpr uid_t Nobody = 65534;
        chmod(qPrintable(root.path(QStringLiteral("/"))), 0755); // nobody is to reach it
        chmod(qPrintable(sFolder), 0555);
        if (bRoot && seteuid(Nobody) != 0) {
            qFatal("cannot become nobody");
        }
    }
    ~LockedFolder()
    {
        if (bRoot && seteuid(0) != 0) {
            qFatal("cannot become root again");
        }
        chmod(qPrintable(sFolder), 0755);
    }
    LockedFolder(const LockedFolder &) = delete;
    LockedFolder &operator=(const LockedFolder &) = delete;

private:
    QString sFolder;
    bool bRoot;
};
