#include "benchmarks/lockwatch.h"

#include "app/mainwindow.h"
#include "tests/support/deviceroot.h"
#include "wizard/protectionpage.h"
#include "wizard/veltawizard.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace {

constexpr auto CommandLog = "/commands";
constexpr int MarkMargin = 3; // pixels around the button that may belong to its mark

} // namespace

LockWatch::LockWatch(MainWindow *pWatched, const DeviceRoot *pWatchedRoot)
    : pWindow(pWatched), pRoot(pWatchedRoot),
      pStart(pWatched->findChild<QPushButton *>(QStringLiteral("pushButtonStartApp")))
{
    for (const char *command : {"/bin/syscfg", "/sbin/reboot", "/bin/mount"}) {
        pRoot->writeCommand(QLatin1String(command),
                            QByteArray("echo ") + command + " >>"
                                + QFile::encodeName(pRoot->path(QLatin1String(CommandLog))));
    }
    plain = picture();
    connect(pStart, &QPushButton::released, this,
            [this] { bMarked = std::exchange(bMarkedAtPress, false) && pStart->hasFocus(); });
    connect(pStart, &QPushButton::clicked, this, &LockWatch::seeStart);
    qApp->installEventFilter(this);
}

void LockWatch::report(const QByteArray &fault)
{
    if (!faults.contains(fault)) {
        faults.append(fault);
    }
}

QByteArray LockWatch::takeFault()
{
    return nTaken < faults.size() ? faults.at(nTaken++) : QByteArray();
}

bool LockWatch::takeStart()
{
    return std::exchange(bStarted, false);
}

bool LockWatch::eventFilter(QObject *pReceiver, QEvent *pEvent)
{
    if (pEvent->type() == QEvent::Show && pReceiver->isWidgetType()) {
        seeShown(static_cast<QWidget *>(pReceiver));
    } else if (pEvent->type() == QEvent::KeyPress && pReceiver == pStart) {
        bMarkedAtPress = pStart->hasFocus() && isMarked();
    }
    return false;
}

void LockWatch::seeShown(QWidget *pShown)
{
    if (qobject_cast<VeltaWizard *>(pShown)) {
        ++count.nOpenings;
    } else if (qobject_cast<QMessageBox *>(pShown)) {
        ++count.nBoxes;
    } else if (qobject_cast<QWizardPage *>(pShown) && !qobject_cast<ProtectionPage *>(pShown)) {
        bPassed = true;
        report(QByteArray("past the password: ") + pShown->metaObject()->className());
    }
}

void LockWatch::seeStart()
{
    ++count.nStarts;
    bStarted = true;
    // Not its focus of now: where the application cannot be started the panel has moved it on.
    if (!std::exchange(bMarked, false)) {
        report("a key started the PLC application while its button had no mark");
    }
}

void LockWatch::look(bool bPlcStopped)
{
    if (pRoot->exists(QLatin1String(CommandLog)) && !bPassed) {
        bPassed = true;
        report("commands ran: " + pRoot->read(QLatin1String(CommandLog)).simplified());
    }
    if (bPlcStopped && !bStarted
        && !pRoot->read(QStringLiteral("/simulator/firmware.state")).contains("\nstate=2\n")) {
        report("the PLC application was started without its button");
    }
    if (pStart->hasFocus() && pStart->isVisible() && !QApplication::activeModalWidget()
        && !isMarked()) {
        report("the focus stands, without a mark, on the button that starts the PLC application");
    }
    const auto wizards = pWindow->findChildren<VeltaWizard *>();
    for (const VeltaWizard *pWizard : wizards) {
        if (pWizard->isVisible() && pWizard->currentId() > ProtectionPageId && !bPassed) {
            bPassed = true;
            report("past the password: page " + QByteArray::number(pWizard->currentId()));
        }
    }
}

QImage LockWatch::picture() const
{
    const QRect place(pStart->mapTo(pWindow, QPoint()), pStart->size());
    constexpr int M = MarkMargin;
    return pWindow->grab(place.adjusted(-M, -M, M, M)).toImage();
}

bool LockWatch::isMarked() const
{
    return picture() != plain;
}
