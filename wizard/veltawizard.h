#pragma once

#include "settings/veltasettings.h"

#include <QWizard>

#include <array>
#include <memory>

class VeltaKbdInput;

/// One pass of local configuration: the frame around the configuration pages. Shown as a frameless
/// child area of its parent, the full-screen main window; GUI thread only.
class VeltaWizard : public QWizard
{
    Q_OBJECT

public:
    /// Loads the settings and creates the pages. When that fails the operator has been told, and
    /// Run() returns false.
    explicit VeltaWizard(QWidget *parent);
    ~VeltaWizard() override;

    /// Runs the pass modally. True exactly when a changed configuration was saved and applied.
    bool Run();

    /// Order of the pages; also shows or hides the Expert button for the current one.
    Q_INVOKABLE int nextId() const override;

    /// Registers \a page, which the wizard then owns; a null page is ignored.
    void AddPage(int id, QWizardPage *page, bool showExpert, bool skipOnBack);

    /// Hides and disables all buttons until RestoreButtons(); a second call changes nothing.
    void HideButtons();
    void RestoreButtons();
    /// Starts again at the second page, from which Back does not lead to the first one.
    void RestartAtSecondPage();

    /// SAVE: writes and applies what changed, then closes the wizard. Nothing while the password is
    /// missing.
    void accept() override;
    void reject() override;

public Q_SLOTS:
    void ExpertButtonClicked(int button);
    void HandleBack(int id);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    static constexpr int PageTableSize = 20;

    struct PageEntry
    {
        int nId = -1; // -1: free
        bool bShowExpert = false;
        bool bSkipOnBack = false;
        QWizardPage *pPage = nullptr; // owned by QWizard
    };

    int setup();
    int setupPages();
    void setupButtons();
    void fitButtons();
    void createPages();
    bool allPagesCreated() const;
    void addPages();
    int failSetup(int code);
    void release();
    void markFocusedButton();
    void applyWindowFlags();
    void applyGeometry();
    const PageEntry *findPage(int id) const;

    std::unique_ptr<VeltaSettings> pSettings;
    std::unique_ptr<VeltaKbdInput> pKbdInput;
    std::array<QWizardPage *, WizardPageCount> pages{}; // owned by QWizard once registered
    int nLastPageId = -1;
    QList<QWizard::WizardButton> buttonOrder;
    QList<bool> savedVisibility; // by buttonOrder
    QList<bool> savedEnabled; // by buttonOrder
    bool bSetupFailed = false;
    bool bButtonsHidden = false;
    int nFirstPageId = -1;
    int nSecondPageId = -1;
    std::array<PageEntry, PageTableSize> pageTable{};
};
