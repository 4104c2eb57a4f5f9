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
        chmod(qPrintable(root.path("/")), 0755); // nobody is to reach it
        chmod(qPrintable(sFolder), 0555);
        need(!bRoot || seteuid(Nobody) == 0, "to be nobody");
    }
    ~LockedFolder()
    {
        need(!bRoot || seteuid(0) == 0, "to be root again");
        chmod(qPrintable(sFolder), 0755);
    }
    Q_DISABLE_COPY(LockedFolder)

private:
    QString sFolder;
    bool bRoot;
};
