// panelctl plays the world around the panel on a simulated device: the PLC, the network, fingers,
// keyboards and the service technician.

#include "simulator/commands.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

namespace {

void printIndented(const char *text, const char *indent)
{
    for (const QString &line : QString::fromUtf8(text).split(u'\n', Qt::SkipEmptyParts)) {
        std::printf("%s%s\n", indent, qPrintable(line));
    }
}

void printHelp()
{
    std::printf("Usage: panelctl [--root DIR] COMMAND ...\n\n"
                "Plays the world around the operator panel on the simulated device in DIR\n"
                "(default: $PANEL_ROOT, else ./device).\n");
    for (const Command &command : commands()) {
        std::printf("\n  %s\n", command.pName);
        printIndented(command.pUsage, "      ");
        printIndented(command.pHelp, "    ");
    }
    std::printf(
        "\nExit codes: 0 done, 1 it could not be done, 2 bad usage (nothing was changed).\n");
}

ExitCode run(QStringList words)
{
    QString root = qEnvironmentVariable("PANEL_ROOT");
    if (root.isEmpty()) {
        root = QStringLiteral("device");
    }
    // Only in front of the command: what follows it is its own.
    while (!words.isEmpty() && words.first().startsWith(u'-')) {
        const QString option = words.takeFirst();
        if (option == u"--help" || option == u"-h") {
            printHelp();
            return ExitCode::Done;
        }
        if (option == u"--root" && !words.isEmpty()) {
            root = words.takeFirst();
        } else if (option.startsWith(u"--root=")) {
            root = option.section(u'=', 1);
        } else {
            return usageError(option == u"--root"
                                  ? QStringLiteral("option --root needs a value")
                                  : QStringLiteral("unknown option '%1'").arg(option));
        }
    }
    if (words.isEmpty()) {
        return usageError(QStringLiteral("COMMAND is missing"));
    }
    const QString name = words.takeFirst();
    if (words.contains(QStringLiteral("--help"))) {
        printHelp();
        return ExitCode::Done;
    }
    const auto all = commands();
    const auto command = std::find_if(all.begin(), all.end(), [&](const Command &candidate) {
        return name == QLatin1String(candidate.pName);
    });
    if (command == all.end()) {
        return usageError(QStringLiteral("unknown command '%1'").arg(name));
    }
    if (root.isEmpty()) {
        return usageError(QStringLiteral("--root '' is no folder"));
    }
    const DeviceFolder device(root);
    if (command->bNeedsDevice && !device.isDevice()) {
        return failure(QStringLiteral("%1 is no simulated device (panelctl init makes one)")
                           .arg(device.root()));
    }
    Arguments arguments(words);
    return command->run(device, arguments);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return static_cast<int>(run(QCoreApplication::arguments().mid(1)));
}
