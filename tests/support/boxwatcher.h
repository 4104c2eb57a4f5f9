#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

class QMessageBox;

/// Stands for an operator who reads every message box and presses its first button. Lives around
/// code that runs modal boxes.
class BoxWatcher : public QObject
{
    Q_OBJECT

public:
    /// \a nReadingMs: how long the operator looks at a box before pressing.
    explicit BoxWatcher(int nReadingMs = 5);

    /// Texts of the boxes seen, in order, on one line and without markup.
    const QStringList &texts() const { return seen; }
    /// Texts of the buttons pressed, as they were then.
    const QStringList &buttons() const { return pressed; }

private:
    void look();

    QTimer timer;
    QStringList seen;
    QStringList pressed;
};
