#pragma once

#include "platform/memoryfile.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The environment in which tslib finds its configuration and calibration, while it lives.
///
/// tslib reads TSLIB_CONFFILE and TSLIB_CALIBFILE in ts_config() and ts_reconfig() and nowhere
/// else, so an object is needed around these calls only; at its end the variables are as before.
/// The configuration is the file that the environment names, else the device root's etc/ts.conf
/// where there is one, and a regular file in any case: tslib would wait for ever for the writer of
/// a FIFO. GUI thread only, as every change of the environment.
class TslibEnvironment
{
public:
    /// tslib applies \a calibrationContent, the content of a calibration file that has been checked
    /// before (a divisor of 0 kills the process inside tslib). It reads a copy of its own: the file
    /// on the device can change behind the program at any moment. Without a content it applies no
    /// calibration, whatever the device's files say: that is for readers of raw samples too.
    explicit TslibEnvironment(const QByteArray &calibrationContent = QByteArray());
    TslibEnvironment(const TslibEnvironment &) = delete;
    TslibEnvironment &operator=(const TslibEnvironment &) = delete;

    /// Why tslib has no configuration, to be put behind a message about tslib; else empty.
    QString problem() const { return sProblem; }

private:
    /// One variable of the environment, put back as it was.
    class Variable
    {
    public:
        explicit Variable(const char *name);
        ~Variable();
        Variable(const Variable &) = delete;
        Variable &operator=(const Variable &) = delete;
        QString path() const;
        void set(const QString &path) const;

    private:
        const char *pName;
        QByteArray before;
        bool bWasSet;
    };

    void nameCalibration(const QByteArray &content);
    void nameConfiguration();

    Variable calibration;
    Variable configuration;
    std::optional<MemoryFile> calibrationCopy;
    QString sProblem;
};
