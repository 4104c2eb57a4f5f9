// Stands in for the PLC runtime's visualisation: paints the whole framebuffer once and ends. The
// picture is one that no page of the panel has, and in which every single pixel tells if it was
// overwritten: red grows to the right, green downwards, blue is what SEED says.
//
// visualisation DEVICE SEED [--before-next-read FILE DELAY_MS COMMAND]: with the latter it waits
// until somebody has opened FILE, then DELAY_MS, then paints and, at once, runs COMMAND.

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/fb.h>
#include <string>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>

namespace {

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::exit(1);
}

/// Returns when somebody opens the file: the panel asks the firmware library, at a tick.
void waitForReader(const char *pFile)
{
    const int fd = inotify_init1(IN_CLOEXEC);
    if (fd < 0 || inotify_add_watch(fd, pFile, IN_OPEN) < 0) {
        fail(pFile);
    }
    alignas(inotify_event) char buffer[4096];
    if (read(fd, buffer, sizeof buffer) <= 0) {
        fail(pFile);
    }
    close(fd);
}

void paint(const char *pDevice, unsigned seed)
{
    const int fd = open(pDevice, O_RDWR | O_CLOEXEC);
    fb_var_screeninfo screen = {};
    fb_fix_screeninfo memory = {};
    if (fd < 0 || ioctl(fd, FBIOGET_VSCREENINFO, &screen) != 0
        || ioctl(fd, FBIOGET_FSCREENINFO, &memory) != 0 || screen.bits_per_pixel != 32) {
        fail(pDevice);
    }
    std::string picture(static_cast<std::size_t>(memory.line_length) * screen.yres, '\0');
    for (unsigned y = 0; y < screen.yres; ++y) {
        for (unsigned x = 0; x < screen.xres; ++x) {
            const std::uint32_t colour =
                (255 * x / screen.xres) << 16 | (255 * y / screen.yres) << 8 | (seed & 255);
            std::memcpy(picture.data() + y * memory.line_length + x * sizeof colour, &colour,
                        sizeof colour);
        }
    }
    if (pwrite(fd, picture.data(), picture.size(), 0) != static_cast<ssize_t>(picture.size())) {
        fail(pDevice);
    }
    close(fd);
}

} // namespace

int main(int argc, char **argv)
{
    const bool bWaits = argc == 7 && std::string(argv[3]) == "--before-next-read";
    if (argc != 3 && !bWaits) {
        std::fprintf(stderr,
                     "usage: visualisation DEVICE SEED [--before-next-read FILE DELAY COMMAND]\n");
        return 2;
    }
    if (bWaits) {
        waitForReader(argv[4]);
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(argv[5])));
    }
    paint(argv[1], static_cast<unsigned>(std::atoi(argv[2])));
    if (bWaits) {
        execl("/bin/sh", "sh", "-c", argv[6], nullptr);
        fail("/bin/sh");
    }
    return 0;
}
