#include "calibration/calibrationrecord.h"
#include "calibration/touchreduction.h"
#include "tests/support/devicetest.h"

#include <limits>

using RawPoints = QList<RawPoint>;

class TestTouchReduction : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void median_data()
    {
        constexpr int Max = std::numeric_limits<int>::max();
        row("one", RawPoints{{7, 9}}, 7, 9);
        row("two: average, cut off", RawPoints{{7, 9}, {10, 12}}, 8, 10);
        row("two, below zero", RawPoints{{-7, -9}, {-10, -12}}, -8, -10);
        row("two, no overflow", RawPoints{{Max, -Max}, {Max, -Max}}, Max, -Max);
        row("axes apart", RawPoints{{1, 30}, {2, 10}, {3, 20}}, 2, 20);
        row("wild at press and release",
            RawPoints{{0, 4095}, {500, 600}, {502, 602}, {501, 601}, {4095, 0}}, 501, 601);
    }
    void median()
    {
        FETCH(RawPoints, samples, int, x, int, y);
        const RawPoint position = medianPosition({samples.cbegin(), samples.cend()});
        QCOMPARE(position.x, x);
        QCOMPARE(position.y, y);
    }

    void tolerance_data()
    {
        row("none known", 0, 0, 51);
        row("x only", 4095, 0, 51);
        row("y only", 0, 4095, 51);
        row("y only, short", 0, 800, 40);
        row("both", 800, 480, 24);
        row("12 bit", 4095, 4095, 204);
        row("16 bit", 65535, 65535, 3276);
        row("tiny", 19, 4095, 0);
    }
    void tolerance()
    {
        FETCH(int, maximumX, int, maximumY, int, expected);
        QCOMPARE(int(touchTolerance(quint16(maximumX), quint16(maximumY))), expected);
    }

    void samePlace_data()
    {
        row("same", 1000, 1000, true);
        row("at the tolerance", 1051, 949, true);
        row("beyond in x", 1052, 1000, false);
        row("beyond in y, below", 1000, 948, false);
        row("far beyond 32 bit apart", std::numeric_limits<int>::min(), 1000, false);
    }
    void samePlace()
    {
        FETCH(int, x, int, y, bool, same);
        QCOMPARE(isSamePlace({1000, 1000}, {x, y}, 51), same);
    }

    void targets_data()
    {
        row("800x480", QSize(800, 480),
            QList<QPoint>{{50, 50}, {750, 50}, {750, 430}, {50, 430}, {400, 240}});
        row("240x320", QSize(240, 320),
            QList<QPoint>{{50, 50}, {190, 50}, {190, 270}, {50, 270}, {120, 160}});
    }
    void targets()
    {
        FETCH(QSize, screen, QList<QPoint>, expected);
        const auto points = crosshairTargets(screen);
        QCOMPARE(QList<QPoint>(points.begin(), points.end()), expected);
    }
};

PANEL_TEST_MAIN(TestTouchReduction)
#include "tst_touchreduction.moc"
