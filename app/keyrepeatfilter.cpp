#include "app/keyrepeatfilter.h"

#include <QAbstractButton>
#include <QKeyEvent>

bool KeyRepeatFilter::eventFilter(QObject *receiver, QEvent *event)
{
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const auto *pKey = static_cast<QKeyEvent *>(event);
    return pKey->isAutoRepeat() && (pKey->key() == Qt::Key_Return || pKey->key() == Qt::Key_Enter)
        && qobject_cast<QAbstractButton *>(receiver);
}
