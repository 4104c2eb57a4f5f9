#pragma once

#include <QObject>
#include <QPointer>

class QWindow;

/// Leaves the screen to the runtime's visualisation while no window of the program is on it.
///
/// Qt's platforms that put the windows together themselves (linuxfb, vnc) paint black where a
/// window has been hidden, which would be over what the visualisation has just drawn there. Their
/// screen object writes pixels for one reason alone: a QEvent::UpdateRequest that it has posted to
/// itself. So these events are swallowed as long as no window is visible and has something to show.
/// The screen believes then that its event is still on its way and posts no other, and it keeps the
/// area that is due; so at the next window one is posted in its place, behind the painting of the
/// window, which brings the page whole and never a black picture in front of it. This also keeps
/// what was on the screen before the first page.
///
/// One object per process, made after the application object and before the first window is hidden;
/// destroyed before the application. On other platforms it only tells of the first frame. GUI
/// thread.
class ScreenHandover : public QObject
{
    Q_OBJECT

public:
    /// \a screen: what writes the screen, not owned; null where that is not the platform's screen.
    explicit ScreenHandover(QObject *screen = compositor(), QObject *parent = nullptr);

    /// The platform's own screen object, when it puts the windows together itself; else null.
    static QObject *compositor();

    bool eventFilter(QObject *receiver, QEvent *event) override;

Q_SIGNALS:
    /// The first window has been painted and is on the screen.
    void firstFrame();

protected:
    bool event(QEvent *event) override;

private:
    void noteExposure(const QWindow &window);
    bool filterUpdate(QEvent *event);
    void noteFrame();

    QPointer<QObject> pComposing;
    bool bUpdateOwed = false; ///< the screen waits for an event that has been swallowed
    bool bFirstFrame = true; ///< still to come
};
