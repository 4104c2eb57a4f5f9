#pragma once

#include "tests/support/deviceroot.h"

#include <QProcess>

#include <sys/stat.h>
#include <unistd.h>

/// The process has not the rights of root, before whom every folder is writable, while this lives;
/// the device is the ordinary user's.
class OrdinaryUser
{
public:
    /// In \a lockedFolder, where one is given, nothing can be made or removed meanwhile.
    explicit OrdinaryUser(const DeviceRoot &root, const QString &lockedFolder = {})
        : sLocked(lockedFolder.isEmpty() ? QString() : root.path(lockedFolder))
    {
        if (bWasRoot) {
            QProcess::execute("chown", {"-R", QString::number(Nobody), root.path({})});
        }
        chmod(qPrintable(sLocked), 0555);
        need(!bWasRoot || setresuid(Nobody, Nobody, 0) == 0, "to be nobody");
    }
    ~OrdinaryUser()
    {
        need(!bWasRoot || setresuid(0, 0, 0) == 0, "to be root again");
        chmod(qPrintable(sLocked), 0755);
    }
    Q_DISABLE_COPY(OrdinaryUser)

private:
    static constexpr uid_t Nobody = 65534;
    bool bWasRoot = geteuid() == 0;
    QString sLocked;
};
