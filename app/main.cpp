#include "app/cursor.h"
#include "app/mainwindow.h"
#include "app/startup.h"
#include "platform/windowserver.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    prepareEnvironment();
    QApplication application(argc, argv);
    setUpLook(application);
    // Before the first text is measured, so that nothing is laid out twice; a warning waits until
    // the start-up page is there.
    const bool bFontsLoaded = loadFonts();

    WindowServer windowServer;
    MainWindow window;

    QApplication::setOverrideCursor(Qt::BlankCursor);
    gCursorHidden = true;
    windowServer.setCursorVisible(false);
    windowServer.openPointer();

    if (!bFontsLoaded) {
        showFontWarning();
    }
    window.show();
    return QApplication::exec();
}
