#include "platform/screenrotation.h"

#include <QFile>
#include <QGuiApplication>

#include <cstdlib>

namespace {

/// Value of the platform argument. Qt takes the option off the arguments it shows, so the
/// process's own command line is asked; the option wins over the environment, as in Qt.
QByteArray platformArgument()
{
    QByteArray value = qgetenv("QT_QPA_PLATFORM");
    QFile commandLine(QStringLiteral("/proc/self/cmdline"));
    if (commandLine.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> arguments = commandLine.readAll().split('\0');
        for (qsizetype i = 1; i + 1 < arguments.size(); ++i) {
            if (arguments[i] == "-platform" || arguments[i] == "--platform") {
                value = arguments[i + 1];
            }
        }
    }
    return value;
}

/// Degrees (90, 180, 270, -90) or quarter turns (0 to 3) as quarter turns.
int quarterTurns(int rotation)
{
    const int turns = std::abs(rotation) < QuarterTurns ? rotation : rotation / QuarterTurnDegrees;
    return (turns % QuarterTurns + QuarterTurns) % QuarterTurns;
}

} // namespace

int screenRotation()
{
    const QString platform = QGuiApplication::platformName();
    // Alternatives are separated by semicolons; the one that works is the platform's name.
    const QStringList alternatives = QString::fromLocal8Bit(platformArgument()).split(u';');
    for (const QString &alternative : alternatives) {
        const QStringList options = alternative.split(u':');
        if (options.first() != platform) {
            continue;
        }
        for (const QString &option : options.sliced(1)) {
            if (option.startsWith(QLatin1String("rotation="))) {
                return quarterTurns(option.section(u'=', 1).toInt());
            }
        }
    }
    return 0;
}

QPoint panelToScreen(QPoint position, int quarterTurns, QSize screenSize)
{
    switch (quarterTurns) {
    case 1:
        return {screenSize.width() - 1 - position.y(), position.x()};
    case 2:
        return {screenSize.width() - 1 - position.x(), screenSize.height() - 1 - position.y()};
    case 3:
        return {position.y(), screenSize.height() - 1 - position.x()};
    default:
        return position;
    }
}
