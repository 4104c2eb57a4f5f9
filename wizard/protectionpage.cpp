#include "wizard/protectionpage.h"

#include "infobox/veltainfobox.h"
#include "input/veltainputpanelcontext.h"
#include "settings/errorcatalogue.h"
#include "settings/veltasettings.h"
#include "ui_veltaprotectionform.h"
#include "wizard/pagelayout.h"
#include "wizard/veltawizard.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPalette>
#include <QPointer>
#include <QTimer>
#include <QWindow>

#include <chrono>

namespace {

using namespace std::chrono_literals;

constexpr auto EntryDelay = 10ms; // lets the page be painted, and a box close, first
constexpr quint8 BoxSeconds = 10;
constexpr quint8 DefaultInputSeconds = 20;
constexpr quint8 MaxAttempts = 3;

} // namespace

ProtectionPage::ProtectionPage(VeltaSettings *settings, VeltaWizard *wizard)
    : pWizard(wizard), pSettings(settings), pForm(std::make_unique<Ui::VeltaProtectionForm>())
{
    pForm->setupUi(this);
    pLabel = pForm->ProtectionLabel;
    pEdit = pForm->ProtectionLineEdit;
    pButton = pForm->ProtectionPushButton;

    VeltaUtils &utils = *pSettings->working.pUtils;
    const std::initializer_list<QWidget *> scaled = {pLabel, pEdit, pForm->groupBox};
    for (QWidget *pWidget : scaled) {
        utils.scaleFont(pWidget, pSettings->working.nResolutionIndex);
    }
    pLabel->hide(); // only the keyboard's caption
    pLabel->setText(tr("Password: "));
    fitTitle(pSettings->working, pForm->groupBox);
    hideDigits();
    pButton->hide();
    keepAsSpace({pForm->DummyLabel1, pForm->DummyLineEdit1, pForm->DummyPushButton1,
                 pForm->DummyLabel2, pForm->DummyLineEdit2, pForm->DummyPushButton2});
    connect(pEdit, &QLineEdit::selectionChanged, this, &ProtectionPage::DeselectText);
}

ProtectionPage::~ProtectionPage() = default;

void ProtectionPage::hideDigits()
{
    QPalette colors = pEdit->palette();
    const QColor background = colors.brush(pEdit->backgroundRole()).color();
    colors.setBrush(QPalette::All, pEdit->foregroundRole(), QBrush(background));
    pEdit->setPalette(colors);
}

bool ProtectionPage::event(QEvent *event)
{
    if (!bEntryStarted
        && (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate)) {
        bEntryStarted = true;
        QCoreApplication::instance()->installEventFilter(this);
        pWizard->HideButtons();
        QTimer::singleShot(EntryDelay, this, &ProtectionPage::EnterPassword);
    }
    return QWidget::event(event);
}

bool ProtectionPage::isUnlocked() const
{
    return pSettings->working.bUnlocked;
}

bool ProtectionPage::isComplete() const
{
    return isUnlocked();
}

bool ProtectionPage::validatePage()
{
    return isUnlocked();
}

// The keyboard and the boxes are windows of their own. Between them, for the moments until the
// next one is there, the wizard's window has the keys: none of them may work it.
bool ProtectionPage::eventFilter(QObject *receiver, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
        break;
    default:
        return QWizardPage::eventFilter(receiver, event);
    }
    const auto *pWidget = qobject_cast<QWidget *>(receiver);
    const bool bOfWizard = receiver == pWizard->window()->windowHandle()
        || (pWidget && pWidget->window() == pWizard->window());
    if (isUnlocked() || !bOfWizard) {
        return false;
    }
    event->accept();
    return true;
}

void ProtectionPage::createContext()
{
    const SettingsRecord &record = pSettings->working;
    pContext = std::make_unique<VeltaInputPanelContext>(
        pEdit, pLabel, false, record.nInputTimeout ? record.nInputTimeout : DefaultInputSeconds,
        record.nScreenWidth[record.nResolutionIndex],
        record.nScreenHeight[record.nResolutionIndex]);
    connect(pContext.get(), &VeltaInputPanelContext::input_okay, this, &ProtectionPage::OnInputOk);
    connect(pContext.get(), &VeltaInputPanelContext::input_canceled, this,
            &ProtectionPage::OnInputFailure);
}

void ProtectionPage::EnterPassword()
{
    if (!pContext) {
        createContext();
    }
    pContext->showPanel();
}

void ProtectionPage::OnInputOk()
{
    const bool bCorrect = pEdit->text() == pSettings->working.configPassword;
    pEdit->clear(); // not to stand behind the box
    if (bCorrect) {
        nFailedAttempts = 0;
        pSettings->working.bUnlocked = true;
        QCoreApplication::instance()->removeEventFilter(this);
        pWizard->RestoreButtons();
        pWizard->RestartAtSecondPage();
        return;
    }
    if (nFailedAttempts >= MaxAttempts - 1) {
        if (reportWrongPassword(QString())) {
            pWizard->reject();
        }
        return;
    }
    ++nFailedAttempts;
    const int nLeft = MaxAttempts - nFailedAttempts;
    const QString tries = nLeft > 1 ? tr("tries") : tr("try");
    if (reportWrongPassword(tr(" You have %1 %2 left.").arg(nLeft).arg(tries))) {
        QTimer::singleShot(EntryDelay, this, &ProtectionPage::EnterPassword);
    }
}

// False when the page was destroyed while the box was open.
bool ProtectionPage::reportWrongPassword(const QString &note)
{
    const QPointer<ProtectionPage> pGuard = this;
    VeltaInfoBox box(ERR_PASSWORD, note, BoxSeconds, nullptr, true, true);
    return !pGuard.isNull();
}

void ProtectionPage::OnInputFailure()
{
    pWizard->RestoreButtons();
    pWizard->reject();
}

void ProtectionPage::DeselectText()
{
    pEdit->deselect();
}
