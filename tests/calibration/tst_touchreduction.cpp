#include "calibration/calibrationrecord.h"
#include "calibration/touchreduction.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <limits>

using RawPoints = QList<RawPoint>;

class TestTouchReduction : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void median_data()
    {
        QTest::addColumn<RawPoints>("samples");
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");

        constexpr int Max = std::numeric_limits<int>::max();
        QTest::newRow("one") << RawPoints{{7, 9}} << 7 << 9;
        QTest::newRow("two: average, cut off") << RawPoints{{7, 9}, {10, 12}} << 8 << 10;
        QTest::newRow("two, below zero") << RawPoints{{-7, -9}, {-10, -12}} << -8 << -10;
        QTest::newRow("two, no overflow") << RawPoints{{Max, -Max}, {Max, -Max}} << Max << -Max;
        QTest::newRow("axes apart") << RawPoints{{1, 30}, {2, 10}, {3, 20}} << 2 << 20;
        QTest::newRow("wild at press and release")
            << RawPoints{{0, 4095}, {500, 600}, {502, 602}, {501, 601}, {4095, 0}} << 501 << 601;
        RawPoints drift;
        for (int i = 0; i < 127; ++i) {
            drift.append({1000 + i, 2000 - 2 * i});
        }
        QTest::newRow("drifting") << drift << 1063 << 1874;
    }
    void median()
    {
        QFETCH(RawPoints, samples);
        const RawPoint position = medianPosition({samples.cbegin(), samples.cend()});
        QTEST(position.x, "x");
        QTEST(position.y, "y");
    }

    void tolerance_data()
    {
        QTest::addColumn<int>("maximumX");
        QTest::addColumn<int>("maximumY");
        QTest::addColumn<int>("expected");

        QTest::newRow("none known") << 0 << 0 << 51;
        QTest::newRow("x only") << 4095 << 0 << 51;
        QTest::newRow("y only") << 0 << 4095 << 51;
        QTest::newRow("y only, short") << 0 << 800 << 40;
        QTest::newRow("both") << 800 << 480 << 24;
        QTest::newRow("12 bit") << 4095 << 4095 << 204;
        QTest::newRow("16 bit") << 65535 << 65535 << 3276;
        QTest::newRow("tiny") << 19 << 4095 << 0;
    }
    void tolerance()
    {
        QFETCH(int, maximumX);
        QFETCH(int, maximumY);
        QTEST(int(touchTolerance(quint16(maximumX), quint16(maximumY))), "expected");
    }

    void samePlace_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<bool>("same");

        QTest::newRow("same") << 1000 << 1000 << true;
        QTest::newRow("at the tolerance") << 1051 << 949 << true;
        QTest::newRow("beyond in x") << 1052 << 1000 << false;
        QTest::newRow("beyond in y, below") << 1000 << 948 << false;
        QTest::newRow("far beyond 32 bit apart")
            << std::numeric_limits<int>::min() << 1000 << false;
    }
    void samePlace()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        QTEST(isSamePlace({1000, 1000}, {x, y}, 51), "same");
    }

    void targets_data()
    {
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<QList<QPoint>>("expected");

        QTest::newRow("800x480") << QSize(
            800, 480) << QList<QPoint>{{50, 50}, {750, 50}, {750, 430}, {50, 430}, {400, 240}};
        QTest::newRow("240x320") << QSize(
            240, 320) << QList<QPoint>{{50, 50}, {190, 50}, {190, 270}, {50, 270}, {120, 160}};
    }
    void targets()
    {
        QFETCH(QSize, screen);
        const auto points = crosshairTargets(screen);
        QTEST(QList<QPoint>(points.begin(), points.end()), "expected");
    }

    void pairs_data()
    {
        QTest::addColumn<int>("rotation");
        QTest::addColumn<QByteArray>("device"); ///< indices of the record's points
        QTest::addColumn<QList<QPoint>>("screen");

        const QList<QPoint> landscape{{50, 50}, {750, 50}, {750, 430}, {50, 430}, {400, 240}};
        QTest::newRow("0") << 0 << QByteArray("01234") << landscape;
        QTest::newRow("1") << 1 << QByteArray("12304") << landscape;
        QTest::newRow("2") << 2 << QByteArray("23014") << landscape;
        QTest::newRow("3") << 3 << QByteArray("30124") << landscape;
    }
    void pairs()
    {
        QFETCH(int, rotation);
        QFETCH(QByteArray, device);
        QFETCH(QList<QPoint>, screen);

        // The panel is 800 x 480, turned or not: the pairs are always those of the panel.
        const auto targets = crosshairTargets(untransformed({800, 480}, rotation));
        CalibrationRecord record;
        for (int i = 0; i < CalibrationRecord::PointCount; ++i) {
            const auto index = std::size_t(i);
            record.rawX[index] = 1000 + i;
            record.rawY[index] = 2000 + i;
            record.screenX[index] = targets[index].x();
            record.screenY[index] = targets[index].y();
        }
        const PointerCalibrationData data = calibrationPairs(record, rotation);
        for (std::size_t i = 0; i < CalibrationRecord::PointCount; ++i) {
            const int index = device[qsizetype(i)] - '0';
            QCOMPARE(data.devPoints[i], (RawPoint{1000 + index, 2000 + index}));
            QCOMPARE(data.screenPoints[i], screen[qsizetype(i)]);
        }
        QCOMPARE(storedPairs(storedRecord(data)), data);
    }
};

PANEL_TEST_MAIN(TestTouchReduction)
#include "tst_touchreduction.moc"
