#include "wizard/netopmodesettingspage.h"

#include "settings/veltasettings.h"
#include "ui_veltanetopmodeform.h"
#include "wizard/pagelayout.h"

NetOpModeSettingsPage::NetOpModeSettingsPage(VeltaSettings *settings, VeltaWizard *wizard)
    : pSettings(settings), pWizard(wizard), pForm(std::make_unique<Ui::VeltaNetOpModeForm>())
{
    pForm->setupUi(this);

    VeltaUtils &utils = *pSettings->working.pUtils;
    const int nIndex = pSettings->working.nResolutionIndex;
    const std::initializer_list<QWidget *> scaled = {
        pForm->NetOpModeLabel, pForm->NetOpModeLineEdit, pForm->NetOpModeSelectButton,
        pForm->DummyLabel2,    pForm->DummyLineEdit2,    pForm->DummySelectButton2,
        pForm->DummyLabel1,    pForm->DummyLineEdit1,    pForm->DummySelectButton1,
        pForm->groupBox};
    for (QWidget *pWidget : scaled) {
        utils.scaleFont(pWidget, nIndex);
    }
    pForm->NetOpModeSelectButton->setAttribute(Qt::WA_AcceptTouchEvents);
    utils.scaleWidth(pForm->NetOpModeSelectButton, false);
    keepAsSpace({pForm->DummyLabel1, pForm->DummyLineEdit1, pForm->DummySelectButton1,
                 pForm->DummyLabel2, pForm->DummyLineEdit2, pForm->DummySelectButton2});

    pForm->NetOpModeLabel->setText(tr("IP-Address: "));
    fitRows(pSettings->working,
            {{pForm->NetOpModeLabel, pForm->NetOpModeLineEdit, pForm->NetOpModeSelectButton,
              modeText(StaticMode)}});
    setCommonWidth({pForm->NetOpModeLabel, pForm->DummyLabel1, pForm->DummyLabel2});
    fitTitle(pSettings->working, pForm->groupBox);
    setAttribute(Qt::WA_AcceptTouchEvents);
    shrinkSpacers(nIndex, pForm->verticalSpacer, pForm->verticalSpacer_2);
    showMode();

    connect(pForm->NetOpModeSelectButton, &QPushButton::clicked, this,
            &NetOpModeSettingsPage::Button_clicked);
    connect(pForm->NetOpModeLineEdit, &QLineEdit::selectionChanged, this,
            &NetOpModeSettingsPage::DeselectText);
}

NetOpModeSettingsPage::~NetOpModeSettingsPage() = default;

void NetOpModeSettingsPage::Button_clicked()
{
    pLastSender = sender();
    if (pLastSender != pForm->NetOpModeSelectButton) {
        return;
    }
    quint32 &nNetMode = pSettings->working.nNetMode;
    nNetMode = nNetMode == StaticMode ? DhcpMode : StaticMode;
    showMode();
}

void NetOpModeSettingsPage::showMode()
{
    const QString mode = modeText(pSettings->working.nNetMode);
    // The form knows the English ones.
    pForm->NetOpModeLineEdit->setMaxLength(
        qMax(pForm->NetOpModeLineEdit->maxLength(), int(mode.size())));
    pForm->NetOpModeLineEdit->setText(mode);
}

QString NetOpModeSettingsPage::modeText(quint32 netMode)
{
    return tr("%1").arg(tr(networkModeName(netMode).toLatin1().constData()));
}

void NetOpModeSettingsPage::DeselectText()
{
    pForm->NetOpModeLineEdit->deselect();
}
