#pragma once

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdlib>

/// A simulated device of its own for a measurement, made by panelctl.
class DeviceFixture
{
public:
    explicit DeviceFixture(const QString &panelctl) : sPanelctl(panelctl)
    {
        control({"init", dir.path(), "--screen", "800x480"});
        QFile config(screenFile());
        if (!config.open(QIODevice::WriteOnly)) {
            std::abort();
        }
        config.write(R"({"screens":[{"name":"panel","x":0,"y":0,"width":800,"height":480,)"
                     R"("logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]})");
    }

    QString root() const { return dir.path(); }
    QString screenFile() const { return dir.filePath(QStringLiteral("screen.json")); }
    QString platform() const { return QStringLiteral("offscreen:configfile=") + screenFile(); }

    void control(const QStringList &arguments) const
    {
        const QStringList all = QStringList{QStringLiteral("--root"), dir.path()} + arguments;
        if (QProcess::execute(sPanelctl, all) != 0) {
            qFatal("panelctl failed: %s", qPrintable(arguments.join(u' ')));
        }
    }

private:
    const QString sPanelctl;
    QTemporaryDir dir;
};
