#pragma once

#include "wizard/addresspage.h"

namespace Ui {
class VeltaDNSSettingsPage;
}

/// The two name servers, numbered after those that DHCP has handed out.
class DNSSettingsPage : public AddressPage
{
    Q_OBJECT

public:
    /// Neither pointer is owned; both outlive the page.
    DNSSettingsPage(VeltaSettings *settings, VeltaWizard *wizard);
    ~DNSSettingsPage() override;

    void initializePage() override;

private:
    void countDhcpServers();
    void nameFields();

    std::unique_ptr<Ui::VeltaDNSSettingsPage> pForm;
    int nFirstNumber = 1; // of the first field
};
