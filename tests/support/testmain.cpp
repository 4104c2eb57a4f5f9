#include "tests/support/testmain.h"

#include "app/startup.h"

#include <QApplication>
#include <QFileInfo>
#include <QTemporaryDir>

int runPanelTest(int argc, char **argv, const char *name,
                 const std::function<int(int, char **)> &run)
{
    if (QFileInfo("/dev/shm").isWritable()) {
        qputenv("TMPDIR", "/dev/shm"); // hundreds of devices are made
    }
    const QTemporaryDir home;
    for (const char *variable : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"}) {
        qputenv(variable, QFile::encodeName(home.path()));
    }
    for (const char *variable : {"PANEL_ROOT", "TSLIB_TSDEVICE", "POINTERCAL_FILE",
                                 "TSLIB_CALIBFILE", "TSLIB_CONFFILE", "QWS_DISPLAY"}) {
        qunsetenv(variable);
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QString::fromLatin1(name));
    setUpLook(application);
    return run(argc, argv);
}
