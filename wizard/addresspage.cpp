#include "wizard/addresspage.h"

#include "infobox/veltainfobox.h"
#include "input/veltainputpanelcontext.h"
#include "settings/errorcatalogue.h"
#include "settings/veltasettings.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace {

constexpr auto WidestAddress = QLatin1String("255.255.255.255");

// What an emptied field still holds are the dots of its mask.
bool holdsNoDigit(const QString &text)
{
    return std::none_of(text.cbegin(), text.cend(), [](QChar c) { return c.isDigit(); });
}

} // namespace

AddressPage::AddressPage(VeltaSettings *settings, VeltaWizard *wizard)
    : pSettings(settings), pWizard(wizard)
{ }

AddressPage::~AddressPage() = default;

void AddressPage::prepareForm(const QList<QWidget *> &placeholders, const PageFrame &frame,
                              QWidget *owner)
{
    contexts.resize(std::size_t(fields.size()));
    pBoxOwner = owner;

    VeltaUtils &utils = *pSettings->working.pUtils;
    const int nIndex = pSettings->working.nResolutionIndex;
    QList<QWidget *> scaled;
    QList<QLabel *> labels;
    QList<FieldRow> rows;
    for (const AddressField &field : std::as_const(fields)) {
        scaled << field.pLabel << field.pEdit << field.pButton;
        labels << field.pLabel;
        rows << FieldRow{field.pLabel, field.pEdit, field.pButton, WidestAddress};
        field.pButton->setAttribute(Qt::WA_AcceptTouchEvents);
        connect(field.pButton, &QPushButton::clicked, this, &AddressPage::Button_clicked);
        connect(field.pEdit, &QLineEdit::selectionChanged, this, &AddressPage::DeselectText);
    }
    scaled << placeholders << frame.pGroupBox;
    for (QWidget *pWidget : std::as_const(scaled)) {
        utils.scaleFont(pWidget, nIndex);
    }
    for (const AddressField &field : std::as_const(fields)) {
        utils.scaleWidth(field.pButton, false);
    }
    setAttribute(Qt::WA_AcceptTouchEvents);
    keepAsSpace(placeholders);
    fitRows(pSettings->working, rows);
    setCommonWidth(labels);
    shrinkSpacers(nIndex, frame.pAbove, frame.pBelow);
    fitTitle(pSettings->working, frame.pGroupBox);
}

IpEntry &AddressPage::entryOf(const AddressField &field) const
{
    return pSettings->working.ipEntries[field.entry];
}

// -1: not the button of a field.
int AddressPage::fieldOf(const QObject *button) const
{
    const auto it =
        std::find_if(fields.cbegin(), fields.cend(),
                     [button](const AddressField &field) { return field.pButton == button; });
    return it != fields.cend() ? int(it - fields.cbegin()) : -1;
}

void AddressPage::Button_clicked()
{
    pLastSender = sender();
    const int nField = fieldOf(pLastSender);
    if (nField < 0) {
        return;
    }
    const AddressField &field = fields[nField];
    sOldText = field.pEdit->text();
    auto &pContext = contexts[std::size_t(nField)];
    if (!pContext) {
        const SettingsRecord &record = pSettings->working;
        pContext = std::make_unique<VeltaInputPanelContext>(
            field.pEdit, field.pLabel, false, record.nScreenWidth[record.nResolutionIndex],
            record.nScreenHeight[record.nResolutionIndex]);
        connect(pContext.get(), &VeltaInputPanelContext::input_okay, this, &AddressPage::OnInputOk);
    }
    pContext->showPanel(field.pTitle);
}

void AddressPage::OnInputOk()
{
    const int nField = fieldOf(pLastSender);
    if (nField < 0) {
        return;
    }
    const AddressField &field = fields[nField];
    QString text = field.pEdit->text();
    if (text == sOldText) {
        field.pEdit->setText(text); // the digits may stand elsewhere in the mask
        return;
    }
    if (holdsNoDigit(text)) {
        text.clear();
    }
    IP4Validator validator;
    validator.setZeroFirstOctetAllowed(field.bZeroAllowed);
    int nMode = field.check;
    switch (validator.validate(text, nMode)) {
    case QValidator::Invalid:
        refuse(field);
        return;
    case QValidator::Intermediate:
        validator.fixup(text);
        break;
    case QValidator::Acceptable:
        break;
    }
    field.pEdit->setText(text); // with no blanks between the digits: what is seen is what is stored
    entryOf(field).value = text;
}

// Waits for the operator.
void AddressPage::refuse(const AddressField &field)
{
    field.pEdit->setText(sOldText);
    VeltaInfoBox box(ERR_IP_DATA_INVALID, field.sMessageName, 0, pBoxOwner, true, true);
}

void AddressPage::DeselectText()
{
    for (const AddressField &field : std::as_const(fields)) {
        field.pEdit->deselect();
    }
}
