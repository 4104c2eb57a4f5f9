#include "app/keyboardwatcher.h"

#include "platform/devicepath.h"
#include "platform/folderwatch.h"
#include "platform/windowserver.h"
#include "settings/inifile.h"
#include "settings/veltautils.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

constexpr auto InputFolder = QLatin1String("/dev/input");
constexpr auto KeyMapFile = QLatin1String("/etc/kbd/de.qmap");
constexpr int MaxKeyboards = 2;

} // namespace

KeyboardWatcher::KeyboardWatcher(QObject *parent)
    : QObject(parent), bKeyboardMapping(readKeyboardMapping())
{ }

KeyboardWatcher::~KeyboardWatcher() = default;

bool KeyboardWatcher::readKeyboardMapping()
{
    const IniFile settings(SettingsPath);
    if (!settings.problem().isEmpty()) {
        qWarning("%s %s", SettingsPath.data(), qPrintable(settings.problem()));
    }
    return settings.value(QLatin1String("input/kbd_mapping"), QString()).toString()
        == QLatin1String("DE")
        && QFile::exists(devicePath(KeyMapFile));
}

void KeyboardWatcher::start()
{
    const QString folder = devicePath(InputFolder);
    pInputWatch = new FolderWatch(folder, this);
    connect(pInputWatch, &FolderWatch::changed, this, &KeyboardWatcher::rescan);
    if (const WindowServer *pServer = WindowServer::instance()) {
        connect(pServer, &WindowServer::inputReleased, this, [this] {
            resting = installed;
            releaseAll();
        });
        connect(pServer, &WindowServer::inputTaken, this, [this, folder] { rescan(folder); });
    }
    releaseAll();
    rescan(folder);
}

void KeyboardWatcher::releaseAll()
{
    releaseKeyboard();
    installed.clear();
    grabbed.clear();
    pInputWatch->setPolled(false);
}

QList<KeyboardWatcher::Entry> KeyboardWatcher::entriesOf(const QString &folder)
{
    const QFileInfoList files = QDir(folder).entryInfoList(
        {QStringLiteral("keyboard*")}, QDir::Files | QDir::System, QDir::Unsorted);
    QList<Entry> entries;
    for (const QFileInfo &file : files) {
        const bool bLink = file.isSymLink();
        entries.append(
            {file.fileName(), bLink, bLink ? deviceIdentity(file.filePath()) : DeviceIdentity()});
    }
    return entries;
}

void KeyboardWatcher::rescan(const QString &folder)
{
    if (const WindowServer *pServer = WindowServer::instance();
        pServer && pServer->isInputReleased()) {
        return;
    }
    QList<Entry> entries = entriesOf(folder);
    if (entries.size() > MaxKeyboards) { // which changes nothing: what has rested goes on
        entries.removeIf([this](const Entry &entry) { return !resting.contains(entry); });
        if (entries.isEmpty()) {
            return;
        }
    }
    resting.clear();
    QList<Entry> sorted = entries; // a folder has no order of its own
    std::ranges::sort(sorted, {}, &Entry::sName);
    const auto isFree = [&folder](const QString &name) {
        return !isGrabbed(folder + QLatin1Char('/') + name);
    };
    if (sorted == installed && std::ranges::none_of(grabbed, isFree)) {
        return;
    }
    if (!installed.isEmpty()) {
        releaseKeyboard();
    }
    const bool bReported = !grabbed.isEmpty();
    grabbed.clear();
    for (const Entry &entry : entries) { // before one of them is grabbed here
        if (entry.bLink && !isFree(entry.sName)) {
            grabbed += entry.sName;
        }
    }
    for (const Entry &entry : entries) {
        if (entry.bLink && !grabbed.contains(entry.sName)) {
            setKeyboard(QFileInfo(entry.sName).baseName());
        }
    }
    if (!grabbed.isEmpty() && !bReported) {
        qWarning("Another program has grabbed %s", qPrintable(grabbed.join(u' ')));
    }
    pInputWatch->setPolled(!grabbed.isEmpty());
    installed = std::move(sorted);
}

void KeyboardWatcher::setKeyboard(const QString &deviceName) const
{
    QString specification = QStringLiteral("/dev/input/%1:grab=1").arg(deviceName);
    if (bKeyboardMapping) {
        specification += QLatin1String(":keymap=") + KeyMapFile;
    }
    WindowServer *pServer = WindowServer::instance();
    std::unique_ptr<QObject> pKeyboardHandler = WindowServer::createKeyboardHandler(specification);
    if (pServer && pKeyboardHandler) {
        pServer->setKeyboardHandler(std::move(pKeyboardHandler));
    } else {
        qWarning("MainWindow::setKeyboard: found null pointer on pKeyboardHandler and/or "
                 "pQwsServer !\n");
    }
}

void KeyboardWatcher::releaseKeyboard()
{
    if (WindowServer *pServer = WindowServer::instance()) {
        pServer->closeKeyboard();
    } else {
        qWarning("MainWindow::releaseKeyboard: found null pointer on pQwsServer !\n");
    }
}
