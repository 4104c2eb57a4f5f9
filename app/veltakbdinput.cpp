#include "app/veltakbdinput.h"

#include <QApplication>
#include <QKeyEvent>

#include <algorithm>
#include <iterator>

namespace {

struct KeyTranslation
{
    int nReceived;
    int nSent;
};

constexpr KeyTranslation KeyTable[] = {
    {Qt::Key_S, Qt::Key_Tab},
    {Qt::Key_T, Qt::Key_Backtab},
    {Qt::Key_R, Qt::Key_Backspace},
};

} // namespace

VeltaKbdInput::VeltaKbdInput(QWidget *target) : pTarget(target)
{ }

bool VeltaKbdInput::handleKey(QKeyEvent *event)
{
    const auto *pRow =
        std::find_if(std::begin(KeyTable), std::end(KeyTable),
                     [event](const KeyTranslation &row) { return row.nReceived == event->key(); });
    QWidget *pReceiver = pTarget ? pTarget.data() : QApplication::activeModalWidget();
    if (!pReceiver) {
        pReceiver = parentWidget();
    }
    if (pRow == std::end(KeyTable) || !pReceiver) {
        event->ignore();
        return false;
    }
    // The press may destroy the receiver (it may close a dialog): the release then goes nowhere.
    const QPointer<QWidget> pGuard = pReceiver;
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        if (pGuard) {
            QKeyEvent key(type, pRow->nSent, Qt::NoModifier, QString(), false, 1);
            QCoreApplication::sendEvent(pGuard, &key);
        }
    }
    event->accept();
    return true;
}
