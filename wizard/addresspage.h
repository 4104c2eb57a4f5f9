#pragma once

#include "settings/settingsrecord.h"
#include "wizard/ip4validator.h"
#include "wizard/pagelayout.h"

#include <QWizardPage>

#include <memory>
#include <vector>

class VeltaInputPanelContext;
class VeltaSettings;
class VeltaWizard;

/// What the address pages have in common: rows of a caption, an address and an Edit button, which
/// opens the on-screen keyboard. What is entered there goes at once into the working record:
/// as it is, repaired, or, when it is no address, not at all.
class AddressPage : public QWizardPage
{
    Q_OBJECT

public:
    /// Neither pointer is owned, neither is null; both outlive the page.
    AddressPage(VeltaSettings *settings, VeltaWizard *wizard);
    ~AddressPage() override;

public Q_SLOTS:
    /// An Edit button: opens the keyboard for its row.
    void Button_clicked();
    /// The keyboard was closed with OK: judges and stores what was entered.
    void OnInputOk();
    void DeselectText();

protected:
    struct AddressField
    {
        QLabel *pLabel;
        QLineEdit *pEdit;
        QPushButton *pButton;
        IpEntryIndex entry;
        IP4Validator::Mode check;
        bool bZeroAllowed; ///< 0.0.0.0 is accepted, for no address.
        QLabel *pTitle; ///< Names the keyboard anew each time; null: the caption of the first time.
        QString sMessageName; ///< Of the address, in a refusal.
    };

    /// Adapts the form to the screen and connects the fields, which must be set, captions included.
    /// \a placeholders: the widgets of rows without use. \a owner: of a refusal's box, may be
    /// null.
    void prepareForm(const QList<QWidget *> &placeholders, const PageFrame &frame, QWidget *owner);
    /// The entry of the working record that a field edits.
    IpEntry &entryOf(const AddressField &field) const;

    VeltaSettings *pSettings;
    VeltaWizard *pWizard;
    QList<AddressField> fields; ///< Top to bottom.

private:
    int fieldOf(const QObject *button) const;
    void refuse(const AddressField &field);

    std::vector<std::unique_ptr<VeltaInputPanelContext>> contexts; // by field; null until used
    QWidget *pBoxOwner = nullptr;
    QObject *pLastSender = nullptr;
    QString sOldText; // the field's, when the keyboard opened
};
