#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

/// Repeats what a held key of the keypad does: after a first delay, then slowly, then fast. It ends
/// by stop() alone. Without widgets; GUI thread only.
class KeyRepeat : public QObject
{
    Q_OBJECT

public:
    // Touched keys are repeated by their buttons, without the third phase.
    static constexpr std::chrono::milliseconds First{500};
    static constexpr std::chrono::milliseconds Slow{200};
    static constexpr std::chrono::milliseconds Fast{100};
    static constexpr int FastFromCount = 5;

    explicit KeyRepeat(QObject *parent = nullptr);
    ~KeyRepeat() override;

    /// Calls \a effect at each repetition. A repeat that runs goes on instead.
    void start(std::function<void()> effect);
    void stop();
    /// One repetition, as the timer does it.
    void repeat();

private:
    QTimer timer{this};
    std::function<void()> again;
    int nCount = 0;
};
