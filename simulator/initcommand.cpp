#include "simulator/initcommand.h"

#include "simulator/firmwarestate.h"
#include "simulator/keytable.h"
#include "simulator/touchmapping.h"

#include <QDir>
#include <QFile>
#include <QSettings>

#include <algorithm>

namespace {

// Screen size and kind of touchscreen, for run.sh.
const QString DescriptionFile = QStringLiteral("/simulator/device");
const QString FontFolder = QStringLiteral("/usr/share/fonts/truetype/ttf-bitstream-vera/");

/// Everything that init makes, and all that it removes when it makes a device anew.
const QStringList &deviceFolders()
{
    static const QStringList folders{QStringLiteral("/bin"),       QStringLiteral("/dev"),
                                     QStringLiteral("/etc"),       QStringLiteral("/flash"),
                                     QStringLiteral("/proc"),      QStringLiteral("/sbin"),
                                     QStringLiteral("/simulator"), QStringLiteral("/sys"),
                                     QStringLiteral("/tmp"),       QStringLiteral("/usr")};
    return folders;
}

struct InitOptions
{
    QSize screen;
    int nDpi = 0;
    QString sTouch;
    QStringList mapping;
    QString sPointerCalibration;
    QString sPassword;
    QString sKeyboardMapping;
    QString sNetwork;
};

QSize takeScreen(Arguments &arguments)
{
    const QString text =
        arguments.takeOption(QStringLiteral("--screen"), QStringLiteral("800x480"));
    const QStringList parts = text.split(u'x');
    constexpr int Least = 16;
    constexpr int Most = 8192;
    const auto width = toNumber(parts.value(0), Least, Most);
    const auto height = toNumber(parts.value(1), Least, Most);
    if (parts.size() != 2 || !width || !height) {
        arguments.setError(QStringLiteral("--screen '%1' is no size such as 800x480").arg(text));
        return {};
    }
    return {*width, *height};
}

QStringList takeMapping(Arguments &arguments)
{
    const QString text =
        arguments.takeOption(QStringLiteral("--mapping"), TouchMapping::variants().first());
    QStringList chosen = text.split(u',');
    for (const QString &name : std::as_const(chosen)) {
        if (!TouchMapping::variants().contains(name)) {
            arguments.setError(QStringLiteral("--mapping '%1' is none of %2")
                                   .arg(name, TouchMapping::variants().join(QStringLiteral(", "))));
        }
    }
    return chosen;
}

InitOptions takeInitOptions(Arguments &arguments)
{
    InitOptions options;
    options.screen = takeScreen(arguments);
    options.nDpi = arguments.takeNumberOption(QStringLiteral("--dpi"), 96, 1, 1000);
    options.sTouch = arguments.takeChoice(
        QStringLiteral("--touch"),
        {QStringLiteral("single"), QStringLiteral("multi"), QStringLiteral("none")});
    options.mapping = takeMapping(arguments);
    options.sPointerCalibration =
        arguments.takeChoice(QStringLiteral("--pointercal"),
                             {QStringLiteral("good"), QStringLiteral("none"),
                              QStringLiteral("wrong"), QStringLiteral("broken")});
    options.sPassword = arguments.takeOption(QStringLiteral("--password"));
    options.sKeyboardMapping = arguments.takeOption(QStringLiteral("--kbd-mapping"));
    options.sNetwork = arguments.takeChoice(QStringLiteral("--net"),
                                            {QStringLiteral("static"), QStringLiteral("dhcp")});
    return options;
}

QByteArray settingsFile(const InitOptions &options)
{
    QByteArray text;
    if (!options.sPassword.isEmpty()) {
        text += "[options]\nconfig_passwd=" + options.sPassword.toUtf8()
            + "\nconfig_protection_enabled=1\n\n";
    }
    text += "[network]\neth0.mode=" + options.sNetwork.toUtf8()
        + "\neth0.ip=192.168.0.20\neth0.netmask=255.255.255.0\n"
          "default_gateway=192.168.0.1\ndnsserver1=192.168.0.1\ndnsserver2=0.0.0.0\n";
    if (!options.sKeyboardMapping.isEmpty()) {
        text += "\n[input]\nkbd_mapping=" + options.sKeyboardMapping.toUtf8() + '\n';
    }
    return text;
}

/// The touchscreen with its controller's mapping, and the calibration that the factory left.
bool makeTouchscreen(const DeviceFolder &device, const InitOptions &options)
{
    const QString typeFile = QStringLiteral("/proc/device-tree/qrd-specific/qrd_touch_type");
    if (options.sTouch == u"none") {
        return true;
    }
    // A device-tree string ends with a NUL.
    if (!device.write(typeFile, options.sTouch.toUtf8() + '\0')
        || !device.makeFifo(QStringLiteral("/dev/input/touchscreen"))) {
        return false;
    }
    if (options.sTouch == u"multi") {
        return true;
    }
    const TouchMapping mapping = TouchMapping::make(options.mapping, options.screen);
    QByteArray calibration = mapping.pointerCalibration();
    if (options.sPointerCalibration == u"wrong") {
        calibration = "65536 0 0 0 65536 0 65536\n";
    } else if (options.sPointerCalibration == u"broken") {
        calibration = "65536 0 0 0 65536 0 0\n"; // a divisor of 0
    }
    return mapping.save(device)
        && device.write(QStringLiteral("/etc/ts.conf"),
                        "module_raw waveshare len=8\nmodule linear\n")
        && (options.sPointerCalibration == u"none"
            || device.write(QStringLiteral("/etc/pointercal"), calibration));
}

/// Takes the network from etc/settings.ini into the firmware library's state.
bool applyNetworkSettings(const DeviceFolder &device)
{
    const QSettings settings(device.path(QStringLiteral("/etc/settings.ini")),
                             QSettings::IniFormat);
    const auto value = [&](const QString &key) {
        return settings.value(QStringLiteral("network/") + key).toString();
    };
    FirmwareState state(device);
    for (const QString &key :
         {QStringLiteral("eth0.ip"), QStringLiteral("eth0.netmask"), QStringLiteral("gateway"),
          QStringLiteral("dns1"), QStringLiteral("dns2")}) {
        state.remove(key);
    }
    const QString mode =
        settings.value(QStringLiteral("network/eth0.mode"), QStringLiteral("static"))
            .toString()
            .toLower();
    state.set(QStringLiteral("eth0.mode"), mode);
    if (mode == u"static") {
        const std::pair<QString, QString> keys[] = {
            {QStringLiteral("eth0.ip"), QStringLiteral("eth0.ip")},
            {QStringLiteral("eth0.netmask"), QStringLiteral("eth0.netmask")},
            {QStringLiteral("default_gateway"), QStringLiteral("gateway")},
            {QStringLiteral("dnsserver1"), QStringLiteral("dns1")},
            {QStringLiteral("dnsserver2"), QStringLiteral("dns2")}};
        for (const auto &[key, stateKey] : keys) {
            if (!value(key).isEmpty()) {
                state.set(stateKey, value(key));
            }
        }
    }
    return state.save();
}

/// True on the emulated device, which is no folder but all of a machine.
bool isWholeMachine(const DeviceFolder &device)
{
    return QDir(device.root()).isRoot();
}

bool makeDevice(const DeviceFolder &device, const InitOptions &options)
{
    for (const QString &folder : deviceFolders()) {
        QDir(device.path(folder)).removeRecursively();
    }
    for (const char *pFolder : {"/dev/input", "/tmp/.system", "/flash/local", "/simulator"}) {
        if (!device.makeFolder(QLatin1String(pFolder))) {
            return false;
        }
    }
    for (const char *pStandIn : {"/bin/syscfg", "/bin/mount", "/sbin/reboot"}) {
        QFile file(QStringLiteral(":/standins") + QLatin1String(pStandIn));
        if (!file.open(QIODevice::ReadOnly)
            || !device.writeExecutable(QLatin1String(pStandIn), file.readAll())) {
            return false;
        }
    }
    for (const char *pFont : {"Vera.ttf", "VeraBd.ttf"}) {
        if (!device.copy(FontFolder + QLatin1String(pFont),
                         QStringLiteral("/usr/lib/fonts/") + QLatin1String(pFont))) {
            return false;
        }
    }
    const QByteArray dpi = QByteArray::number(options.nDpi) + '\0';
    FirmwareState state(device);
    state.set(QStringLiteral("link"), QStringLiteral("yes"));
    state.set(QStringLiteral("state"), QStringLiteral("2"));
    state.set(QStringLiteral("app.0"), QStringLiteral("Demo application"));
    const QString description = QStringLiteral("%1x%2 %3\n")
                                    .arg(options.screen.width())
                                    .arg(options.screen.height())
                                    .arg(options.sTouch);
    return state.save() && device.write(DescriptionFile, description.toLatin1())
        && device.write(QStringLiteral("/etc/settings.ini"), settingsFile(options))
        && device.write(QStringLiteral("/etc/fwinfo.ini"),
                        "[firmware]\nversion=3.0.4\n\n[codesys]\nversion=3.5.5.40\n")
        && device.write(QStringLiteral("/etc/kbd/de.qmap"), germanKeyMap())
        && device.write(QStringLiteral("/sys/class/net/eth0/address"), "02:fc:00:00:00:01\n")
        && device.write(QStringLiteral("/proc/device-tree/display@di0/qrd_dpi_x_resolution"), dpi)
        && device.write(QStringLiteral("/proc/device-tree/display@di0/qrd_dpi_y_resolution"), dpi)
        && makeTouchscreen(device, options) && applyNetworkSettings(device);
}

} // namespace

ExitCode initCommand(const DeviceFolder &defaultDevice, Arguments &arguments)
{
    const InitOptions options = takeInitOptions(arguments);
    const QString folder =
        arguments.isEmpty() ? defaultDevice.root() : arguments.take(QStringLiteral("DIR"));
    if (folder.isEmpty() || folder.startsWith(u"--")) {
        arguments.setError(QStringLiteral("DIR '%1' is no folder").arg(folder));
    }
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    const DeviceFolder device(folder);
    if (isWholeMachine(device)) {
        return failure(QStringLiteral("/ is no folder for a simulated device"));
    }
    const QFileInfo info(device.root());
    if (info.exists() && !info.isDir()) {
        return failure(QStringLiteral("%1 is no folder").arg(device.root()));
    }
    if (info.exists() && !device.isDevice()
        && !QDir(device.root())
                .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        return failure(
            QStringLiteral("%1 is neither empty nor a simulated device").arg(device.root()));
    }
    if (!QFileInfo::exists(FontFolder + QStringLiteral("Vera.ttf"))) {
        return failure(
            QStringLiteral("%1Vera.ttf is missing: install ttf-bitstream-vera").arg(FontFolder));
    }
    return makeDevice(device, options) ? ExitCode::Done : ExitCode::Failed;
}

ExitCode bootCommand(const DeviceFolder &device, Arguments &arguments)
{
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    if (!isWholeMachine(device)) { // whose own start empties tmp
        QDir(device.path(QStringLiteral("/tmp"))).removeRecursively();
    }
    return device.makeFolder(QStringLiteral("/tmp/.system")) && applyNetworkSettings(device)
        ? ExitCode::Done
        : ExitCode::Failed;
}
