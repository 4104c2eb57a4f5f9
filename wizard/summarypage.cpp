#include "wizard/summarypage.h"

#include "settings/fittedfont.h"
#include "settings/veltasettings.h"
#include "ui_veltasummaryform.h"
#include "wizard/netopmodesettingspage.h"
#include "wizard/pagelayout.h"
#include "wizard/veltawizard.h"

#include <QAbstractButton>
#include <QEvent>
#include <QScrollBar>
#include <QStyle>
#include <QStyleFactory>

SummaryPage::SummaryPage(VeltaSettings *settings, VeltaWizard *wizard)
    : pSettings(settings), pWizard(wizard), pForm(std::make_unique<Ui::VeltaSummaryForm>()),
      pStyle(QStyleFactory::create(QStringLiteral("Windows")))
{
    pForm->setupUi(this);
    setStyle(pStyle.get());
    VeltaUtils &utils = *pSettings->working.pUtils;
    const std::initializer_list<QWidget *> scaled = {pForm->listChangedData, pForm->groupBox,
                                                     pForm->SummaryLabel};
    for (QWidget *pWidget : scaled) {
        utils.scaleFont(pWidget, pSettings->working.nResolutionIndex);
    }
    listFont = pForm->listChangedData->font();
    labelFont = pForm->SummaryLabel->font();
    pForm->listChangedData->viewport()->installEventFilter(this);
    fitTitle(pSettings->working, pForm->groupBox);
}

SummaryPage::~SummaryPage()
{
    setStyle(nullptr); // the page's own style goes before the page's base does
}

void SummaryPage::initializePage()
{
    QWizardPage::initializePage();
    const bool bChanged = pSettings->detectChanges();
    pForm->SummaryLabel->setText(
        bChanged ? tr("Press SAVE to save all changes or CANCEL to abort.")
                 : tr("No changes were made so press OKAY to leave configuration."));
    pWizard->setButtonText(QWizard::FinishButton, bChanged ? tr("SAVE") : tr("OKAY"));
    pWizard->button(QWizard::CancelButton)->setEnabled(bChanged);
    if (bChanged) {
        buildChangeList();
    } else {
        pForm->SummaryLabel->setFont(labelFont); // a long list has made it smaller
    }
    pForm->listChangedData->setVisible(bChanged);
}

void SummaryPage::buildChangeList()
{
    const SettingsRecord &now = pSettings->working;
    const SettingsRecord &before = pSettings->snapshot;
    changeList.clear();
    if (now.nNetMode != before.nNetMode) {
        changeList += tr("Network OP-Mode: ") + NetOpModeSettingsPage::modeText(before.nNetMode)
            + QLatin1String(" -> ") + NetOpModeSettingsPage::modeText(now.nNetMode);
    }
    for (int i = 0; i < IpEntryCount; ++i) {
        const IpEntry &entry = now.ipEntries[i];
        const QString &oldValue = before.ipEntries[i].value;
        if (entry.value != oldValue) {
            changeList +=
                entry.label + QLatin1String(": ") + oldValue + QLatin1String(" -> ") + entry.value;
        } else if (entry.bDefaulted) {
            changeList += tr("set %1 to: %2").arg(entry.label, entry.value);
        }
    }
    if (!changeList.isEmpty()) {
        pForm->listChangedData->clear();
        pForm->listChangedData->addItems(changeList);
        fitChangeList();
    }
}

// Who saves shall see everything that is saved, and only a finger can scroll the list: its font
// gets smaller until all lines fit.
void SummaryPage::fitChangeList()
{
    bFitting = true;
    const auto fitsList = [pList = pForm->listChangedData](const QFont &font) {
        pList->setFont(font);
        pList->doItemsLayout();
        return pList->verticalScrollBar()->maximum() == 0;
    };
    // Where that is not enough the text above gives way.
    fittedFont(labelFont, [&](const QFont &font) {
        QLabel *pLabel = pForm->SummaryLabel;
        pLabel->setFont(font);
        pForm->groupBox->layout()->activate();
        fittedFont(listFont, fitsList);
        return pLabel->height() >= pLabel->heightForWidth(pLabel->width())
            && pForm->listChangedData->verticalScrollBar()->maximum() == 0;
    });
    bFitting = false;
}

bool SummaryPage::eventFilter(QObject *watched, QEvent *event)
{
    // Fitting itself resizes the viewport, when the scroll bar comes or goes.
    if (event->type() == QEvent::Resize && !bFitting) {
        fitChangeList();
    }
    return QWizardPage::eventFilter(watched, event);
}

void SummaryPage::cleanupPage()
{
    pWizard->button(QWizard::CancelButton)->setEnabled(true);
}
