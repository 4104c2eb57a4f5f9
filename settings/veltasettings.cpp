#include "settings/veltasettings.h"

#include "infobox/veltainfobox.h"
#include "platform/devicepath.h"
#include "platform/firmware.h"
#include "platform/pendinginput.h"
#include "platform/regularfile.h"
#include "settings/errorcatalogue.h"
#include "wizard/ip4validator.h"

#include <QCoreApplication>
#include <QDebug>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace {

constexpr auto OptionsGroup = QLatin1String("options");
constexpr auto PasswordKey = QLatin1String("config_passwd");
constexpr auto ProtectionKey = QLatin1String("config_protection_enabled");
constexpr auto NetworkGroup = QLatin1String("network");
constexpr int DhcpInterface = 0; // the one that is configured here
constexpr auto ModeKey = QLatin1String("eth0.mode");

// The addresses in the order in which they are read and written.
struct AddressKey
{
    IpEntryIndex index;
    QLatin1String sKey;
    const char *pLabel;
    QLatin1String sDefault;
    bool bZeroFirstOctetAllowed; // NoAddress is then a value
    IP4Validator::Mode validateMode;
};

constexpr AddressKey AddressKeys[] = {
    {AddressEntry, QLatin1String("eth0.ip"), QT_TRANSLATE_NOOP("QObject", "Address"), NoAddress,
     false, IP4Validator::Address},
    {NetmaskEntry, QLatin1String("eth0.netmask"), QT_TRANSLATE_NOOP("QObject", "Netmask"),
     QLatin1String("255.255.255.0"), false, IP4Validator::Netmask},
    {GatewayEntry, QLatin1String("default_gateway"), QT_TRANSLATE_NOOP("QObject", "Gateway"),
     NoAddress, true, IP4Validator::Address},
    {Dns1Entry, QLatin1String("dnsserver1"), QT_TRANSLATE_NOOP("QObject", "DNS1"), NoAddress, true,
     IP4Validator::Address},
    {Dns2Entry, QLatin1String("dnsserver2"), QT_TRANSLATE_NOOP("QObject", "DNS2"), NoAddress, true,
     IP4Validator::Address},
};

bool isNameServer(int index)
{
    return index == Dns1Entry || index == Dns2Entry;
}

constexpr qsizetype LongestValue = 1024; // characters; no text of ours is longer

// The ini reader makes a list of a value with unquoted commas; to us it is still one text.
QString textValue(const QSettings &settings, QLatin1String key, const QString &defaultValue = {})
{
    const QVariant value = settings.value(key, defaultValue);
    const QString text = value.typeId() == QMetaType::QStringList
        ? value.toStringList().join(QLatin1Char(','))
        : value.toString();
    return text.left(LongestValue);
}

// One live value of the DHCP interface.
struct LiveValue
{
    IpEntryIndex index;
    std::optional<QString> (*ask)();
    const char *pComplaint;
};

constexpr LiveValue LiveValues[] = {
    {AddressEntry, [] { return Firmware::interfaceAddress(DhcpInterface); },
     "Error while getting IP address"},
    {NetmaskEntry, [] { return Firmware::interfaceNetmask(DhcpInterface); },
     "Error while getting Netmask"},
    {Dns1Entry, [] { return Firmware::nameServer(0); }, "Error while getting nameserver 1"},
    {Dns2Entry, [] { return Firmware::nameServer(1); }, "Error while getting nameserver 2"},
    {GatewayEntry, Firmware::defaultGateway, "Error while getting default gateway"},
};

} // namespace

const QString &networkModeName(quint32 netMode)
{
    static const QString names[] = {
        QString::fromLatin1(QT_TRANSLATE_NOOP("NetOpModeSettingsPage", "Static")),
        QString::fromLatin1(QT_TRANSLATE_NOOP("NetOpModeSettingsPage", "DHCP"))};
    return names[netMode == StaticMode ? 0 : 1];
}

VeltaSettings::VeltaSettings(const QString &settingsPath, const QString &newSettingsPath,
                             QSettings::Format format)
    : pSettings(std::make_unique<IniFile>(settingsPath, format)),
      pNewSettings(std::make_unique<IniFile>(FileContent(), format)),
      pValidator(std::make_unique<IP4Validator>()), sSettingsPath(settingsPath),
      sNewSettingsPath(newSettingsPath)
{
    bPageEnabled.fill(true);
    for (int i = 0; i < ScreenClassCount; ++i) {
        const QSize size = screenSize(i);
        working.nScreenWidth[i] = snapshot.nScreenWidth[i] = quint16(size.width());
        working.nScreenHeight[i] = snapshot.nScreenHeight[i] = quint16(size.height());
    }
    for (const AddressKey &row : AddressKeys) {
        defaults[row.index] = row.sDefault;
    }
    working.pUtils = &utils;
}

VeltaSettings::~VeltaSettings() = default;

int VeltaSettings::init()
{
    if (const int nResult = checkSettingsFile(); nResult != 0) {
        return nResult;
    }
    loadSettings();

    SettingsRecord loaded = working;
    loaded.pUtils = nullptr;
    for (IpEntry &entry : loaded.ipEntries) {
        // The flags say that a value is still to be saved: the snapshot has nothing to save.
        entry.bDefaulted = entry.bDhcpDefaulted = false;
    }
    snapshot = loaded;
    return 0;
}

int VeltaSettings::checkSettingsFile() const
{
    const IniFile::State state = pSettings->state();
    if (state != IniFile::Damaged && state != IniFile::Unreadable) {
        return 0;
    }
    qWarning("%s %s", qPrintable(sSettingsPath), qPrintable(pSettings->problem()));
    const int nCode = state == IniFile::Damaged ? ERR_INI_FORMAT : ERR_INI_ACCESS;
    const VeltaInfoBox box(qint16(nCode), 0, nullptr, true, true);
    return state == IniFile::Damaged ? 0 : nCode;
}

int VeltaSettings::loadSettings()
{
    removeStaleNewSettings();
    classifyScreen();

    pSettings->beginGroup(OptionsGroup);
    readOptions();
    pSettings->endGroup();

    pSettings->beginGroup(NetworkGroup);
    readNetwork();
    pSettings->endGroup();
    return 0;
}

// What an earlier pass left behind must not be taken for this one's.
void VeltaSettings::removeStaleNewSettings()
{
    const QString path = devicePath(sNewSettingsPath);
    const bool bWritable = isWritableName(path) || errno == ENOENT;
    if (!bWritable || !removeName(path)) {
        const auto nCode = bWritable ? ERR_FILE_ERASE : ERR_FILE_NOT_WRITABLE;
        const VeltaInfoBox box(nCode, sNewSettingsPath, 0, nullptr, true, true);
    }
    // Of a panel program that still wrote through QSettings.
    removeName(path + QLatin1String(".lock"));
}

void VeltaSettings::classifyScreen()
{
    const QSize screen = QGuiApplication::primaryScreen()->geometry().size();
    const ScreenClass result =
        screenClass(screen.width(), screen.height(), UnlistedHeightAt800::As800x480);
    working.nResolutionIndex = result.nIndex;
    if (result.isFixedWidth()) {
        working.bFixedWidth = true;
        working.nFixedWidth = result.nFixedWidth;
    }
    working.bLargeScreen = screen.width() > 1920;
}

void VeltaSettings::readOptions()
{
    working.bUnlocked = false;
    bool bProtected = pSettings->contains(PasswordKey) || pSettings->contains(ProtectionKey);
    if (bProtected) {
        working.configPassword = textValue(*pSettings, PasswordKey);
        const QString protection = textValue(*pSettings, ProtectionKey, QStringLiteral("1"));
        bProtected = !working.configPassword.isEmpty() && protection != QLatin1String("0");
    }
    if (!bProtected) {
        bPageEnabled[ProtectionPageId] = false;
        working.bUnlocked = true;
    }
}

void VeltaSettings::readNetwork()
{
    for (const AddressKey &row : AddressKeys) {
        if (!isNameServer(row.index) || bPageEnabled[DnsPageId]) {
            working.ipEntries[row.index].label = QCoreApplication::translate("QObject", row.pLabel);
        }
    }
    const QString mode = textValue(*pSettings, ModeKey, QStringLiteral("static")).toLower();
    if (mode == QLatin1String("static")) {
        working.nNetMode = StaticMode;
        readStoredValues();
        for (IpEntry &entry : working.ipEntries) {
            entry.dhcpValue = NoAddress;
        }
        checkStaticValues();
    } else {
        working.nNetMode = DhcpMode;
        readDhcpValues();
        readStoredValues();
    }
}

void VeltaSettings::readDhcpValues()
{
    for (const LiveValue &row : LiveValues) {
        if (const auto value = row.ask()) {
            working.ipEntries[row.index].dhcpValue = *value;
        } else {
            qDebug("%s", row.pComplaint);
        }
    }
}

void VeltaSettings::readStoredValues()
{
    for (const AddressKey &row : AddressKeys) {
        working.ipEntries[row.index].value = textValue(*pSettings, row.sKey, defaults[row.index]);
    }
}

void VeltaSettings::checkStaticValues()
{
    for (const AddressKey &row : AddressKeys) {
        IpEntry &entry = working.ipEntries[row.index];
        if (entry.value.isEmpty()) {
            continue;
        }
        pValidator->setZeroFirstOctetAllowed(row.bZeroFirstOctetAllowed);
        int nMode = row.validateMode;
        switch (pValidator->validate(entry.value, nMode)) {
        case QValidator::Acceptable:
            break;
        case QValidator::Intermediate:
            pValidator->fixup(entry.value);
            break;
        case QValidator::Invalid:
            entry.value = defaults[row.index];
            entry.bDefaulted = true;
            break;
        }
        pValidator->setZeroFirstOctetAllowed(false);
    }
}

bool VeltaSettings::entryChanged(int index) const
{
    const IpEntry &now = working.ipEntries[index];
    const IpEntry &before = snapshot.ipEntries[index];
    if (working.nNetMode == StaticMode) {
        return now.value != before.value || now.bDefaulted;
    }
    // In DHCP mode the name servers are the only addresses that the operator can change.
    if (isNameServer(index)) {
        return now.value != before.value;
    }
    return now.dhcpValue != before.dhcpValue || now.bDhcpDefaulted;
}

bool VeltaSettings::detectChanges()
{
    bool bChanged = working.nNetMode != snapshot.nNetMode;
    for (int i = 0; i < IpEntryCount && !bChanged; ++i) {
        bChanged = entryChanged(i);
    }
    working.bDataChanged = bChanged;
    return bChanged;
}

SaveResult VeltaSettings::save(bool apply)
{
    if (!detectChanges()) {
        return {SaveResult::NothingToDo};
    }
    qDebug("Data changed !!!");
    const QList<IniEntry> entries = changedEntries();
    if (entries.isEmpty()) { // all of pages that are switched off
        return {apply ? SaveResult::NothingToDo : SaveResult::Saved};
    }
    if (const int nWritten = writeNewSettings(entries); nWritten != 0) {
        qWarning("%s: nothing is applied", qPrintable(sNewSettingsPath));
        discardPendingInput(); // a slow disk: as after the tool
        return {SaveResult::NotWritten, nWritten};
    }
    if (!apply) {
        return {};
    }
    const int nResult = utils.runSysCfg();
    // The tool blocks everything for a while. Who taps SAVE or presses Return again meanwhile must
    // not press what comes up in its place.
    discardPendingInput();
    if (nResult == 0) {
        return {};
    }
    const VeltaInfoBox box(ERR_SYSCFG_RESULT, QString::number(nResult), 0, nullptr, true, true);
    return {SaveResult::ToolFailed, nResult};
}

QList<IniEntry> VeltaSettings::changedEntries()
{
    QList<IniEntry> entries;
    pSettings->beginGroup(NetworkGroup);
    if (working.nNetMode != snapshot.nNetMode || !pSettings->contains(ModeKey)) {
        entries.append(
            {ModeKey,
             working.nNetMode == StaticMode ? QStringLiteral("static") : QStringLiteral("dhcp")});
    }
    for (const AddressKey &row : AddressKeys) {
        if (isNameServer(row.index) && !bPageEnabled[DnsPageId]) {
            continue;
        }
        const IpEntry &entry = working.ipEntries[row.index];
        if (entry.value != snapshot.ipEntries[row.index].value || !pSettings->contains(row.sKey)
            || entry.bDefaulted) {
            entries.append({row.sKey, entry.value});
        }
    }
    pSettings->endGroup();
    return entries;
}

// Not by QSettings: it merges what somebody has planted there, follows links, waits for ever for a
// lock that is a directory, and does not notice a full disk.
int VeltaSettings::writeNewSettings(const QList<IniEntry> &entries)
{
    const QString path = devicePath(sNewSettingsPath);
    const QByteArray text = iniText(NetworkGroup, entries);
    if (!writeNewFile(path, text)) {
        const QString reason = qt_error_string(errno);
        qWarning("%s cannot be written: %s", qPrintable(sNewSettingsPath), qPrintable(reason));
        return ERR_INI_ACCESS;
    }
    const int nResult = readNewSettingsBack(text, entries);
    if (nResult != 0) {
        removeName(path);
    }
    return nResult;
}

int VeltaSettings::readNewSettingsBack(const QByteArray &text, const QList<IniEntry> &entries)
{
    const FileContent file = readRegularFile(devicePath(sNewSettingsPath), Links::Refuse);
    pNewSettings = std::make_unique<IniFile>(file, pNewSettings->format());
    switch (pNewSettings->state()) {
    case IniFile::Absent:
    case IniFile::Unreadable:
        return ERR_INI_ACCESS;
    case IniFile::Damaged:
        return ERR_INI_FORMAT;
    case IniFile::Sound:
        break;
    }
    if (file.content != text) {
        return ERR_INI_ACCESS;
    }
    const bool bConfirmed = pNewSettings->keys().size() == entries.size()
        && std::all_of(entries.cbegin(), entries.cend(), [this](const IniEntry &entry) {
                                const QVariant value =
                                    pNewSettings->value(NetworkGroup + u'/' + entry.sKey);
                                return value.isValid() && value.toString() == entry.sValue;
                            });
    return bConfirmed ? 0 : ERR_INI_FORMAT;
}
