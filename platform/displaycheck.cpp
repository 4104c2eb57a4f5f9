#include "platform/displaycheck.h"

#include "platform/servicenotifier.h"

#include <QGuiApplication>

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace {

DisplayCheck *pCheck = nullptr;

void report(const QString &reason)
{
    const QString line = QStringLiteral("No display, the panel cannot start: %1").arg(reason);
    std::fprintf(stderr, "%s\n", qPrintable(line));
    ServiceNotifier::setStatus(line);
}

} // namespace

DisplayCheck::DisplayCheck(std::function<void()> clearUp)
    : clearUpBeforeEnd(std::move(clearUp)), previous(qInstallMessageHandler(handleMessage))
{
    pCheck = this;
}

DisplayCheck::~DisplayCheck()
{
    pCheck = nullptr;
    qInstallMessageHandler(previous);
}

void DisplayCheck::handleMessage(QtMsgType type, const QMessageLogContext &context,
                                 const QString &text)
{
    if (type == QtFatalMsg) {
        report(text.simplified());
        pCheck->clearUpBeforeEnd();
        _exit(ExitCode);
    }
    pCheck->previous(type, context, text);
}

bool DisplayCheck::hasScreen()
{
    if (QGuiApplication::primaryScreen()) {
        return true;
    }
    const QString platform = QGuiApplication::platformName();
    QString reason = QStringLiteral("platform \"%1\" has no screen").arg(platform);
    if (platform == QLatin1String("linuxfb")) {
        reason += QLatin1String(", a framebuffer such as /dev/fb0 is missing or cannot be used");
    }
    report(reason);
    return false;
}
