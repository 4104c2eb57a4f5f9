#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

#include <chrono>
#include <memory>

class QTimer;

/// Tells the service manager how the program is: the datagrams of sd_notify(3), sent to the socket
/// that NOTIFY_SOCKET names. Without a manager nothing happens; nothing here ever blocks, and of
/// all that cannot be sent only the first gets a warning line.
///
/// The watchdog (WATCHDOG_USEC) is fed by the event loop, nested loops included, at a third of its
/// limit, from ready() to stopping(). Whoever keeps the loop waiting for a good reason calls
/// feedWatchdog() meanwhile; a call that hangs does not, and so the program is started anew.
///
/// One object per process, made before the application object; the variables are taken out of the
/// environment then, since they are not meant for the commands that the program runs. GUI thread.
class ServiceNotifier
{
public:
    ServiceNotifier();
    ~ServiceNotifier();
    ServiceNotifier(const ServiceNotifier &) = delete;
    ServiceNotifier &operator=(const ServiceNotifier &) = delete;

    /// The program is on the screen. Needs the application object; the watchdog is fed from now on.
    void ready();
    /// The program ends. Called while there is still an application object, if ready() was.
    void stopping();

    /// What the program does, in one line for whoever asks the service manager; the same text again
    /// is not sent. Does nothing without an object of this class.
    static void setStatus(const QString &status);
    /// Feeds the watchdog, when that is due: as cheap as it must be in a loop that waits. Does
    /// nothing without an object of this class.
    static void feedWatchdog();

private:
    void send(const QByteArray &message);
    void feed();

    QByteArray address; ///< of the manager's socket, empty without a manager
    int nSocket = -1;
    std::chrono::milliseconds interval{0}; ///< between two feedings, 0 without a watchdog
    std::unique_ptr<QTimer> pTimer; ///< while the watchdog is fed
    QDeadlineTimer nextFeeding;
    QString sStatus; ///< as sent last
    bool bWarned = false;
};
