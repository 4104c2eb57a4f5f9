#pragma once

#include <QByteArrayList>
#include <QImage>
#include <QObject>

class DeviceRoot;
class MainWindow;
class QPushButton;
class QWidget;

/// Watches a protected panel at which nobody knows the password: it sees every event of the
/// application, and what the commands of the device root were asked.
///
/// A fault is a page of the wizard behind the password page, a command that ran, or an application
/// that was started by a key while its button showed no mark of the focus.
class LockWatch : public QObject
{
public:
    /// What happened so far, to tell whether the keys have reached anything.
    struct Counts
    {
        int nOpenings = 0; ///< of the wizard
        int nBoxes = 0;
        int nStarts = 0; ///< of the PLC application, deliberate ones
    };

    /// Makes the commands of \a watchedRoot tell. \a pWatched shows its preview page, with the
    /// focus elsewhere than on the button that starts the application. Both outlive this object.
    LockWatch(MainWindow *pWatched, const DeviceRoot *pWatchedRoot);

    /// Looks at everything that is no event. \a bPlcStopped: the last that was written about the
    /// PLC is that it is stopped; only the panel can have started it since.
    void look(bool bPlcStopped);
    /// The next fault that was not handed out yet, each kind once; empty when there is none.
    QByteArray takeFault();
    /// Whether the password was passed: whatever follows is no fault of its own.
    bool isPassed() const { return bPassed; }
    const Counts &counts() const { return count; }
    /// True once for every start of the PLC application.
    bool takeStart();

    bool eventFilter(QObject *pReceiver, QEvent *pEvent) override;

private:
    void report(const QByteArray &fault);
    void seeShown(QWidget *pShown);
    void seeStart();
    QImage picture() const;
    bool isMarked() const;

    MainWindow *pWindow;
    const DeviceRoot *pRoot;
    QPushButton *pStart; ///< the button that starts the PLC application
    QImage plain; ///< of the button and its surroundings, without the focus
    QByteArrayList faults;
    qsizetype nTaken = 0; ///< of the faults
    Counts count;
    bool bMarkedAtPress = false; ///< when the button got its last key
    bool bMarked = false; ///< from press to release, before anything came of it
    bool bStarted = false;
    bool bPassed = false;
};
