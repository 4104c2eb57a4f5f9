#include "simulator/commands.h"

#include "platform/requestfiles.h"
#include "simulator/calibratecommand.h"
#include "simulator/finger.h"
#include "simulator/firmwarestate.h"
#include "simulator/initcommand.h"
#include "simulator/keyboardcommand.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QPoint>
#include <QRegularExpression>
#include <QSettings>
#include <QThread>

#include <cstdio>
#include <limits>

namespace {

constexpr int LongestHoldMs = 600000;

// ---- plc ----------------------------------------------------------------------------------------

ExitCode plcCommand(const DeviceFolder &device, Arguments &arguments)
{
    const QString startResult = QStringLiteral("result.rctrl_start_all_applications");
    const QString link = QStringLiteral("link");
    const QString plcState = QStringLiteral("state");

    const QString what =
        arguments.take(QStringLiteral("plc: start, stop, state, app, no-link, ..."));
    FirmwareState state(device);
    if (what == u"start") {
        state.set(plcState, QStringLiteral("1"));
    } else if (what == u"stop") {
        state.set(plcState, QStringLiteral("2"));
    } else if (what == u"state") {
        state.set(plcState,
                  QString::number(arguments.takeNumber(QStringLiteral("state"),
                                                       std::numeric_limits<int>::min(),
                                                       std::numeric_limits<int>::max())));
    } else if (what == u"app") {
        constexpr qsizetype MostApplications = 255;
        if (arguments.size() > MostApplications) {
            arguments.setError(QStringLiteral("more than %1 names").arg(MostApplications));
        }
        state.removeAll(QStringLiteral("app."));
        state.remove(QStringLiteral("appCount"));
        const QStringList names = arguments.takeRest();
        for (qsizetype i = 0; i < names.size(); ++i) {
            state.set(QStringLiteral("app.%1").arg(i), names.at(i));
        }
    } else if (what == u"no-link") {
        state.set(link, QStringLiteral("no"));
    } else if (what == u"link") {
        state.set(link, QStringLiteral("yes"));
    } else if (what == u"fail-start") {
        state.set(startResult, QStringLiteral("-1"));
    } else if (what == u"start-ok") {
        state.remove(startResult);
    } else if (what == u"delay") {
        state.set(QStringLiteral("delayMs"),
                  QString::number(arguments.takeNumber(QStringLiteral("delay"), 0, 60000)));
    } else {
        arguments.setError(QStringLiteral("unknown plc command '%1'").arg(what));
    }
    return arguments.finish() ? done(state.save()) : usageError(arguments.error());
}

ExitCode firmwareCommand(const DeviceFolder &device, Arguments &arguments)
{
    FirmwareState state(device);
    if (arguments.isEmpty()) {
        arguments.setError(QStringLiteral("KEY=VALUE is missing"));
    }
    for (const QString &entry : arguments.takeRest()) {
        const qsizetype equals = entry.indexOf(u'=');
        if (equals <= 0) {
            arguments.setError(QStringLiteral("'%1' is no KEY=VALUE").arg(entry));
        } else if (equals == entry.size() - 1) {
            state.remove(entry.left(equals));
        } else {
            state.set(entry.left(equals), entry.mid(equals + 1));
        }
    }
    return arguments.finish() ? done(state.save()) : usageError(arguments.error());
}

// ---- net ----------------------------------------------------------------------------------------

QString takeAddress(Arguments &arguments, const QString &what)
{
    static const QRegularExpression dotted(
        QStringLiteral("^((25[0-5]|2[0-4]\\d|1?\\d?\\d)(\\.|$)){4}(?<!\\.)$"));
    QString text = arguments.take(what);
    if (!dotted.match(text).hasMatch()) {
        arguments.setError(QStringLiteral("%1 '%2' is no IPv4 address").arg(what, text));
    }
    return text;
}

/// Sets the interface's mode where the device keeps it: the live system and the settings file.
bool saveNetworkMode(const DeviceFolder &device, const QString &interface, const QString &mode,
                     const QString &address)
{
    if (interface != u"eth0") {
        return true; // the settings file knows eth0 alone
    }
    QSettings settings(device.path(QStringLiteral("/etc/settings.ini")), QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("network"));
    settings.setValue(QStringLiteral("eth0.mode"), mode);
    if (!address.isEmpty()) {
        settings.setValue(QStringLiteral("eth0.ip"), address);
    }
    settings.sync();
    if (settings.status() != QSettings::NoError) {
        failure(QStringLiteral("cannot write %1").arg(settings.fileName()));
        return false;
    }
    return true;
}

ExitCode netCommand(const DeviceFolder &device, Arguments &arguments)
{
    const QString interface = arguments.takeChoice(
        QStringLiteral("--interface"),
        {QStringLiteral("eth0"), QStringLiteral("eth1"), QStringLiteral("eth2")});
    const QString what = arguments.take(QStringLiteral("net: static, dhcp, lease or no-lease"));
    const QString mode = interface + QStringLiteral(".mode");
    const QString ip = interface + QStringLiteral(".ip");
    const QString netmask = interface + QStringLiteral(".netmask");
    const QString present = interface + QStringLiteral(".present");
    QString address;

    FirmwareState state(device);
    const auto loseLease = [&] {
        for (const QString &key : {ip, netmask, QStringLiteral("gateway"), QStringLiteral("dns1"),
                                   QStringLiteral("dns2")}) {
            state.remove(key);
        }
    };
    if (what == u"static") {
        state.set(mode, what);
        if (!arguments.isEmpty()) {
            address = takeAddress(arguments, QStringLiteral("IP"));
            state.set(ip, address);
            state.set(netmask, QStringLiteral("255.255.255.0"));
        }
    } else if (what == u"dhcp") {
        state.set(mode, what);
        loseLease();
    } else if (what == u"lease") {
        const QString leased = takeAddress(arguments, QStringLiteral("IP"));
        const QString router = leased.section(u'.', 0, 2) + QStringLiteral(".1");
        state.set(ip, leased);
        state.set(netmask, QStringLiteral("255.255.255.0"));
        for (const char *pKey : {"gateway", "dns1", "dns2"}) {
            state.set(QLatin1String(pKey), router);
        }
    } else if (what == u"no-lease") {
        loseLease();
    } else if (what == u"absent" && interface != u"eth0") {
        state.remove(mode);
    } else {
        arguments.setError(QStringLiteral("unknown net command '%1'").arg(what));
    }
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    if (interface != u"eth0") {
        state.set(present, what == u"absent" ? QStringLiteral("no") : QStringLiteral("yes"));
    }
    const bool isMode = what == u"static" || what == u"dhcp";
    return done((!isMode || saveNetworkMode(device, interface, what, address)) && state.save());
}

// ---- touch --------------------------------------------------------------------------------------

ExitCode touchCommand(const DeviceFolder &device, Arguments &arguments)
{
    constexpr int DefaultHoldMs = 120;

    const std::chrono::milliseconds hold{
        arguments.takeNumberOption(QStringLiteral("--ms"), DefaultHoldMs, 0, LongestHoldMs)};
    Finger finger(device);
    const QSize screen = finger.hasScreen() ? finger.screenSize() : QSize(8192, 8192);
    const auto takePoint = [&] {
        const int x = arguments.takeNumber(QStringLiteral("X"), 0, screen.width() - 1);
        const int y = arguments.takeNumber(QStringLiteral("Y"), 0, screen.height() - 1);
        return QPoint(x, y);
    };
    const QPoint from = takePoint();
    const QPoint to = arguments.isEmpty() ? from : takePoint();
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    return finger.open() && finger.touch(from, to, hold) ? ExitCode::Done
                                                         : failure(finger.errorText());
}

ExitCode touchscreenCommand(const DeviceFolder &device, Arguments &arguments)
{
    const QString node = QStringLiteral("/dev/input/touchscreen");
    const QString drawer = QStringLiteral("/simulator/touchscreen");
    const QString what = arguments.take(QStringLiteral("touchscreen: plug or unplug"));
    if (what != u"plug" && what != u"unplug") {
        arguments.setError(QStringLiteral("unknown touchscreen command '%1'").arg(what));
    }
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    const bool bPlug = what == u"plug";
    const QString &from = bPlug ? drawer : node;
    const QString &to = bPlug ? node : drawer;
    if (device.exists(to) || !device.exists(from)) {
        return failure(QStringLiteral("there is no touchscreen to %1").arg(what));
    }
    return QFile::rename(device.path(from), device.path(to))
        ? ExitCode::Done
        : failure(QStringLiteral("cannot make %1").arg(device.path(to)));
}

// ---- files and commands of the device -----------------------------------------------------------

ExitCode screenshotCommand(const DeviceFolder &device, Arguments &arguments)
{
    const QString request = ScreenshotRequestFile;
    const QString picture = QStringLiteral("/tmp/screenshot.png");

    const int waitSeconds = arguments.takeNumberOption(QStringLiteral("--wait"), 10, 1, 600);
    const QString target = arguments.take(QStringLiteral("FILE"));
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    if (!device.remove(picture) || !device.write(request, QByteArray())) {
        return ExitCode::Failed;
    }
    const QDeadlineTimer deadline(std::chrono::seconds{waitSeconds});
    while (device.exists(request)) {
        if (deadline.hasExpired()) {
            device.remove(request);
            return failure(QStringLiteral("no screenshot within %1 s: is the panel running?")
                               .arg(waitSeconds));
        }
        QThread::msleep(50);
    }
    // The panel removes the request last.
    QFile::remove(target);
    return QFile::copy(device.path(picture), target)
        ? ExitCode::Done
        : failure(QStringLiteral("cannot copy the screenshot to %1").arg(target));
}

ExitCode logCommand(const DeviceFolder &device, Arguments &arguments)
{
    const QString log = QStringLiteral("/simulator/log");
    const bool clear = arguments.takeFlag(QStringLiteral("--clear"));
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    if (clear) {
        return done(device.remove(log));
    }
    QFile file(device.path(log));
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray text = file.readAll();
        std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
    }
    return ExitCode::Done;
}

ExitCode syscfgCommand(const DeviceFolder &device, Arguments &arguments)
{
    const QString program = QStringLiteral("/bin/syscfg");
    const QString what = arguments.take(QStringLiteral("syscfg: ok, fail, crash, hang or missing"));
    QByteArray mode = what.toLatin1();
    if (what == u"fail") {
        mode += ' ' + QByteArray::number(arguments.takeNumber(QStringLiteral("result"), 1, 255));
    } else if (what == u"hang") {
        mode += ' ' + QByteArray::number(arguments.takeNumber(QStringLiteral("seconds"), 1, 600));
    } else if (what != u"ok" && what != u"crash" && what != u"missing") {
        arguments.setError(QStringLiteral("unknown syscfg command '%1'").arg(what));
    }
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    if (what == u"missing") {
        return done(device.remove(program));
    }
    QFile file(QStringLiteral(":/standins/bin/syscfg"));
    return done(file.open(QIODevice::ReadOnly) && device.writeExecutable(program, file.readAll())
                && device.write(QStringLiteral("/simulator/syscfg.mode"), mode + '\n'));
}

ExitCode writeRequest(const DeviceFolder &device, Arguments &arguments, QLatin1String request)
{
    return arguments.finish() ? done(device.write(request, QByteArray()))
                              : usageError(arguments.error());
}

ExitCode calibrationRequestCommand(const DeviceFolder &device, Arguments &arguments)
{
    return writeRequest(device, arguments, CalibrationRequestFile);
}

ExitCode calibrationMessageCommand(const DeviceFolder &device, Arguments &arguments)
{
    return writeRequest(device, arguments, CalMessageFile);
}

constexpr Command Commands[] = {
    {"init",
     "[DIR] [--screen WxH] [--dpi N] [--touch single|multi|none]\n"
     "[--mapping NAME[,NAME]...] [--pointercal good|none|wrong|broken]\n"
     "[--password TEXT] [--kbd-mapping DE] [--net static|dhcp]",
     "Makes a simulated device in the folder DIR, or makes it anew.\n"
     "Mappings of the touchscreen: skewed, plain, coarse, swapped, mirror-x, mirror-y.",
     false, initCommand},
    {"boot", "", "Power-on: empties tmp and sets the network up as etc/settings.ini says.", true,
     bootCommand},
    {"plc",
     "start | stop | state N | app [NAME]... | link | no-link\n"
     "fail-start | start-ok | delay MS",
     "Sets the PLC runtime's state, its applications, its link, what a start request\n"
     "does and how long every call of the firmware library takes.",
     true, plcCommand},
    {"net", "static [IP] | dhcp | lease IP | no-lease | absent [--interface eth0|eth1|eth2]",
     "Sets an interface's mode; gives a DHCP interface an address or takes it away.", true,
     netCommand},
    {"keyboard", "plug [N] | unplug [N] | type [--keyboard N] TEXT",
     "Plugs keyboards in and out and types on the last. TEXT is for a US layout; keys are\n"
     "<Return> <Tab> <Left> <Backspace> <F1> <Shift+Tab> ..., <Left:800> holds one for 800 ms.",
     true, keyboardCommand},
    {"touch", "X Y [X2 Y2] [--ms N]",
     "Presses the screen at a pixel, holds (and drags) for N ms (default 120), releases.", true,
     touchCommand},
    {"touchscreen", "plug | unplug",
     "Plugs the touchscreen in and out. The panel notices by itself.", true, touchscreenCommand},
    {"screenshot", "FILE [--wait SECONDS]",
     "Has the panel take a screenshot and copies it to FILE.", true, screenshotCommand},
    {"log", "[--clear]", "Prints what the panel asked of syscfg, reboot and mount.", true,
     logCommand},
    {"syscfg", "ok | fail N | crash | hang SECONDS | missing",
     "Says what the device's configuration tool does when it is called.", true, syscfgCommand},
    {"calibration-request", "", "Asks the panel for a touchscreen calibration.", true,
     calibrationRequestCommand},
    {"calibrate",
     "[--start] [--accept|--no-accept] [--exit] [--noise PX] [--seed N]\n"
     "[--wait SECONDS] [--ms N] [--pause N]",
     "Plays the operator of one touchscreen calibration: asks the panel for it, waits for the run\n"
     "(--start: presses Start Calibration), touches the five crosses, each for N ms (default "
     "120)\n"
     "after a pause (default 800 ms), and presses Accept Calibration, then with --exit Exit "
     "Calibration. With --noise the finger\n"
     "misses each cross by a Gaussian error of PX pixels on each axis.",
     true, calibrateCommand},
    {"cal-message", "", "Leaves the message that the calibration at start timed out.", true,
     calibrationMessageCommand},
    {"firmware", "KEY=[VALUE]...",
     "Sets (or removes) keys of the firmware library's state, such as\n"
     "result.sysif_GetInterfaceIp=-1.",
     true, firmwareCommand},
};

} // namespace

std::span<const Command> commands()
{
    return Commands;
}
