#include "tests/support/boxwatcher.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTextDocumentFragment>

BoxWatcher::BoxWatcher(int nReadingMs)
{
    connect(&timer, &QTimer::timeout, this, &BoxWatcher::look);
    timer.start(nReadingMs);
}

void BoxWatcher::look()
{
    QWidget *pModal = QApplication::activeModalWidget();
    if (!pModal) {
        return;
    }
    auto *pBox = qobject_cast<QMessageBox *>(pModal);
    if (!pBox) {
        pBox = pModal->findChild<QMessageBox *>();
    }
    if (pBox && !pBox->buttons().isEmpty()) {
        seen += QTextDocumentFragment::fromHtml(pBox->text()).toPlainText().simplified();
        pressed += pBox->buttons().constFirst()->text();
        pBox->buttons().constFirst()->click();
    }
}
