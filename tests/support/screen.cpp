#include "tests/support/screen.h"

#include "platform/tapguard.h"
#include "tests/support/deviceroot.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>
#include <private/qguiapplication_p.h>
#include <qpa/qplatformintegration.h>
#include <qpa/qplatformnativeinterface.h>
#include <qpa/qwindowsysteminterface.h>

#include <algorithm>
#include <unistd.h>

void setScreen(const QSize &size, int dpi)
{
    const auto taken = [size, dpi] {
        const QScreen *pScreen = QGuiApplication::primaryScreen();
        return pScreen->size() == size && qRound(pScreen->logicalDotsPerInchX()) == dpi;
    };
    if (taken()) {
        return;
    }
    using Setter = void (*)(const QJsonObject &, QPlatformNativeInterface *);
    auto *pNative = QGuiApplicationPrivate::platformIntegration()->nativeInterface();
    const auto setter =
        reinterpret_cast<Setter>(pNative->nativeResourceForIntegration("setConfiguration"));
    need(setter, "the offscreen platform");
    const QJsonObject screen{{"name", "panel"},
                             {"x", 0},
                             {"y", 0},
                             {"width", size.width()},
                             {"height", size.height()},
                             {"logicalDpi", dpi},
                             {"logicalBaseDpi", 96},
                             {"dpr", 1}};
    setter({{"screens", QJsonArray{screen}}}, pNative);
    processAll();
    need(taken(), "a screen of that size");
}

void queueKey(Qt::Key key)
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QWindowSystemInterface::handleKeyEvent(nullptr, type, key, Qt::NoModifier);
    }
}

void deliverKeys()
{
    QWindowSystemInterface::sendWindowSystemEvents(QEventLoop::AllEvents);
}

void processAll()
{
    for (int i = 0; i < 10; ++i) {
        QCoreApplication::processEvents();
    }
}

void waitOutDoubleTap()
{
    processAll(); // the time counts from the first picture
    QTest::qWait(int(TapGuard::Delay.count()) + 20);
}

qsizetype openDescriptors(const QString &pattern, qint64 nPid)
{
    const QDir folder(QStringLiteral("/proc/%1/fd").arg(nPid == 0 ? getpid() : nPid));
    const QFileInfoList entries = folder.entryInfoList(QDir::Files | QDir::System);
    const QRegularExpression file(pattern);
    return std::count_if(entries.cbegin(), entries.cend(), [&file](const QFileInfo &entry) {
        return entry.symLinkTarget().contains(file);
    });
}

const QList<PanelScreen> &panelScreens()
{
    static const QList<PanelScreen> screens{
        {{240, 320}, 125},  {{272, 480}, 128},   {{320, 240}, 114},  {{480, 272}, 128},
        {{480, 640}, 140},  {{480, 800}, 133},   {{600, 800}, 119},  {{640, 480}, 140},
        {{720, 1280}, 145}, {{768, 1024}, 123},  {{768, 1366}, 100}, {{800, 480}, 133},
        {{800, 600}, 119},  {{800, 1280}, 149},  {{1024, 768}, 123}, {{1024, 1280}, 96},
        {{1050, 1680}, 90}, {{1080, 1920}, 141}, {{1280, 720}, 145}, {{1280, 800}, 149},
        {{1280, 1024}, 96}, {{1366, 768}, 100},  {{1680, 1050}, 90}, {{1920, 1080}, 141}};
    return screens;
}

QList<QSize> panelScreenSizes()
{
    QList<QSize> sizes;
    for (const PanelScreen &screen : panelScreens()) {
        sizes += screen.size;
    }
    return sizes;
}
