#pragma once

#include <QFont>
#include <QStringList>
#include <QWizardPage>

#include <memory>

class QStyle;
class VeltaSettings;
class VeltaWizard;
namespace Ui {
class VeltaSummaryForm;
}

/// Last page of the wizard: what is going to be saved, or that there is nothing to save.
class SummaryPage : public QWizardPage
{
    Q_OBJECT

public:
    /// Neither pointer is owned; both outlive the page.
    SummaryPage(VeltaSettings *settings, VeltaWizard *wizard);
    ~SummaryPage() override;

    void initializePage() override;
    void cleanupPage() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildChangeList();
    void fitChangeList();

    VeltaSettings *pSettings;
    VeltaWizard *pWizard;
    std::unique_ptr<Ui::VeltaSummaryForm> pForm;
    std::unique_ptr<QStyle> pStyle;
    QStringList changeList;
    QFont labelFont; ///< of the text above the list, likewise
    QFont listFont; ///< of the list, where there is room for it
    bool bFitting = false;
};
