#include "wizard/veltawizard.h"

#include "app/veltakbdinput.h"
#include "infobox/veltainfobox.h"
#include "settings/errorcatalogue.h"
#include "settings/fittedfont.h"
#include "settings/screenclass.h"
#include "settings/veltautils.h"
#include "wizard/dnssettingspage.h"
#include "wizard/ipaddressespage.h"
#include "wizard/netopmodesettingspage.h"
#include "wizard/pagelayout.h"
#include "wizard/protectionpage.h"
#include "wizard/summarypage.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>
#include <QStyle>

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <utility>

namespace {

constexpr auto OrganizationName = QLatin1String("Tarnwik Automation GmbH");
constexpr auto OrganizationDomain = QLatin1String("tarnwik-automation.example");

constexpr int RoomyButtonHeight = 40;

using PageCreator = QWizardPage *(*)(VeltaSettings *, VeltaWizard *);

template <typename Page>
QWizardPage *createPage(VeltaSettings *settings, VeltaWizard *wizard)
{
    return new (std::nothrow) Page(settings, wizard);
}

// By WizardPageIndex.
constexpr PageCreator PageCreators[] = {
    createPage<ProtectionPage>,  createPage<NetOpModeSettingsPage>, createPage<IPAddressesPage>,
    createPage<DNSSettingsPage>, createPage<SummaryPage>,
};
static_assert(std::size(PageCreators) == WizardPageCount, "every page id has its creator");

} // namespace

VeltaWizard::VeltaWizard(QWidget *parent) : QWizard(parent, {})
{
    bSetupFailed = setup() != 0;
}

VeltaWizard::~VeltaWizard()
{
    release();
}

// The pages first: they work on the settings to their end.
void VeltaWizard::release()
{
    for (QWizardPage *&pPage : pages) {
        delete pPage;
        pPage = nullptr;
    }
    pKbdInput.reset();
    pSettings.reset();
}

int VeltaWizard::setup()
{
    QCoreApplication::setOrganizationName(OrganizationName);
    QCoreApplication::setOrganizationDomain(OrganizationDomain);
    pSettings =
        std::make_unique<VeltaSettings>(SettingsPath, NewSettingsPath, QSettings::IniFormat);
    nLastPageId = -1;
    int nResult = pSettings->init();
    if (nResult == 0) {
        nResult = setupPages();
    } else {
        release(); // the operator has been told
    }
    QCoreApplication::setApplicationName(QStringLiteral("service_menu"));
    return nResult;
}

int VeltaWizard::setupPages()
{
    pages.fill(nullptr);
    pKbdInput = std::make_unique<VeltaKbdInput>(this);
    setupButtons();
    pageTable.fill({});
    createPages();
    if (!allPagesCreated()) {
        return failSetup(ERR_NO_MEMORY_PAGES);
    }
    nFirstPageId = nSecondPageId = -1;
    addPages();
    if (nFirstPageId == -1) {
        return failSetup(ERR_NO_FIRST_PAGE);
    }
    setStartId(nFirstPageId);
    connect(this, &QWizard::customButtonClicked, this, &VeltaWizard::ExpertButtonClicked);
    connect(this, &QWizard::currentIdChanged, this, &VeltaWizard::HandleBack);
    applyWindowFlags();
    applyGeometry();
    setStyleSheet(
        QStringLiteral("QWizard { %1 }").arg(QLatin1String("background-color: rgb(230,230,230);")));
    return 0;
}

void VeltaWizard::setupButtons()
{
    setButtonText(QWizard::NextButton, tr("Next"));
    setButtonText(QWizard::BackButton, tr("Back"));
    setButtonText(QWizard::CancelButton, tr("Cancel"));
    setButtonText(QWizard::FinishButton, tr("SAVE"));
    const int nIndex = pSettings->working.nResolutionIndex;
    const bool bTight = screenClassRow(nIndex).room == Room::Tight;
    for (const WizardButton which :
         {QWizard::NextButton, QWizard::BackButton, QWizard::CancelButton, QWizard::FinishButton,
          QWizard::CustomButton1}) {
        // A button gets the wizard's font only with its place in the layout.
        QFont buttonFont = font();
        buttonFont.setBold(true);
        button(which)->setFont(buttonFont);
        pSettings->utils.scaleFont(button(which), nIndex);
        button(which)->setMinimumHeight(bTight ? LeastButtonHeight : RoomyButtonHeight);
        if (bTight) {
            // The style's least width, three times, is more than a small screen has, and QWizard
            // grows beyond its own maximum rather than squeeze its buttons.
            button(which)->setMinimumWidth(1);
        }
    }
    fitButtons();
    buttonOrder = {QWizard::BackButton, QWizard::CustomButton1, QWizard::CancelButton,
                   QWizard::NextButton, QWizard::FinishButton};
    for (const WizardButton which : std::as_const(buttonOrder)) {
        button(which)->setAttribute(Qt::WA_AcceptTouchEvents);
    }
    setButtonLayout(buttonOrder);
    setOption(QWizard::HaveCustomButton1, true);
    setOption(QWizard::NoCancelButton, false);
    // As a part of the main window it would not take the mark of the default button away from Next
    // while another button has the focus: who works it by keys could not tell which.
    setOption(QWizard::NoDefaultButton, true);
}

// Three of them stand side by side in the wizard's width, all alike.
void VeltaWizard::fitButtons()
{
    const int nMargins = 4 * wizardMargin(this); // and no more than that between them
    const int nWidth = (wizardSize(pSettings->working).width() - nMargins) / 3
        - style()->pixelMetric(QStyle::PM_ButtonMargin, nullptr, button(QWizard::NextButton));
    const auto buttons = {QWizard::NextButton, QWizard::BackButton, QWizard::CancelButton,
                          QWizard::FinishButton};
    QFont fitted = button(QWizard::NextButton)->font();
    for (const WizardButton which : buttons) {
        fitted = fittedFont(fitted, button(which)->text(), nWidth);
    }
    for (const WizardButton which : buttons) {
        button(which)->setFont(fitted);
    }
}

void VeltaWizard::createPages()
{
    for (int nId = 0; nId < WizardPageCount; ++nId) {
        if (pSettings->bPageEnabled[nId]) {
            pages[nId] = PageCreators[nId](pSettings.get(), this);
        }
    }
}

bool VeltaWizard::allPagesCreated() const
{
    for (int nId = 0; nId < WizardPageCount; ++nId) {
        if (pSettings->bPageEnabled[nId] && !pages[nId]) {
            return false;
        }
    }
    return true;
}

void VeltaWizard::addPages()
{
    for (int nId = 0; nId < WizardPageCount; ++nId) {
        if (pSettings->bPageEnabled[nId]) {
            AddPage(nId, pages[nId], false, false);
        }
    }
}

// Releases what setup has created and tells the operator.
int VeltaWizard::failSetup(int code)
{
    VeltaInfoBox box(qint16(code), 0, nullptr, true, true);
    release();
    return code;
}

void VeltaWizard::AddPage(int id, QWizardPage *page, bool showExpert, bool skipOnBack)
{
    if (!page) {
        return;
    }
    setPage(id, page);
    if (nFirstPageId == -1) {
        nFirstPageId = id;
    } else if (nSecondPageId == -1) {
        nSecondPageId = id;
    }
    const auto it = std::find_if(pageTable.begin(), pageTable.end(),
                                 [](const PageEntry &entry) { return entry.nId == -1; });
    if (it != pageTable.end()) {
        *it = {id, showExpert, skipOnBack, page};
    }
}

const VeltaWizard::PageEntry *VeltaWizard::findPage(int id) const
{
    const auto it = std::find_if(pageTable.begin(), pageTable.end(), [id](const PageEntry &entry) {
        return entry.nId != -1 && entry.nId == id;
    });
    return it != pageTable.end() ? &*it : nullptr;
}

void VeltaWizard::applyWindowFlags()
{
    // Neither flag makes it a window: it is shown as an area of its parent.
    setWindowFlags(pSettings->working.bLargeScreen ? Qt::WindowCloseButtonHint
                                                   : Qt::FramelessWindowHint);
}

void VeltaWizard::applyGeometry()
{
    const SettingsRecord &record = pSettings->working;
    setFixedSize(wizardSize(record));
    if (record.bFixedWidth) {
        const QRect area = screen()->availableGeometry();
        const int nMiddleX = (area.left() + area.right()) / 2;
        const int nMiddleY = (area.top() + area.bottom()) / 2;
        move(int(nMiddleX - width() * 0.5), int(nMiddleY - height() * 0.5 + 1));
        return;
    }
    const QSize room = QSize(record.nScreenWidth[record.nResolutionIndex],
                             record.nScreenHeight[record.nResolutionIndex])
                           .boundedTo(QGuiApplication::primaryScreen()->size());
    if (room.width() > width() || room.height() > height()) {
        move((room.width() - width()) / 2, (room.height() - height()) / 2);
    }
}

bool VeltaWizard::Run()
{
    if (bSetupFailed) {
        return false;
    }
    raise(); // the page behind it was shown after the wizard was made
    return exec() == QDialog::Accepted;
}

int VeltaWizard::nextId() const
{
    const int nCurrent = currentId();
    if (const PageEntry *pEntry = findPage(nCurrent)) {
        QAbstractButton *pExpert = button(QWizard::CustomButton1);
        pExpert->setVisible(pEntry->bShowExpert);
        if (pEntry->bShowExpert) {
            pExpert->setText(tr("Expert"));
        }
    }
    if (nCurrent < ProtectionPageId || nCurrent >= SummaryPageId) {
        return -1;
    }
    for (int nId = nCurrent + 1; nId < SummaryPageId; ++nId) {
        if (pSettings->bPageEnabled[nId]) {
            return nId;
        }
    }
    return SummaryPageId;
}

void VeltaWizard::ExpertButtonClicked(int)
{
    QWizard::next();
}

void VeltaWizard::HandleBack(int id)
{
    const PageEntry *pEntry = findPage(id);
    if (pEntry && pEntry->bSkipOnBack && id < nLastPageId) {
        QWizard::back();
    }
    nLastPageId = currentId();
    markFocusedButton();
}

// QWizard takes the mark of the default button away at every new page, also from the button that
// keeps the focus.
void VeltaWizard::markFocusedButton()
{
    auto *pButton = qobject_cast<QPushButton *>(focusWidget());
    if (pButton && pButton->autoDefault()) {
        pButton->setDefault(true);
    }
}

void VeltaWizard::HideButtons()
{
    if (bButtonsHidden) {
        return;
    }
    bButtonsHidden = true;
    savedVisibility.clear();
    savedEnabled.clear();
    for (const WizardButton which : std::as_const(buttonOrder)) {
        // Not isVisible(): while a page is being shown the wizard itself may not be visible yet.
        savedVisibility.append(!button(which)->isHidden());
        savedEnabled.append(button(which)->isEnabled());
        button(which)->hide();
        // One that is only hidden can have the focus and takes keys.
        button(which)->setEnabled(false);
    }
}

void VeltaWizard::RestoreButtons()
{
    if (!bButtonsHidden) {
        return;
    }
    bButtonsHidden = false;
    for (int i = 0; i < buttonOrder.size(); ++i) {
        button(buttonOrder[i])->setEnabled(savedEnabled[i]);
        if (savedVisibility[i]) {
            button(buttonOrder[i])->show();
        }
    }
}

void VeltaWizard::RestartAtSecondPage()
{
    if (nSecondPageId != -1) {
        setStartId(nSecondPageId);
        setButtonLayout(buttonOrder);
        setOption(QWizard::HaveCustomButton1, true);
    }
    restart();
}

void VeltaWizard::accept()
{
    if (pSettings && !pSettings->working.bUnlocked) {
        return;
    }
    button(QWizard::FinishButton)->setEnabled(false);
    button(QWizard::FinishButton)->repaint(); // a sign of life while the tool blocks everything
    const SaveResult result =
        pSettings ? pSettings->save(true) : SaveResult{SaveResult::NothingToDo};
    if (result.outcome == SaveResult::Saved) {
        QDialog::accept();
        return;
    }
    // The tool's own results have been reported and are in no catalogue: their box is not modal and
    // goes with the wizard. Its exit status 1 has none, like the save with nothing to do.
    std::optional<VeltaInfoBox> box;
    if (result.described() != 1) {
        box.emplace(qint16(result.nCode), 0, nullptr, true, false);
    }
    reject();
}

void VeltaWizard::reject()
{
    QDialog::reject();
}

void VeltaWizard::keyPressEvent(QKeyEvent *event)
{
    if (pKbdInput) {
        pKbdInput->handleKey(event);
    }
}
