#include "platform/tapguard.h"
#include "tests/platform/sheet.h"
#include "tests/support/devicetest.h"

namespace {

qint64 nNow = 0; // milliseconds

constexpr QRect Screen(0, 0, 800, 480);
constexpr QRect Box(100, 100, 200, 100);
constexpr QPoint OnBox(150, 150);
constexpr QPoint Beside(500, 300);
constexpr int WholeTap = 3; // press, move and release

/// What changes at the time 0.
enum Change { Nothing, BoxOpens, BoxCloses, BoxMoves, LowestCloses, BoxRises };

} // namespace

class TestTapGuard : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        DeviceTest::init();
        nNow = -100000;
        pBelow = std::make_unique<Sheet>(Screen);
        pBelow->show();
        QVERIFY(QTest::qWaitForWindowExposed(pBelow.get()));
        pGuard = std::make_unique<TapGuard>(nullptr, [] { return nNow; });
    }

    void drops_data()
    {
        row("window of old", Nothing, true, OnBox, 0, 0, true);
        row("opened, not painted", BoxOpens, false, OnBox, 5, 5, false);
        row("just opened", BoxOpens, true, OnBox, 299, 299, false);
        row("opened a while ago", BoxOpens, true, OnBox, 300, 300, true);
        row("beside one just opened", BoxOpens, true, Beside, 0, 0, true);
        row("just closed, not painted", BoxCloses, false, OnBox, 5, 5, false);
        row("just closed", BoxCloses, true, OnBox, 299, 299, false);
        row("closed a while ago", BoxCloses, true, OnBox, 300, 300, true);
        row("beside one just closed", BoxCloses, true, Beside, 0, 0, true);
        row("just moved away", BoxMoves, true, OnBox, 100, 100, false);
        row("one below has just closed", LowestCloses, true, OnBox, 0, 0, true);
        row("just raised", BoxRises, true, OnBox, 100, 100, false);
        row("beside one just raised", BoxRises, true, Beside, 0, 0, true);
        row("pressed early, delivered late", BoxCloses, true, OnBox, 100, 4000, false);
        row("pressed before, delivered late", BoxOpens, true, OnBox, -200, 4000, false);
        row("waited for long", BoxCloses, true, OnBox, 9000, 20000, true);
    }
    void drops()
    {
        FETCH(Change, change, bool, painted, QPoint, at, int, pressed, int, delivered, bool,
              arrives);
        Sheet box(Box);
        if (change != Nothing && change != BoxOpens) {
            show(box);
            QCOMPARE(box.take().size(), 0);
        }
        if (change == BoxRises) {
            pBelow->raise();
            processAll();
        }
        nNow = 0;
        const std::function<void()> changes[] = {[] {},
                                                 [&] { box.show(); },
                                                 [&] { box.hide(); },
                                                 [&] { box.move(Beside); },
                                                 [this] { pBelow->hide(); },
                                                 [&] { box.raise(); }};
        changes[change]();
        if (painted) {
            processAll();
        }
        nNow = delivered;
        Sheet &target = box.isVisible() && box.geometry().contains(at) ? box : *pBelow;
        tap(target, at, pressed);
        QCOMPARE(target.take().size(), arrives ? WholeTap : 0);
    }

    void typingLosesNothing()
    {
        Sheet keyboard(Screen);
        nNow = 0;
        show(keyboard);
        for (nNow = 300; nNow < 1000; nNow += 20) {
            tap(keyboard, OnBox + QPoint(int(nNow % 7), 0), nNow);
            QCOMPARE(keyboard.take().size(), WholeTap);
        }
    }

    void followsTheFirstPress()
    {
        Sheet box(Box);
        nNow = 0;
        show(box);
        nNow = 250;
        mouse(box, QEvent::MouseButtonPress, OnBox, nNow);
        nNow = 1000; // a finger that stays on it presses nothing later
        mouse(box, QEvent::MouseMove, OnBox, nNow);
        mouse(box, QEvent::MouseButtonRelease, OnBox, nNow);
        QCOMPARE(box.take().size(), 0);
        tap(box, OnBox, nNow);
        QCOMPARE(box.take().size(), WholeTap);
        // A mouse is no finger.
        box.hide();
        QMouseEvent click(QEvent::MouseButtonPress, OnBox, OnBox, Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(pBelow->windowHandle(), &click);
        QCOMPARE(pBelow->take().size(), 1);
    }

    void touches_data()
    {
        // of the first picture when the finger comes down
        row("just opened", 0, false);
        row("there for a while", 2000, true);
    }
    /// Neither a touch nor the mouse events that Qt makes of it.
    void touches()
    {
        FETCH(int, age, bool, arrives);
        static const std::unique_ptr<QPointingDevice> pScreen(QTest::createTouchDevice());
        Sheet box(Box);
        nNow = TapGuard::eventClock() - age + 1000;
        show(box);
        nNow = TapGuard::eventClock() + 1000;
        const QPoint inside = OnBox - Box.topLeft();
        QTest::touchEvent(box.windowHandle(), pScreen.get()).press(0, inside);
        QTest::touchEvent(box.windowHandle(), pScreen.get()).move(0, inside + QPoint(9, 9));
        QTest::touchEvent(box.windowHandle(), pScreen.get()).release(0, inside + QPoint(9, 9));
        QCOMPARE(!box.take().isEmpty(), arrives);
    }

private:
    std::unique_ptr<Sheet> pBelow;
    std::unique_ptr<TapGuard> pGuard;

    void closeWindows() override
    {
        pGuard.reset();
        pBelow.reset();
    }
    static void show(QWidget &window)
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        processAll();
    }
    static void mouse(QWidget &window, QEvent::Type type, QPoint at, qint64 time)
    {
        QMouseEvent event(type, at - window.pos(), at - window.pos(), at, Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                          Qt::NoModifier, TapGuard::tapDevice());
        event.setTimestamp(quint64(time));
        QCoreApplication::sendEvent(window.windowHandle(), &event);
    }
    static void tap(QWidget &window, QPoint at, qint64 time)
    {
        for (const auto type :
             {QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease}) {
            mouse(window, type, at, time);
        }
    }
};

PANEL_TEST_MAIN(TestTapGuard)
#include "tst_tapguard.moc"
