#include "app/restartsequence.h"
#include "tests/support/devicetest.h"

using State = RestartSequence::State;
using Event = RestartSequence::Event;

class RestartSequenceTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void steps_data()
    {
        const auto asked = Event::Asked;
        const auto good = Event::Succeeded;
        const auto bad = Event::Failed;
        const auto late = Event::TimeUp;
        row("asked twice", QList{asked, asked}, State::Commanded, false);
        row("succeeds", QList{asked, good}, State::Awaited, false);
        row("asked again, succeeds", QList{asked, good, asked, good}, State::Awaited, false);
        row("fails", QList{asked, bad}, State::Failed, true);
        row("fails, then succeeds", QList{asked, bad, asked, good}, State::Awaited, false);
        row("hangs", QList{asked, late}, State::Overdue, true);
        row("hangs, then fails", QList{asked, late, bad}, State::Overdue, true);
        row("does not happen", QList{asked, good, late}, State::Overdue, true);
        // Not waited for 120 s again.
        row("never happens", QList{asked, good, late, asked, good}, State::Overdue, true);
        row("retry fails", QList{asked, good, late, asked, bad}, State::Failed, true);
        row("retry hangs", QList{asked, good, late, asked, late}, State::Overdue, true);
    }
    void steps()
    {
        FETCH(QList<Event>, events, State, state, bool, retry);
        RestartSequence sequence(root().path("/sbin/reboot"));
        for (const Event event : std::as_const(events)) {
            sequence.handle(event);
        }
        QCOMPARE(sequence.state(), state);
        QCOMPARE(sequence.isRetryDue(), retry);
    }

    // The end of the program leaves a shutdown alone, and does not wait for it.
    void goesOnAfterTheEnd()
    {
        root().writeCommand("/sbin/reboot", "sleep 0.3; echo down >\"$PANEL_ROOT/log\"");
        {
            RestartSequence sequence(root().path("/sbin/reboot"));
            QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
            QTimer::singleShot(0, &sequence, &RestartSequence::restart);
            QCoreApplication::exec();
            QCOMPARE(sequence.state(), State::Commanded);
        }
        QVERIFY(!root().exists("/log"));
        QTRY_COMPARE(root().read("/log"), QByteArray("down\n"));
    }
};

PANEL_TEST_MAIN(RestartSequenceTest)
#include "tst_restartsequence.moc"
