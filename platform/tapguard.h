#pragma once

#include <QHash>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QRegion>
#include <QSet>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

class QMouseEvent;
class QPointingDevice;
class QTouchEvent;
class QWindow;

/// Keeps the second tap of a double tap from the window that the first one has opened or uncovered.
///
/// A press is dropped, with its moves and its release, when it is made earlier than Delay after the
/// first picture in which its window is what lies under the finger: a window that has just been
/// shown, or one that another has just left, however long ago it was painted itself. Judged is the
/// moment at which the finger came down, also when the press is delivered late.
///
/// Guarded are the touches of every touchscreen and the mouse events of tapDevice(); a mouse is
/// not. A calibration run takes its touches from the device itself and loses none. It filters the
/// events of the application while it lives, which ends before the application; GUI thread.
class TapGuard : public QObject
{
    Q_OBJECT

public:
    /// Milliseconds since any moment, in step with the time stamps of the events.
    using Clock = std::function<qint64()>;

    static constexpr std::chrono::milliseconds Delay{300};
    /// No press waits longer for its delivery.
    static constexpr qint64 LongestWaitMs = 10'000;

    explicit TapGuard(QObject *parent = nullptr, Clock ownClock = eventClock);

    /// The clock of Qt's events.
    static qint64 eventClock();
    /// In whose name the pointer handler sends its mouse events; lives as long as the application.
    static const QPointingDevice *tapDevice();

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;
    bool event(QEvent *event) override;

private:
    /// Some other window has come under a finger in an area of the screen.
    struct Change
    {
        QRegion area;
        const QWindow *pShown = nullptr; ///< null: whichever lies there now, as one has left
        int nNumber = 0;
        std::optional<qint64> painted; ///< when this was first seen; empty: not yet
    };

    void noteExposure(QWindow *window);
    void notePlace(QWindow *window);
    void noteDeparture(QWindow *window);
    void noteRaise(const QWindow *window);
    /// What the windows above \a window cover.
    QRegion areaAbove(const QWindow *window) const;
    void addChange(const QRegion &area, const QWindow *shown);
    bool isTooEarly(QWindow *window, QPoint position, qint64 pressed);
    bool filterMouse(QWindow *window, QMouseEvent *event);
    bool filterTouch(QWindow *window, QTouchEvent *event);

    Clock clock;
    QHash<const QWindow *, QRect> places; ///< of the windows that are on the screen
    std::vector<Change> changes; ///< recent ones
    int nLastNumber = 0;
    QSet<const QWindow *> droppedTouches; ///< windows for which one is going on
    bool bPressed = false;
    bool bPressDropped = false;
};
