#include "wizard/ipaddressespage.h"

#include "settings/veltasettings.h"
#include "ui_veltaipaddressesform.h"

#include <utility>

IPAddressesPage::IPAddressesPage(VeltaSettings *settings, VeltaWizard *wizard)
    : AddressPage(settings, wizard), pForm(std::make_unique<Ui::VeltaIPAddressesForm>())
{
    pForm->setupUi(this);
    pForm->FirstIPLabel->setText(tr("PLC: "));
    pForm->SecondIPLabel->setText(tr("Netmask: "));
    pForm->ThirdIPLabel->setText(tr("Gateway: "));
    fields = {{pForm->FirstIPLabel, pForm->FirstIPLineEdit, pForm->FirstIPButton, AddressEntry,
               IP4Validator::Address, false, nullptr, tr("address")},
              {pForm->SecondIPLabel, pForm->SecondIPLineEdit, pForm->SecondIPButton, NetmaskEntry,
               IP4Validator::Netmask, false, nullptr, tr("netmask")},
              {pForm->ThirdIPLabel, pForm->ThirdIPLineEdit, pForm->ThirdIPButton, GatewayEntry,
               IP4Validator::Address, true, nullptr, tr("gateway")}};
    prepareForm({}, {pForm->groupBox, pForm->verticalSpacer, pForm->verticalSpacer_2}, this);
}

IPAddressesPage::~IPAddressesPage() = default;

void IPAddressesPage::initializePage()
{
    const bool bStatic = pSettings->working.nNetMode == StaticMode;
    const bool bNoLease =
        !bStatic && pSettings->working.ipEntries[AddressEntry].dhcpValue.isEmpty();
    for (const AddressField &field : std::as_const(fields)) {
        field.pButton->setEnabled(bStatic);
        const IpEntry &entry = entryOf(field);
        field.pEdit->setText(bNoLease      ? QString(NoAddress)
                                 : bStatic ? entry.value
                                           : entry.dhcpValue);
    }
}
