#pragma once

#include <QWizardPage>

#include <memory>

class VeltaSettings;
class VeltaWizard;

namespace Ui {
class VeltaNetOpModeForm;
}

/// How the panel's Ethernet interface gets its address: static or DHCP. The choice goes at once
/// into the working record.
class NetOpModeSettingsPage : public QWizardPage
{
    Q_OBJECT

public:
    /// Neither pointer is owned; both outlive the page.
    NetOpModeSettingsPage(VeltaSettings *settings, VeltaWizard *wizard);
    ~NetOpModeSettingsPage() override;

    /// The network mode's name in the operator's language, for the eye alone.
    static QString modeText(quint32 netMode);

public Q_SLOTS:
    void Button_clicked();
    void DeselectText();

private:
    void showMode();

    VeltaSettings *pSettings;
    VeltaWizard *pWizard;
    std::unique_ptr<Ui::VeltaNetOpModeForm> pForm;
    QObject *pLastSender = nullptr;
};
