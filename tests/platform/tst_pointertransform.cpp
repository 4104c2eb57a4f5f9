#include "platform/pointertransform.h"
#include "platform/screenrotation.h"
#include "tests/support/devicetest.h"

#include <QTransform>

#include <cmath>
#include <limits>

namespace {

constexpr QSize Screen(800, 480);
constexpr std::array<QPoint, 5> Targets{QPoint(50, 50), QPoint(750, 50), QPoint(750, 430),
                                        QPoint(50, 430), QPoint(400, 240)};

/// What a touchscreen that maps the screen so reports for a finger at \a pixel.
RawPoint touch(const QTransform &panel, QPoint pixel)
{
    const QPointF raw = panel.map(QPointF(pixel));
    return {int(std::lround(raw.x())), int(std::lround(raw.y()))};
}

CalibrationPairs pairs(const std::array<RawPoint, 5> &raw,
                       const std::array<QPoint, 5> &screen = Targets)
{
    return {raw, screen};
}

} // namespace

class TestPointerTransform : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void fitsPanel_data()
    {
        // Raw x and y of the screen's x, of its y, and of its corner.
        row("as the screen", QTransform(1, 0, 0, 1, 0, 0));
        row("12 bit", QTransform(4.2, 0, 0, 7.1, 200, 310));
        row("16 bit", QTransform(75, 0, 0, 120, 1000, 2000));
        row("skewed", QTransform(4.2, 0, 0.336, 7.1, 200, 310));
        row("skewed, swapped, far off", QTransform(0, 4.2, -7.1, -0.42, 30000, -900));
    }
    void fitsPanel()
    {
        FETCH(QTransform, panel);
        std::array<RawPoint, 5> raw;
        std::ranges::transform(Targets, raw.begin(), [&](QPoint at) { return touch(panel, at); });
        const auto transform = PointerTransform::fit(pairs(raw));
        QVERIFY(transform);
        QCOMPARE(PointerTransform::parse(transform->toFile()), transform);

        for (int x = 0; x < Screen.width(); x += 47) {
            for (int y = 0; y < Screen.height(); y += 41) {
                const QPoint pixel(x, y);
                const QPoint off = transform->map(touch(panel, pixel)) - pixel;
                QVERIFY2(
                    qMax(std::abs(off.x()), std::abs(off.y())) <= 1,
                    qPrintable(QString::asprintf("%d,%d off by %d,%d", x, y, off.x(), off.y())));
            }
        }
        for (const QPoint target : Targets) {
            QCOMPARE(transform->map(touch(panel, target)), target);
        }
    }

    void leastSquares()
    {
        // One of five touches 10 raw units off: the error is shared by all five, as the sum of
        // squares wants it, and not taken by any three of them.
        CalibrationPairs measured =
            pairs({RawPoint{-100, -100}, {100, -100}, {100, 100}, {-100, 100}, {0, 0}},
                  {QPoint(0, 0), {200, 0}, {200, 200}, {0, 200}, {100, 100}});
        measured.screenPoints[4] = {110, 100};
        const auto transform = PointerTransform::fit(measured);
        QVERIFY(transform);
        QCOMPARE(transform->map({-100, -100}), QPoint(2, 0));
        QCOMPARE(transform->map({0, 0}), QPoint(102, 100));
        QCOMPARE(transform->map({100, 100}), QPoint(202, 200));
    }

    void refuses_data()
    {
        row("one point", pairs({RawPoint{7, 9}, {7, 9}, {7, 9}, {7, 9}, {7, 9}}));
        row("horizontal",
            pairs({RawPoint{0, 900}, {900, 900}, {2000, 900}, {3000, 900}, {4000, 900}}));
        row("vertical, shaking",
            pairs({RawPoint{99, 0}, {100, 900}, {101, 2000}, {100, 3000}, {99, 4000}}));
        row("diagonal",
            pairs({RawPoint{0, 0}, {1000, 1000}, {2000, 2000}, {3000, 3000}, {4000, 4000}}));
        row("diagonal, shaking",
            pairs({RawPoint{0, 3}, {1000, 998}, {2000, 2005}, {3000, 2996}, {4000, 4002}}));
        row("screen on one line",
            pairs({RawPoint{0, 0}, {4000, 0}, {4000, 4000}, {0, 4000}, {2000, 2000}},
                  {QPoint(0, 50), {100, 50}, {200, 50}, {300, 50}, {400, 50}}));
        constexpr int Far = std::numeric_limits<int>::max();
        row("offset beyond 32 bit",
            pairs({RawPoint{Far - 400, 0}, {Far, 0}, {Far, 400}, {Far - 400, 400}, {Far, 200}}));
        row("factor beyond 32 bit",
            pairs({RawPoint{0, 0}, {9, 0}, {9, 9}, {0, 9}, {4, 4}},
                  {QPoint(0, 0), {900000, 0}, {900000, 480}, {0, 480}, {400000, 240}}));
    }
    void refuses()
    {
        FETCH(CalibrationPairs, refused);
        QVERIFY(!PointerTransform::fit(refused));
    }

    void parses_data()
    {
        const QPoint nowhere;
        row("seven numbers", "131072 0 65536 0 65536 131072 65536", true, QPoint(201, 202));
        row("order", "1 2 3 4 5 6 1\n", true, QPoint(503, 1406));
        row("lines", "\t65536 0\r\n0 0 65536\n\n0 65536\r\n", true, QPoint(100, 200));
        row("of ts_calibrate", "1 0 0 0 1 0 1 800 480 0", true, QPoint(100, 200));
        row("turned once", "1 0 0 0 1 0 1 800 480 1", true, QPoint(200, 699));
        row("turned twice", "1 0 0 0 1 0 1 800 480 2", true, QPoint(699, 279));
        row("turned three times", "1 0 0 0 1 0 1 800 480 3", true, QPoint(279, 100));
        row("empty", QByteArray(), false, nowhere);
        row("text", "not calibrated\n", false, nowhere);
        row("six numbers", "1 2 3 4 5 6\n", false, nowhere);
        row("divisor 0", "1 0 0 0 1 0 0", false, nowhere);
        row("divisor -1", "1 0 0 0 1 0 -1", false, nowhere);
        row("beyond 32 bit", "4294967296 0 0 0 1 0 1", false, nowhere);
        row("fraction", "1.5 0 0 0 1 0 1", false, nowhere);
        row("everything at one line", "1 2 0 2 4 0 1", false, nowhere);
        row("rotation 4", "1 0 0 0 1 0 1 800 480 4", false, nowhere);
        row("1 MB", QByteArray(1 << 20, '7'), false, nowhere);
        row("1 MB of numbers", QByteArray("7 ").repeated(1 << 19), false, nowhere);
    }
    void parses()
    {
        FETCH(QByteArray, content, bool, valid, QPoint, mapped);
        const auto transform = PointerTransform::parse(content);
        QCOMPARE(transform.has_value(), valid);
        if (valid) {
            QCOMPARE(transform->map({100, 200}), mapped);
            QCOMPARE(PointerTransform::parse(transform->toFile())->map({100, 200}),
                     transform->map({100, 200}));
        }
    }
};

PANEL_TEST_MAIN(TestPointerTransform)
#include "tst_pointertransform.moc"
