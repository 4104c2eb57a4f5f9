// Makes the emulated device's touchscreen: /dev/uinput gives it, and the emulator's tablet, which
// has no BTN_TOUCH and is therefore none, moves its finger. Where the finger is on the screen
// becomes what the controller reports by the mapping in /simulator/touch.conf, the file of the
// simulated device; without that file, raw positions are the screen's pixels stretched over the
// axes.
//
// touchscreen single|multi WxH: until SIGTERM, with which the touchscreen is gone.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <linux/uinput.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr char TabletName[] = "QEMU Virtio Tablet";
constexpr char MappingFile[] = "/simulator/touch.conf";
constexpr int LargestRaw = 4095;
constexpr int Pressure = 100;
constexpr int LargestPressure = 255;
constexpr int Slots = 5;
constexpr int LargestTrackingId = 65535;

/// raw = factorX * x + factorY * y + offset
struct Axis
{
    double factorX = 0;
    double factorY = 0;
    double offset = 0;

    int raw(double x, double y) const
    {
        const auto value = static_cast<int>(std::lround(factorX * x + factorY * y + offset));
        return std::clamp(value, 0, LargestRaw);
    }
};

struct Mapping
{
    double width = 0;
    double height = 0;
    std::array<Axis, 2> axes;
};

Mapping linearMapping(double width, double height)
{
    return {width, height, {{{LargestRaw / (width - 1), 0, 0}, {0, LargestRaw / (height - 1), 0}}}};
}

Mapping loadMapping(double width, double height)
{
    Mapping mapping;
    std::ifstream file(MappingFile);
    file >> mapping.width >> mapping.height;
    for (Axis &axis : mapping.axes) {
        file >> axis.factorX >> axis.factorY >> axis.offset;
    }
    return file && mapping.width > 1 && mapping.height > 1 ? mapping : linearMapping(width, height);
}

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::exit(1);
}

int openTablet()
{
    DIR *pFolder = opendir("/dev/input");
    if (!pFolder) {
        fail("/dev/input");
    }
    int found = -1;
    while (const dirent *pEntry = readdir(pFolder)) {
        const std::string name = pEntry->d_name;
        if (name.compare(0, 5, "event") != 0) {
            continue;
        }
        const int fd = open(("/dev/input/" + name).c_str(), O_RDONLY | O_CLOEXEC);
        std::array<char, 128> deviceName{};
        if (fd >= 0 && ioctl(fd, EVIOCGNAME(deviceName.size() - 1), deviceName.data()) >= 0
            && std::strcmp(deviceName.data(), TabletName) == 0) {
            found = fd;
        } else if (fd >= 0) {
            close(fd);
        }
    }
    closedir(pFolder);
    return found;
}

class Touchscreen
{
public:
    explicit Touchscreen(bool multi) : bMulti(multi), nFd(open("/dev/uinput", O_WRONLY | O_CLOEXEC))
    {
        if (nFd < 0) {
            fail("/dev/uinput");
        }
        setBit(UI_SET_EVBIT, EV_KEY);
        setBit(UI_SET_KEYBIT, BTN_TOUCH);
        setBit(UI_SET_EVBIT, EV_ABS);
        setBit(UI_SET_PROPBIT, INPUT_PROP_DIRECT);
        addAxis(ABS_X, LargestRaw);
        addAxis(ABS_Y, LargestRaw);
        if (bMulti) {
            addAxis(ABS_MT_SLOT, Slots - 1);
            addAxis(ABS_MT_TRACKING_ID, LargestTrackingId);
            addAxis(ABS_MT_POSITION_X, LargestRaw);
            addAxis(ABS_MT_POSITION_Y, LargestRaw);
        } else {
            addAxis(ABS_PRESSURE, LargestPressure);
        }
        uinput_setup setup = {};
        setup.id.bustype = BUS_VIRTUAL;
        std::strcpy(setup.name, "Emulated touchscreen");
        if (ioctl(nFd, UI_DEV_SETUP, &setup) != 0 || ioctl(nFd, UI_DEV_CREATE) != 0) {
            fail("UI_DEV_CREATE");
        }
    }
    ~Touchscreen() { close(nFd); }
    Touchscreen(const Touchscreen &) = delete;
    Touchscreen &operator=(const Touchscreen &) = delete;

    /// The finger is at a raw position, or has left the screen. As from a real controller no two
    /// positions are quite the same: the kernel tells only what has changed, and a reader that was
    /// not there before would learn of no position at all.
    void report(bool pressed, int rawX, int rawY)
    {
        if (!pressed && !bPressed) {
            return;
        }
        if (pressed) {
            nTremble = 1 - nTremble;
        }
        rawX = std::min(rawX + nTremble, LargestRaw);
        rawY = std::min(rawY + nTremble, LargestRaw);
        const bool bChanged = pressed != bPressed;
        if (bMulti) {
            send(EV_ABS, ABS_MT_SLOT, 0);
            if (bChanged) {
                nTrackingId = (nTrackingId + 1) % LargestTrackingId;
                send(EV_ABS, ABS_MT_TRACKING_ID, pressed ? nTrackingId : -1);
            }
            if (pressed) {
                send(EV_ABS, ABS_MT_POSITION_X, rawX);
                send(EV_ABS, ABS_MT_POSITION_Y, rawY);
            }
        }
        if (bChanged) {
            send(EV_KEY, BTN_TOUCH, pressed);
        }
        if (pressed) {
            send(EV_ABS, ABS_X, rawX);
            send(EV_ABS, ABS_Y, rawY);
        }
        if (!bMulti) {
            send(EV_ABS, ABS_PRESSURE, pressed ? Pressure : 0);
        }
        send(EV_SYN, SYN_REPORT, 0);
        bPressed = pressed;
    }

private:
    void setBit(unsigned long request, int bit) const
    {
        if (ioctl(nFd, request, bit) != 0) {
            fail("uinput");
        }
    }

    void addAxis(int code, int largest) const
    {
        setBit(UI_SET_ABSBIT, code);
        uinput_abs_setup axis = {};
        axis.code = static_cast<__u16>(code);
        axis.absinfo.maximum = largest;
        if (ioctl(nFd, UI_ABS_SETUP, &axis) != 0) {
            fail("UI_ABS_SETUP");
        }
    }

    void send(int type, int code, int value) const
    {
        input_event event = {};
        event.type = static_cast<__u16>(type);
        event.code = static_cast<__u16>(code);
        event.value = value;
        if (write(nFd, &event, sizeof event) != sizeof event) {
            fail("cannot report a touch");
        }
    }

    const bool bMulti;
    const int nFd;
    bool bPressed = false;
    int nTrackingId = 0;
    int nTremble = 0;
};

/// Follows the tablet's pointer for ever; its left button is the finger on the screen.
[[noreturn]] void follow(int tablet, const Mapping &mapping, Touchscreen &touchscreen)
{
    std::array<input_absinfo, 2> ranges{};
    if (ioctl(tablet, EVIOCGABS(ABS_X), &ranges[0]) != 0
        || ioctl(tablet, EVIOCGABS(ABS_Y), &ranges[1]) != 0 || ioctl(tablet, EVIOCGRAB, 1) != 0) {
        fail(TabletName);
    }
    const auto pixel = [&](int axis, int value, double size) {
        return std::round(value * (size - 1) / ranges.at(static_cast<std::size_t>(axis)).maximum);
    };
    double x = 0;
    double y = 0;
    bool bPressed = false;
    input_event event = {};
    while (read(tablet, &event, sizeof event) == sizeof event) {
        if (event.type == EV_ABS && event.code == ABS_X) {
            x = pixel(0, event.value, mapping.width);
        } else if (event.type == EV_ABS && event.code == ABS_Y) {
            y = pixel(1, event.value, mapping.height);
        } else if (event.type == EV_KEY && event.code == BTN_LEFT) {
            bPressed = event.value != 0;
        } else if (event.type == EV_SYN) {
            touchscreen.report(bPressed, mapping.axes[0].raw(x, y), mapping.axes[1].raw(x, y));
        }
    }
    fail(TabletName);
}

} // namespace

int main(int argc, char **argv)
{
    double width = 0;
    double height = 0;
    const std::string kind = argc == 3 ? argv[1] : "";
    if ((kind != "single" && kind != "multi")
        || std::sscanf(argv[2], "%lfx%lf", &width, &height) != 2 || width < 2 || height < 2) {
        std::fprintf(stderr, "usage: touchscreen single|multi WxH\n");
        return 2;
    }
    const bool bMulti = kind == "multi";
    const int tablet = openTablet();
    if (tablet < 0) {
        std::fprintf(stderr, "no %s\n", TabletName);
        return 1;
    }
    Touchscreen touchscreen(bMulti);
    follow(tablet, bMulti ? linearMapping(width, height) : loadMapping(width, height), touchscreen);
}
