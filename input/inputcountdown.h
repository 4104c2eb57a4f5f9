#pragma once

#include <QObject>
#include <QTimer>

/// The time-out of a password input: seconds that run down, unless the operator does something.
/// Without widgets; GUI thread only.
class InputCountdown : public QObject
{
    Q_OBJECT

public:
    /// \a seconds is the full length, 0 for no count-down at all. It does not run yet.
    explicit InputCountdown(quint8 seconds, QObject *parent = nullptr);
    ~InputCountdown() override;

    /// Whether there is a count-down.
    bool isUsed() const { return nSeconds > 0; }
    /// Starts from the full length, where there is a count-down.
    void restart();
    /// The same, unless it has been stopped: the release of the key that ended the input must not
    /// wake it up again.
    void extend();
    void stop();
    /// Tells the seconds left, after a step down unless \a showOnly.
    void step(bool showOnly);

Q_SIGNALS:
    void remaining(int seconds);
    /// No second is left. Follows remaining(), at every step that finds it so.
    void expired();

private:
    QTimer timer{this};
    quint8 nSeconds;
    quint8 nRemaining = 0;
};
