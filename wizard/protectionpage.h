#pragma once

#include <QWizardPage>

#include <memory>

class QLabel;
class QLineEdit;
class QPushButton;
class VeltaInputPanelContext;
class VeltaSettings;
class VeltaWizard;

namespace Ui {
class VeltaProtectionForm;
}

/// First page on a protected panel: asks for the configuration password with the on-screen
/// keyboard. The operator has three tries in each pass; a page shows nothing that was entered.
class ProtectionPage : public QWizardPage
{
    Q_OBJECT

public:
    /// Neither pointer is owned; both outlive the page.
    ProtectionPage(VeltaSettings *settings, VeltaWizard *wizard);
    ~ProtectionPage() override;

    /// Starts the entry when the page is first shown.
    bool event(QEvent *event) override;
    /// Drops the keys of the wizard's window while the password is missing.
    bool eventFilter(QObject *receiver, QEvent *event) override;
    /// Both are false until the password was accepted: no button leads on from here.
    bool isComplete() const override;
    bool validatePage() override;

public Q_SLOTS:
    /// The keyboard was closed with OK: right leads on, wrong asks again or closes the wizard.
    void OnInputOk();
    /// The keyboard was cancelled or timed out: closes the wizard.
    void OnInputFailure();
    /// Opens the keyboard with an empty field.
    void EnterPassword();
    void DeselectText();

private:
    bool isUnlocked() const;
    void hideDigits();
    void createContext();
    bool reportWrongPassword(const QString &note);

    std::unique_ptr<VeltaInputPanelContext> pContext; // null until the first entry
    QLabel *pLabel = nullptr;
    QLineEdit *pEdit = nullptr;
    QPushButton *pButton = nullptr;
    VeltaWizard *pWizard;
    VeltaSettings *pSettings;
    bool bEntryStarted = false;
    quint8 nFailedAttempts = 0;
    std::unique_ptr<Ui::VeltaProtectionForm> pForm;
};
