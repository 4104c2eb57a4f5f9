#pragma once

#include "wizard/addresspage.h"

namespace Ui {
class VeltaIPAddressesForm;
}

/// The panel's address, netmask and gateway: to be edited in static mode, to be read in DHCP mode.
class IPAddressesPage : public AddressPage
{
    Q_OBJECT

public:
    /// Neither pointer is owned; both outlive the page.
    IPAddressesPage(VeltaSettings *settings, VeltaWizard *wizard);
    ~IPAddressesPage() override;

    void initializePage() override;

private:
    std::unique_ptr<Ui::VeltaIPAddressesForm> pForm;
};
