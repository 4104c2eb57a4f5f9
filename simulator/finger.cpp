#include "simulator/finger.h"

#include <QDir>
#include <QFile>
#include <QPoint>
#include <QThread>

#include <linux/input.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray touchSample(const RawPoint &raw, bool pressed)
{
    constexpr int SampleSize = 8;
    constexpr char Pressure = 100;
    QByteArray sample(SampleSize, '\0');
    sample[0] = '\xaa';
    sample[1] = pressed ? Pressure : '\0';
    sample[2] = static_cast<char>(raw.x >> 8);
    sample[3] = static_cast<char>(raw.x & 0xff);
    sample[4] = static_cast<char>(raw.y >> 8);
    sample[5] = static_cast<char>(raw.y & 0xff);
    return sample;
}

QByteArray touchEvents(const RawPoint &raw, bool pressed)
{
    constexpr int Pressure = 100;
    QByteArray events;
    const auto append = [&events](int type, int code, int value) {
        input_event event = {};
        event.type = static_cast<__u16>(type);
        event.code = static_cast<__u16>(code);
        event.value = value;
        events.append(reinterpret_cast<const char *>(&event), sizeof event);
    };
    append(EV_KEY, BTN_TOUCH, pressed ? 1 : 0);
    append(EV_ABS, ABS_X, raw.x);
    append(EV_ABS, ABS_Y, raw.y);
    append(EV_ABS, ABS_PRESSURE, pressed ? Pressure : 0);
    append(EV_SYN, SYN_REPORT, 0);
    return events;
}

} // namespace

Finger::Finger(const DeviceFolder &device)
    : sPath(device.path(QStringLiteral("/dev/input/touchscreen"))),
      mapping(TouchMapping::load(device))
{ }

bool Finger::open()
{
    if (!mapping) {
        sError = QStringLiteral("this device has no single-touch screen");
        return false;
    }
    return touchscreen.open(sPath);
}

bool Finger::touch(const QPoint &from, const QPoint &to, std::chrono::milliseconds hold)
{
    constexpr int SamplePeriodMs = 10;
    const int steps = static_cast<int>(hold.count()) / SamplePeriodMs;
    const auto report = [this](const QPoint &position, bool pressed) {
        const RawPoint raw = mapping->toRaw(position);
        return touchscreen.write(touchscreen.isEventDevice() ? touchEvents(raw, pressed)
                                                             : touchSample(raw, pressed));
    };
    bool ok = true;
    if (touchscreen.isEventDevice()) {
        // The kernel tells only what has changed, and a panel that has just started would learn
        // nothing of a finger where the last one was.
        ok = report(from + QPoint(1, 1), true);
    }
    ok = ok && report(from, true);
    for (int i = 1; ok && i <= steps; ++i) {
        QThread::msleep(SamplePeriodMs);
        ok = report(from + (to - from) * i / steps, true);
    }
    return ok && report(to, false);
}

int Finger::openings() const
{
    struct stat device = {};
    if (stat(QFile::encodeName(sPath).constData(), &device) != 0) {
        return 0;
    }
    int most = 0;
    const QDir processes(QStringLiteral("/proc"));
    for (const QString &process : processes.entryList({QStringLiteral("[0-9]*")}, QDir::Dirs)) {
        if (process.toLongLong() == getpid()) {
            continue;
        }
        // Folders of other users' processes are empty to us.
        const QDir descriptors(processes.filePath(process + QStringLiteral("/fd")));
        int count = 0;
        for (const QString &descriptor :
             descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
            struct stat opened = {};
            const QByteArray name = QFile::encodeName(descriptors.filePath(descriptor));
            if (stat(name.constData(), &opened) == 0 && opened.st_dev == device.st_dev
                && opened.st_ino == device.st_ino) {
                ++count;
            }
        }
        most = std::max(most, count);
    }
    return most;
}
