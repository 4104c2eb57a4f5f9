#include "input/inputcountdown.h"
#include "input/keyrepeat.h"
#include "tests/support/devicetest.h"

class TestKeypad : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void repeatsInThreePhases()
    {
        KeyRepeat repeat;
        const auto *pTimer = repeat.findChild<QTimer *>();
        int nFirst = 0;
        int nSecond = 0;
        repeat.start([&] { ++nFirst; });
        repeat.start([&] { ++nSecond; }); // another key, while the first is held
        QCOMPARE(pTimer->interval(), 500);
        for (const int interval : {200, 200, 200, 200, 100, 100, 100}) {
            repeat.repeat();
            QCOMPARE(pTimer->interval(), interval);
        }
        QCOMPARE(nFirst, 7);
        QCOMPARE(nSecond, 0);
        repeat.stop();
        QVERIFY(!pTimer->isActive());
        repeat.repeat(); // of nothing
        QCOMPARE(nFirst, 7);
        repeat.start([&] { ++nSecond; });
        QCOMPARE(pTimer->interval(), 500);
        repeat.repeat();
        QCOMPARE(nSecond, 1);
    }

    void countsNothingDown()
    {
        InputCountdown none(0);
        none.restart();
        QVERIFY(!none.isUsed() && !none.findChild<QTimer *>()->isActive());
    }
};

PANEL_TEST_MAIN(TestKeypad)
#include "tst_keypad.moc"
