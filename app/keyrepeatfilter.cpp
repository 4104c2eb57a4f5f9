#include "app/keyrepeatfilter.h"

#include <QAbstractButton>
#include <QKeyEvent>

bool KeyRepeatFilter::eventFilter(QObject *pReceiver, QEvent *pEvent)
{
    if (pEvent->type() != QEvent::KeyPress) {
        return false;
    }
    const auto *pKey = static_cast<QKeyEvent *>(pEvent);
    return pKey->isAutoRepeat() && (pKey->key() == Qt::Key_Return || pKey->key() == Qt::Key_Enter)
        && qobject_cast<QAbstractButton *>(pReceiver);
}
