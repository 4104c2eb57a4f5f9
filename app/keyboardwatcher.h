#pragma once

#include "platform/inputdevice.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class FolderWatch;

/// Keeps the handler of the keyboard that was plugged in, while keyboards come and go as links
/// "keyboard*" in "/dev/input". Of two the handler of the second is the one installed; while there
/// are more, nothing changes. While no window of the program is on the screen there is no handler.
/// A keyboard that another program keeps for itself then is tried again until it is free. GUI
/// thread.
class KeyboardWatcher : public QObject
{
    Q_OBJECT

public:
    /// Finds out once whether the device's settings give its keyboards the key map file.
    explicit KeyboardWatcher(QObject *parent = nullptr);
    ~KeyboardWatcher() override;

    /// Releases the handler of whoever was here before and installs that of what is plugged in now.
    /// From then on rescan() is called by itself, also for a folder that comes later.
    void start();
    /// Looks for keyboards that came, went or were exchanged. \a folder: of the input devices.
    void rescan(const QString &folder);

private:
    /// What stands under one name. A keyboard that is plugged in anew differs in its device.
    struct Entry
    {
        QString sName; ///< of the file
        bool bLink = false; ///< whatever is none is counted, but no keyboard
        DeviceIdentity device;
        friend bool operator==(const Entry &, const Entry &) = default;
    };

    void releaseAll();
    static bool readKeyboardMapping();
    static QList<Entry> entriesOf(const QString &folder);
    void setKeyboard(const QString &deviceName) const;
    static void releaseKeyboard();

    bool bKeyboardMapping;
    FolderWatch *pInputWatch = nullptr; // child of this
    QStringList grabbed; ///< names of keyboards that another program has for itself
    QList<Entry> installed; ///< entries last seen, when there were not too many, by name
    QList<Entry> resting; ///< those installed when the window went, until it is back
};
