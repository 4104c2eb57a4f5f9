#pragma once

#include "app/startup.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

constexpr int ScreenWidth = 800; // pixels
constexpr int ScreenHeight = 480;

/// Replaces the file \a path of the device root of BenchApplication.
inline void writeDeviceFile(const char *path, const QByteArray &content)
{
    const QString full = qEnvironmentVariable("PANEL_ROOT") + QLatin1String(path);
    QDir().mkpath(QFileInfo(full).path());
    QFile file(full);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(full));
    }
}

/// The application object of a measurement: as the program makes it, on an empty device root and,
/// unless the environment says otherwise, on an offscreen display of 800 x 480.
class BenchApplication
{
public:
    BenchApplication(int &argc, char **argv) : application(prepared(argc), argv)
    {
        setUpLook(application);
    }

private:
    // Before the application object is there.
    int &prepared(int &argc)
    {
        for (const char *variable : {"PANEL_ROOT", "XDG_RUNTIME_DIR"}) {
            qputenv(variable, QFile::encodeName(root.path()));
        }
        for (const char *variable :
             {"TSLIB_TSDEVICE", "TSLIB_CONFFILE", "TSLIB_CALIBFILE", "POINTERCAL_FILE"}) {
            qunsetenv(variable);
        }
        QDir(root.path()).mkpath(QStringLiteral("dev/input"));
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
            const QString path = root.filePath(QStringLiteral("screen.json"));
            QFile screen(path);
            if (!screen.open(QIODevice::WriteOnly)) {
                qFatal("cannot write %s", qPrintable(path));
            }
            screen.write(
                QStringLiteral(R"({"screens":[{"name":"panel","x":0,"y":0,"width":%1,)"
                               R"("height":%2,"logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]})")
                    .arg(ScreenWidth)
                    .arg(ScreenHeight)
                    .toUtf8());
            qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(path));
        }
        prepareEnvironment();
        return argc;
    }

    const QTemporaryDir root;
    QApplication application;
};
