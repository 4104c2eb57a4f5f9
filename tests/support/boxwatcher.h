#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QTimer>

/// Stands for an operator who reads every message box and presses its first button. Lives around
/// code that runs modal boxes.
class BoxWatcher
{
public:
    /// \a nReadingMs: how long the operator looks at a box before pressing.
    explicit BoxWatcher(int nReadingMs = 5)
    {
        QObject::connect(&timer, &QTimer::timeout, [this] { look(); });
        timer.start(nReadingMs);
    }
    Q_DISABLE_COPY(BoxWatcher)

    /// Texts of the boxes seen, in order, on one line and without markup.
    const QStringList &texts() const { return seen; }
    /// Texts of the buttons pressed, as they were then.
    const QStringList &buttons() const { return pressed; }

private:
    void look()
    {
        QWidget *pModal = QApplication::activeModalWidget();
        auto *pBox = qobject_cast<QMessageBox *>(pModal);
        if (pModal && !pBox) {
            pBox = pModal->findChild<QMessageBox *>();
        }
        if (pBox && !pBox->buttons().isEmpty()) {
            seen += QTextDocumentFragment::fromHtml(pBox->text()).toPlainText().simplified();
            pressed += pBox->buttons().constFirst()->text();
            pBox->buttons().constFirst()->click();
        }
    }

    QTimer timer;
    QStringList seen;
    QStringList pressed;
};
