#include "simulator/keyboardcommand.h"

#include "simulator/fifowriter.h"
#include "simulator/keytable.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <linux/input.h>
#include <unistd.h>

namespace {

constexpr int MostKeyboards = 10;

QString keyboardLink(int number)
{
    return QStringLiteral("/dev/input/keyboard%1").arg(number);
}

QString keyboardPipe(int number)
{
    return QStringLiteral("/simulator/keyboard%1").arg(number);
}

ExitCode plugKeyboard(const DeviceFolder &device, int number)
{
    if (device.exists(keyboardLink(number))) {
        return failure(QStringLiteral("keyboard%1 is plugged in already").arg(number));
    }
    // Relative, so that the device's folder can be moved.
    const QString target = QStringLiteral("../..") + keyboardPipe(number);
    if (!device.remove(keyboardPipe(number)) || !device.makeFifo(keyboardPipe(number))) {
        return ExitCode::Failed;
    }
    // QFile::link() would make it absolute.
    if (symlink(QFile::encodeName(target).constData(),
                QFile::encodeName(device.path(keyboardLink(number))).constData())
        != 0) {
        return failure(QStringLiteral("cannot make %1").arg(device.path(keyboardLink(number))));
    }
    return ExitCode::Done;
}

QByteArray inputEvent(int type, int code, int value)
{
    input_event event = {};
    event.type = static_cast<__u16>(type);
    event.code = static_cast<__u16>(code);
    event.value = value;
    return {reinterpret_cast<const char *>(&event), sizeof event};
}

bool sendKey(FifoWriter &keyboard, int code, int value)
{
    return keyboard.write(inputEvent(EV_KEY, code, value) + inputEvent(EV_SYN, SYN_REPORT, 0));
}

bool sendStroke(FifoWriter &keyboard, const KeyStroke &stroke)
{
    enum Value { Released, Pressed, Repeated };
    // The delay and the rate at which the kernel repeats a held key.
    constexpr int RepeatDelayMs = 250;
    constexpr int RepeatPeriodMs = 33;
    constexpr int TypingPauseMs = 8;

    bool ok = true;
    for (const int code : stroke.modifiers) {
        ok = ok && sendKey(keyboard, code, Pressed);
    }
    ok = ok && sendKey(keyboard, stroke.nCode, Pressed);
    const QDeadlineTimer end(stroke.hold);
    if (stroke.hold.count() > RepeatDelayMs) {
        QThread::msleep(RepeatDelayMs);
        while (ok && !end.hasExpired()) {
            ok = sendKey(keyboard, stroke.nCode, Repeated);
            QThread::msleep(RepeatPeriodMs);
        }
    } else {
        QThread::msleep(static_cast<unsigned long>(stroke.hold.count()));
    }
    ok = ok && sendKey(keyboard, stroke.nCode, Released);
    for (const int code : stroke.modifiers) {
        ok = ok && sendKey(keyboard, code, Released);
    }
    QThread::msleep(TypingPauseMs);
    return ok;
}

ExitCode typeText(const DeviceFolder &device, int number, const QList<KeyStroke> &strokes)
{
    FifoWriter keyboard;
    bool ok = keyboard.open(device.path(keyboardLink(number)));
    for (const KeyStroke &stroke : strokes) {
        ok = ok && sendStroke(keyboard, stroke);
    }
    return ok ? ExitCode::Done : failure(keyboard.errorText());
}

} // namespace

ExitCode keyboardCommand(const DeviceFolder &device, Arguments &arguments)
{
    const auto find = [&](int from, int step, bool plugged) {
        int number = from;
        while (number >= 0 && number < MostKeyboards
               && device.exists(keyboardLink(number)) != plugged) {
            number += step;
        }
        return number;
    };
    const int lowestFree = find(0, 1, false);
    // Of several keyboards the panel listens to the last.
    const int last = find(MostKeyboards - 1, -1, true);
    const auto takeKeyboard = [&](int missing) {
        return arguments.isEmpty()
            ? missing
            : arguments.takeNumber(QStringLiteral("keyboard"), 0, MostKeyboards - 1);
    };

    const QString what = arguments.take(QStringLiteral("keyboard: plug, unplug or type"));
    if (what == u"plug") {
        const int number = takeKeyboard(lowestFree);
        if (!arguments.finish()) {
            return usageError(arguments.error());
        }
        return number < MostKeyboards
            ? plugKeyboard(device, number)
            : failure(QStringLiteral("all %1 keyboards are plugged in").arg(MostKeyboards));
    }
    if (what == u"unplug") {
        const int number = takeKeyboard(last);
        if (!arguments.finish()) {
            return usageError(arguments.error());
        }
        if (number < 0 || !device.exists(keyboardLink(number))) {
            return failure(QStringLiteral("no such keyboard is plugged in"));
        }
        return done(device.remove(keyboardLink(number)) && device.remove(keyboardPipe(number)));
    }
    if (what == u"type") {
        const int number = arguments.takeNumberOption(QStringLiteral("--keyboard"),
                                                      std::max(last, 0), 0, MostKeyboards - 1);
        const QString text = arguments.take(QStringLiteral("TEXT"));
        QString wrong;
        const auto strokes = keyStrokes(text, &wrong);
        if (!strokes) {
            arguments.setError(QStringLiteral("no key for '%1'").arg(wrong));
        }
        if (!arguments.finish()) {
            return usageError(arguments.error());
        }
        return device.exists(keyboardLink(number))
            ? typeText(device, number, *strokes)
            : failure(QStringLiteral("no keyboard is plugged in"));
    }
    arguments.setError(QStringLiteral("unknown keyboard command '%1'").arg(what));
    return usageError(arguments.error());
}
