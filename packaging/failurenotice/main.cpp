// Says on the screen that the panel does not run and what to do about it, until it is told to end.
// Needs nothing of the panel's, so that nothing that is broken there can break it.

#include "packaging/failurenotice/framebuffer.h"
#include "packaging/failurenotice/notice.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t Background = 0x101820;
constexpr std::uint32_t Ink = 0xffffff;

/// What the service manager says of the service that failed, for whoever is called.
std::string reason()
{
    const char *pResult = std::getenv("MONITOR_SERVICE_RESULT");
    const char *pStatus = std::getenv("MONITOR_EXIT_STATUS");
    return std::string("operator-panel: ") + (pResult ? pResult : "failed")
        + (pStatus ? std::string(" ") + pStatus : "");
}

bool writeToConsole(const std::vector<std::string> &paragraphs)
{
    const int nConsole = open("/dev/tty0", O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (nConsole < 0) {
        return false;
    }
    std::string text = "\n";
    for (const std::string &paragraph : paragraphs) {
        text += paragraph + "\n";
    }
    const bool bWritten = write(nConsole, text.data(), text.size()) > 0;
    close(nConsole);
    return bWritten;
}

} // namespace

int main()
{
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    // Where the panel is started anew at once, as on a screen that has just appeared, no word of
    // this is to be seen.
    constexpr timespec Moment{1, 0};
    if (sigtimedwait(&ending, nullptr, &Moment) > 0) {
        return 0;
    }

    const std::vector<std::string> paragraphs{
        "The panel does not run.", "Switch the device off and on again.",
        "If this message comes back, call the service and tell them:", reason()};
    Framebuffer framebuffer(FramebufferOptions(std::getenv("PANEL_OPTIONS")));
    if (!framebuffer.isUsable()) {
        const bool bWritten = writeToConsole(paragraphs);
        std::fprintf(stderr, "No screen to paint on, %s\n",
                     bWritten ? "the console has the message" : "and no console either");
        return bWritten ? 0 : 1;
    }
    const int nWidth = framebuffer.width();
    const int nHeight = framebuffer.height();
    framebuffer.takeConsole();
    framebuffer.fill({0, 0, nWidth, nHeight}, Background);
    draw(layOut(paragraphs, nWidth, nHeight), nWidth, nHeight,
         [&framebuffer](const Box &box) { framebuffer.fill(box, Ink); });
    sigwaitinfo(&ending, nullptr);
    return 0;
}
