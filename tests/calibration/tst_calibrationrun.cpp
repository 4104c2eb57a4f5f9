#include "calibration/calibrationrun.h"
#include "tests/calibration/calibrationtest.h"

#include <QEventLoop>

#include <array>

namespace {

using enum CalibrationState;
using Event = CalibrationEvent;

constexpr std::array<const char *, CalibrationStates> StateNames{
    "Idle",         "Resting",  "CountingDown", "Sampling",  "Applying",
    "ApplyingLeft", "Awaiting", "AwaitingLeft", "Restoring", "RestoringLeft"};
constexpr std::array<const char *, CalibrationEvents> EventNames{
    "Request", "Start",         "StopCountdown", "StartTick",         "AcceptTick",
    "Expired", "PointMeasured", "AllMeasured",   "TouchscreenFailed", "Applied",
    "Accept",  "Restore",       "Restored",      "Withdraw"};

bool isAwaiting(CalibrationState state)
{
    return state == Awaiting || state == AwaitingLeft;
}

} // namespace

/// In place of the C library's: hundreds of runs wait for no disk.
extern "C" int fsync(int /*fd*/)
{
    return 0;
}

/// In place of the page, the panel and the operator, for a run on a touchscreen that real tslib
/// reads.
class TestCalibrationRun : public CalibrationTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        DeviceTest::init();
        openPointer();
        pRun = std::make_unique<CalibrationRun>(
            CalibrationPace{std::chrono::milliseconds(0), std::chrono::milliseconds(0)});
        bCloseEarly = false;
        boxes.clear();
        connectRun();
    }

    void steps_data()
    {
        // By the state and, in the order of EventNames, by the event; a dot: it stays.
        const QByteArray letters = "IRCSPpAaTt"; // of the states
        static constexpr std::array<const char *, CalibrationStates> Next{
            "CS.......A....", ".S.......A...I", ".SR..S...A...I", ".......AR....I",
            ".........A...p", "P........a....", ".....C....RC.a", "A....I....II..",
            ".S..........Ct", "TS..........I."};
        for (int i = 0; i < CalibrationStates * CalibrationEvents; ++i) {
            const auto state = static_cast<CalibrationState>(i / CalibrationEvents);
            const int event = i % CalibrationEvents;
            const char next = Next[std::size_t(state)][event];
            row(QByteArray(StateNames[std::size_t(state)]) + ", " + EventNames[std::size_t(event)],
                state, event,
                next == '.' ? state : static_cast<CalibrationState>(letters.indexOf(next)));
        }
    }
    /// Every event in every state: where it leads, and that touchscreen, pointer, file, note and
    /// count-down are those of that state, also when the program ends there.
    void steps()
    {
        FETCH(CalibrationState, state, int, event, CalibrationState, next);
        const auto fired = static_cast<Event>(event);
        bringTo(state, [&] {
            fire(fired);
            QCOMPARE(pRun->state(), next);
        });

        const CalibrationState last = pRun->state();
        const bool bSampling = last == Sampling;
        QCOMPARE(pRun->calibrationData().touchscreen() != nullptr, bSampling);
        QCOMPARE(pRun->samplingThread()->isRunning(), bSampling);
        QCOMPARE(pServer->isPointerSuspended(), bSampling);
        QCOMPARE(pRun->findChild<QTimer *>()->isActive(), last == CountingDown || isAwaiting(last));
        const bool bAccepted = isAwaiting(state) && fired == Event::Accept;
        const bool bMeasured = (state >= Applying && isAwaiting(last))
            || (state == Sampling && fired == Event::AllMeasured);
        QCOMPARE(root().read(CalibrationFile) != OldFile, bMeasured || bAccepted);
        QCOMPARE(WindowServer::isCalibrationUnaccepted(), bMeasured);
        pRun.reset();
        QCOMPARE(root().read(CalibrationFile) != OldFile, bAccepted);
        QVERIFY(!WindowServer::isCalibrationUnaccepted() && !pServer->isPointerSuspended());
    }

    void tells_data()
    {
        // The boxes of a run, of its acceptance and of its restore, each with what it names.
        const QStringList none;
        const QStringList restored{"0 "};
        const QStringList file{"-212 /etc/pointercal"};
        row("none", QByteArray(), none, none, restored);
        row("no command to remount", "mount", QStringList{"-233 /nonexistent", "-234 /nonexistent"},
            none,
            QStringList{"-233 /nonexistent", "-234 /nonexistent", "-212 /nonexistent/pointercal"});
        row("file cannot be written", "file", file, none, restored);
        row("file cannot be restored", "restore", none, none, file);
        row("touches on one line", "line", QStringList{"-235 /etc/pointercal"}, none, restored);
        row("touchscreen closed by somebody", "close", QStringList{"-210 closeTouchscreen"}, none,
            restored);
        row("note stays", "note", none, QStringList{"-230 /etc/pointercal"}, restored);
    }
    /// Nothing that was not applied goes without a box.
    void tells()
    {
        FETCH(QByteArray, fault, QStringList, applied, QStringList, accepted, QStringList,
              restored);
        bCloseEarly = fault == "close";
        if (fault == "mount") {
            qputenv("POINTERCAL_FILE", "/nonexistent/pointercal");
        }
        pRun->start();
        if (fault == "file") {
            root().plant(CalibrationFile, "full directory");
            expectWarning(CannotWrite);
        }
        if (fault == "line") {
            expectWarning("refused");
            for (int i = 1; i <= CalibrationRecord::PointCount; ++i) {
                pFifo->tap({300 * i, 300 * i});
            }
            waitForEnd();
        } else {
            measure();
        }
        QCOMPARE(std::exchange(boxes, {}), applied);

        if (fault == "note") {
            root().plant(CalibrationFile + ".unaccepted", "full directory");
            for (int i = 0; i < 3; ++i) { // the end of the program says so, too
                expectWarning("Cannot remove");
            }
        }
        pRun->handle(Event::Accept);
        QCOMPARE(std::exchange(boxes, {}), accepted);

        if (fault == "file") {
            root().remove(CalibrationFile);
        } else if (fault == "restore") {
            root().plant(CalibrationFile, "full directory");
            expectWarning(CannotWrite);
        } else if (fault == "mount") {
            expectWarning(CannotWrite);
        }
        pRun->handle(Event::Restore);
        QCOMPARE(boxes, restored);

        // The end of the program tries once more what has failed.
        if (fault == "restore") {
            root().remove(CalibrationFile);
        }
        qunsetenv("POINTERCAL_FILE");
        pRun.reset();
        QCOMPARE(root().read(CalibrationFile), OldFile);
    }

private:
    void closeWindows() override
    {
        pRun.reset();
        CalibrationTest::closeWindows();
    }

    /// As panel and page do it.
    void connectRun()
    {
        pReceiver = std::make_unique<QObject>();
        const VeltaCalibrationThread *pThread = pRun->samplingThread();
        connect(
            pThread, &VeltaCalibrationThread::updateCaldata, pReceiver.get(),
            [this](void *pRecord) {
                pRun->takePoint(*static_cast<const CalibrationRecord *>(pRecord));
            },
            Qt::QueuedConnection);
        connect(
            pThread, &QThread::finished, pReceiver.get(), [this] { pRun->endPoint(); },
            Qt::QueuedConnection);
        connect(pRun.get(), &CalibrationRun::samplingStopped, pReceiver.get(), [this] {
            QCoreApplication::removePostedEvents(pReceiver.get(), QEvent::MetaCall);
        });
        connect(pRun.get(), &CalibrationRun::stateChanged, this, [this] {
            if (bCloseEarly && pRun->state() == Applying) {
                pRun->calibrationData().closeTouchscreen();
            }
        });
        connect(pRun.get(), &CalibrationRun::applied, this,
                [this] { pRun->handle(Event::Applied); });
        connect(pRun.get(), &CalibrationRun::startDue, this, [this] { pRun->start(); });
        connect(pRun.get(), &CalibrationRun::boxDue, this, [this](int nCode, const QString &text) {
            boxes += QStringLiteral("%1 %2").arg(nCode).arg(text);
            if (const auto read = std::exchange(whileBoxIsOpen, nullptr)) {
                read();
            }
        });
    }

    /// Has \a act happen in \a state, which for some is while a box is open.
    void bringTo(CalibrationState state, const std::function<void()> &act)
    {
        const auto inState = [=, this] {
            if (state == ApplyingLeft || state == AwaitingLeft || state == RestoringLeft) {
                pRun->handle(Event::Withdraw);
            }
            QCOMPARE(pRun->state(), state);
            act();
        };
        if (state == Resting || state == CountingDown) {
            pRun->handle(Event::Request);
        }
        if (state == Resting) {
            pRun->handle(Event::StopCountdown);
        }
        if (state < Sampling) {
            return inState();
        }
        bCloseEarly = state == Applying || state == ApplyingLeft; // there is a box about that
        whileBoxIsOpen = bCloseEarly ? inState : std::function<void()>();
        pRun->start();
        if (state == Sampling) {
            return inState();
        }
        measure();
        if (isAwaiting(state)) {
            inState();
        } else if (!bCloseEarly) {
            whileBoxIsOpen = inState;
            pRun->handle(Event::Restore);
        }
    }

    /// The touches of a run say by themselves what they are.
    void fire(Event event)
    {
        if (pRun->state() == Sampling && event == Event::PointMeasured) {
            pFifo->tap(Glass.touch({50, 50}));
            QTRY_COMPARE(pRun->calibrationData().record.screenX[0], 50);
        } else if (pRun->state() == Sampling && event == Event::AllMeasured) {
            measure();
        } else {
            pRun->handle(event);
        }
    }

    void measure()
    {
        touchTargets();
        waitForEnd();
    }

    void waitForEnd()
    {
        QEventLoop loop;
        connect(pRun.get(), &CalibrationRun::stateChanged, &loop, [&] {
            if (pRun->state() != Sampling) {
                loop.quit();
            }
        });
        QTimer::singleShot(RunLimitMs, &loop, &QEventLoop::quit);
        loop.exec();
        QVERIFY(pRun->state() != Sampling);
    }

    std::unique_ptr<CalibrationRun> pRun;
    std::unique_ptr<QObject> pReceiver; ///< of the thread's signals
    std::function<void()> whileBoxIsOpen; ///< what the operator does with the next box
    bool bCloseEarly = false;
    QStringList boxes; ///< code and text of each
};

PANEL_TEST_MAIN(TestCalibrationRun)
#include "tst_calibrationrun.moc"
