#include "wizard/dnssettingspage.h"

#include "settings/veltasettings.h"
#include "ui_veltadnssettingspage.h"

#include <utility>

DNSSettingsPage::DNSSettingsPage(VeltaSettings *settings, VeltaWizard *wizard)
    : AddressPage(settings, wizard), pForm(std::make_unique<Ui::VeltaDNSSettingsPage>())
{
    pForm->setupUi(this);
    fields = {{pForm->dns1_ip_Label, pForm->dns1_ip_Edit, pForm->dns1_ip_Button, Dns1Entry,
               IP4Validator::Address, true, pForm->dns1_ip_Label, QString()},
              {pForm->dns2_ip_Label, pForm->dns2_ip_Edit, pForm->dns2_ip_Button, Dns2Entry,
               IP4Validator::Address, true, pForm->dns2_ip_Label, QString()}};
    countDhcpServers();
    nameFields();
    prepareForm({pForm->DummyLabel, pForm->DummyLineEdit, pForm->DummySelectButton},
                {pForm->groupBox, pForm->verticalSpacer, pForm->verticalSpacer_2}, nullptr);
}

DNSSettingsPage::~DNSSettingsPage() = default;

void DNSSettingsPage::countDhcpServers()
{
    nFirstNumber = 1;
    if (pSettings->working.nNetMode != DhcpMode) {
        return;
    }
    for (const AddressField &field : std::as_const(fields)) {
        const QString &server = entryOf(field).dhcpValue;
        if (!server.isEmpty() && server != NoAddress) {
            ++nFirstNumber;
        }
    }
}

// The keyboard, the summary and a refusal name a server as the page does.
void DNSSettingsPage::nameFields()
{
    int nNumber = nFirstNumber;
    for (AddressField &field : fields) {
        field.pLabel->setText(tr("DNS %1: ").arg(nNumber));
        entryOf(field).label = tr("DNS %1").arg(nNumber);
        field.sMessageName = tr("dns%1").arg(nNumber);
        ++nNumber;
    }
}

void DNSSettingsPage::initializePage()
{
    countDhcpServers(); // the mode may be another one than last time
    nameFields();
    const SettingsRecord &record = pSettings->working;
    const bool bNoAddress =
        record.nNetMode == DhcpMode && record.ipEntries[AddressEntry].value.isEmpty();
    for (const AddressField &field : std::as_const(fields)) {
        field.pButton->setEnabled(true);
        field.pEdit->setText(bNoAddress ? QString(NoAddress) : entryOf(field).value);
    }
}
