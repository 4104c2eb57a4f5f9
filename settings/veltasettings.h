#pragma once

#include "settings/inifile.h"
#include "settings/saveresult.h"
#include "settings/settingsrecord.h"
#include "settings/veltautils.h"

#include <array>
#include <memory>

class IP4Validator;

/// The wizard's pages that a configuration may have, in page-id order, which is the order in which
/// they are shown. The summary is the last one.
enum WizardPageIndex { ProtectionPageId, NetModePageId, IpPageId, DnsPageId, SummaryPageId };
constexpr int WizardPageCount = SummaryPageId + 1;

/// The panel's local configuration during one pass of the configuration wizard: what the settings
/// file and the DHCP interface say (snapshot) and what the operator makes of it (working).
///
/// One object per pass, owned by the wizard; GUI thread only. The calls into the firmware library
/// are synchronous. Nothing here ever writes the device's settings file itself.
class VeltaSettings
{
public:
    /// Reads \a settingsPath, and hands over in \a newSettingsPath what is to be applied. Both are
    /// paths on the device, as "/etc/settings.ini".
    VeltaSettings(const QString &settingsPath, const QString &newSettingsPath,
                  QSettings::Format format);
    ~VeltaSettings();
    VeltaSettings(const VeltaSettings &) = delete;
    VeltaSettings &operator=(const VeltaSettings &) = delete;

    /// Loads everything and takes the snapshot. Returns 0, or ERR_INI_ACCESS when there is a
    /// settings file that cannot be read: nothing is known then, not even whether a password
    /// protects the panel. A file that is damaged is loaded as far as it can be read, without its
    /// password where that is lost, because saving is what repairs it. What goes wrong is reported
    /// to the operator here, and every value has a default.
    int init();
    /// Fills the working record; returns 0.
    int loadSettings();
    /// Reads the options group, which must be open on pSettings.
    void readOptions();
    /// Reads the network group, which must be open on pSettings.
    void readNetwork();

    /// Compares the working record with the snapshot, as far as saving goes, and keeps the result
    /// in working.bDataChanged.
    bool detectChanges();
    /// Writes what changed into the new-settings file and, with \a apply, hands it to the system
    /// configuration tool, whose failure is shown to the operator.
    SaveResult save(bool apply);
    /// The same, told as one number: 0 on success, 1 when there was nothing to do, else
    /// SaveResult::nCode, which is 1 as well when the tool ended with that exit status.
    int saveSettings(bool bApply) { return save(bApply).described(); }

    SettingsRecord working; ///< Loaded and edited.
    SettingsRecord snapshot; ///< As loaded by init(), never edited.
    std::array<bool, WizardPageCount> bPageEnabled; ///< By WizardPageIndex; fixed after init().
    std::unique_ptr<IniFile> pSettings; ///< As it was when this object was made.
    std::unique_ptr<IniFile> pNewSettings; ///< As read again by the last save; empty before.
    std::array<QString, IpEntryCount> defaults; ///< By IpEntryIndex.
    VeltaUtils utils;
    std::unique_ptr<IP4Validator> pValidator;

private:
    int checkSettingsFile() const;
    void removeStaleNewSettings();
    void classifyScreen();
    void readDhcpValues();
    void readStoredValues();
    void checkStaticValues();
    bool entryChanged(int index) const;
    QList<IniEntry> changedEntries();
    int writeNewSettings(const QList<IniEntry> &entries);
    int readNewSettingsBack(const QByteArray &text, const QList<IniEntry> &entries);

    const QString sSettingsPath; ///< On the device, as sNewSettingsPath.
    const QString sNewSettingsPath;
};
