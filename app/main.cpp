#include "app/cursor.h"
#include "app/keyrepeatfilter.h"
#include "app/language.h"
#include "app/mainwindow.h"
#include "app/startup.h"
#include "infobox/veltainfobox.h"
#include "platform/displaycheck.h"
#include "platform/endinglimit.h"
#include "platform/fontconfiguration.h"
#include "platform/programahead.h"
#include "platform/screenhandover.h"
#include "platform/servicenotifier.h"
#include "platform/standardstreams.h"
#include "platform/terminationsignals.h"
#include "platform/windowserver.h"

#include <QApplication>

#include <memory>
#include <optional>

int main(int argc, char *argv[])
{
    readProgramAhead();
    TerminationSignals::letThrough();
    std::optional<StandardStreams> standardStreams(std::in_place);
    // Never called off: what ends after main(), in whatever library, may hang, too.
    [[maybe_unused]] static const auto *const pEndingLimit = new EndingLimit;
    prepareEnvironment();
    ServiceNotifier serviceNotifier;
    prepareFontConfiguration();
    std::optional<DisplayCheck> displayCheck([&] { standardStreams.reset(); });
    QApplication application(argc, argv);
    if (!DisplayCheck::hasScreen()) {
        return DisplayCheck::ExitCode;
    }
    displayCheck.reset();
    setUpLook(application);
    KeyRepeatFilter keyRepeatFilter;
    application.installEventFilter(&keyRepeatFilter);
    // Before the first text is measured, so that nothing is laid out twice; a warning waits until
    // the start-up page is there.
    const bool bFontsLoaded = loadFonts();
    installLanguage();

    // A calibration that nobody has accepted is taken back by a destructor.
    const TerminationSignals terminationSignals;
    WindowServer windowServer;
    const ScreenHandover screenHandover;
    QObject::connect(&screenHandover, &ScreenHandover::firstFrame, &application,
                     [&serviceNotifier] { serviceNotifier.ready(); });
    MainWindow window(nullptr, &screenHandover);
    QObject::connect( // behind the window's own work at that signal
        &screenHandover, &ScreenHandover::firstFrame, &windowServer,
        [&windowServer] { windowServer.openPointer(); }, Qt::QueuedConnection);

    QApplication::setOverrideCursor(Qt::BlankCursor);
    gCursorHidden = true;
    windowServer.setCursorVisible(false);

    window.show();
    const std::unique_ptr<VeltaInfoBox> pFontWarning =
        bFontsLoaded ? nullptr : showFontWarning(window);
    const int nResult = QApplication::exec();
    serviceNotifier.stopping();
    return nResult;
}
