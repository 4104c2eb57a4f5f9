#include "calibration/touchreduction.h"
#include "calibration/veltacalibrationthread.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/devicetest.h"
#include "tests/support/ioctlhook.h"

#include <chrono>
#include <limits>
#include <linux/input.h>
#include <pty.h>
#include <thread>
#include <tslib.h>

using namespace std::chrono_literals;

namespace {

using RawPoints = QList<RawPoint>;

/// Far more than any machine takes to end a thread that has been told to.
constexpr int JoinLimitMs = 5000;

struct TouchscreenCloser
{
    void operator()(tsdev *pDevice) const { ts_close(pDevice); }
};
using Touchscreen = std::unique_ptr<tsdev, TouchscreenCloser>;

/// What the thread tells the GUI thread, as it arrives there.
class Listener : public QObject
{
public:
    explicit Listener(VeltaCalibrationThread *pThread)
    {
        const auto type = Qt::QueuedConnection;
        connect(
            pThread, &VeltaCalibrationThread::updateScreenpos, this,
            [this](int x, int y, const QColor &colour) {
                crosses += QPoint(x, y);
                static const QMap<QString, char> letters{{"#000000", 'b'},
                                                         {"#ffff00", 'y'},
                                                         {"#ffffff", 'w'},
                                                         {"#00ff00", 'g'},
                                                         {"#ff0000", 'r'}};
                const char letter = letters.value(colour.name(), '?');
                if (!colours.endsWith(letter)) {
                    colours += letter;
                }
            },
            type);
        connect(
            pThread, &VeltaCalibrationThread::updateCaldata, this,
            [this](void *pRecord) { records += pRecord; }, type);
        connect(
            pThread, &VeltaCalibrationThread::errorCalThread, this,
            [this](short code) { errors += code; }, type);
    }

    QList<QPoint> crosses;
    QByteArray colours; ///< first letters, the same colour in a row once
    QList<void *> records;
    QList<int> errors;
};

} // namespace

/// A file "axes4000" passes for a touchscreen with such axes.
bool answerIoctl(int fd, unsigned long request, void *pArgument, int &)
{
    const QString file = QFileInfo(QStringLiteral("/proc/self/fd/%1").arg(fd)).symLinkTarget();
    const bool bAxis = file.endsWith("axes4000") && _IOC_TYPE(request) == 'E';
    if (bAxis) {
        static_cast<input_absinfo *>(pArgument)->maximum = 4000;
    }
    return bAxis;
}

/// The sampling thread on a touchscreen that real tslib reads.
class TestCalibrationThread : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        DeviceTest::init();
        pFifo = std::make_unique<TouchscreenFifo>(root());
        qputenv("TSLIB_CONFFILE", QFile::encodeName(root().path("/etc/ts.conf")));
        record = {};
    }

    void reduces_data()
    {
        // of samples at 1000, 1001, 1002, ...
        row("1", 1, 1000);
        row("2", 2, 1000);
        row("3", 3, 1001);
        row("126", 126, 1062);
        row("127", 127, 1063);
        row("128", 128, 1063);
        row("300", 300, 1063);
    }
    void reduces()
    {
        FETCH(int, count, int, expected);
        const Touchscreen touchscreen = open(pFifo->path);
        VeltaCalibrationThread thread;
        const Listener gui(&thread);

        // A lifted finger before the touch does not count.
        pFifo->send({9, 9}, 0);
        for (int i = 0; i < count; ++i) {
            pFifo->send({1000 + i, 3000 - i}, 1);
        }
        pFifo->send({9, 9}, 0);
        thread.setup(touchscreen.get(), &record, 0, 50, 60, "Top left");
        sample(thread);

        QCOMPARE(gui.records, {&record});
        QCOMPARE(record.rawX[0], expected);
        const int odd = count % 2 == 0 && count < 127 ? 1 : 0;
        QCOMPARE(record.rawY[0], 4000 - record.rawX[0] - odd);
        QCOMPARE(QPoint(record.screenX[0], record.screenY[0]), QPoint(50, 60));
        QCOMPARE(gui.colours, count > 1 ? "bywg" : "bwg");
        QCOMPARE(gui.crosses.constLast(), QPoint(50, 60));
    }

    void secondPoint_data()
    {
        // whether the environment names the touchscreen
        row("does not tell its axes", false, 51);
        row("named, axes of 4000", true, 200);
    }
    /// The second point glides there, and is asked again while the touch is where the first one
    /// was.
    void secondPoint()
    {
        FETCH(bool, named, int, tolerance);
        if (named) {
            root().write("/dev/input/axes4000", {});
            qputenv("TSLIB_TSDEVICE", QFile::encodeName(root().path("/dev/input/axes4000")));
        }
        const Touchscreen touchscreen = open(pFifo->path);
        VeltaCalibrationThread thread(nullptr, {0ms, 0ms});
        thread.setup(touchscreen.get(), &record, 0, 50, 50, "Top left");
        pFifo->tap({1000, 1000});
        sample(thread);

        Listener gui(&thread);
        thread.setup(touchscreen.get(), &record, 1, 750, 40, "Top right");
        const RawPoint farther{1001 + tolerance, 1000};
        pFifo->tap({1000 + tolerance, 1000 - tolerance});
        pFifo->tap(farther);
        sample(thread);
        QCOMPARE(RawPoint({record.rawX[1], record.rawY[1]}), farther);
        QCOMPARE(gui.colours, "gbwrbwg");
        QCOMPARE(gui.crosses[0], QPoint(50, 50));
        QCOMPARE(gui.crosses[9], QPoint(50 + 9 * 70, 41));
        QCOMPARE(gui.crosses[10], QPoint(750, 40));

        // A new run knows no point before its first.
        gui.colours.clear();
        thread.setup(touchscreen.get(), &record, 0, 50, 50, "Top left");
        pFifo->tap(farther);
        sample(thread);
        QCOMPARE(gui.colours, "bwg");
    }

    void stops_data()
    {
        // of the screen at the stop // samples with pressure // and one without
        row("before the touch", 0, "Top right", 0, false, 'b');
        row("during the touch", 0, "Top right", 2, false, 'y');
        row("during a long touch", 0, "Top right", 300, false, 'y');
        row("while gliding", 1, "Top right", 0, false, 'g');
        row("in the pause of a bad touch", 1, "Top right", 1, true, 'r');
        row("in the last pause", 0, "Center", 1, true, 'g');
    }
    void stops()
    {
        FETCH(int, index, QString, name, int, pressed, bool, released, char, colour);
        const Touchscreen touchscreen = open(pFifo->path);
        // Where the thread is to be caught it stays longer than any machine takes to look.
        VeltaCalibrationThread thread(nullptr, {pressed == 0 ? 30min : 0min, 30min});
        if (index > 0) {
            thread.setup(touchscreen.get(), &record, 0, 50, 50, "Top left");
            pFifo->tap({1000, 1000});
            sample(thread);
        }
        const Listener gui(&thread);
        thread.setup(touchscreen.get(), &record, index, 750, 50, name);
        for (int i = 0; i < pressed; ++i) {
            pFifo->send({1000, 1000}, 1);
        }
        if (released) {
            pFifo->send({1000, 1000}, 0);
        }
        thread.start();
        QTRY_VERIFY(gui.colours.endsWith(colour) && gui.crosses.size() > pressed);

        thread.stop();
        QVERIFY(!thread.isRunning());
        QCoreApplication::processEvents();
        QVERIFY(gui.records.isEmpty() && gui.errors.isEmpty());

        // The same object samples the next run.
        thread.setup(touchscreen.get(), &record, 0, 50, 50, "Top left");
        pFifo->tap({3000, 3000});
        sample(thread);
        QCOMPARE(gui.records.size(), 1);
    }

    /// A device that vanishes while the thread waits for its samples.
    void unplugged()
    {
        int plug = -1;
        int device = -1;
        char path[128];
        QVERIFY(openpty(&plug, &device, path, nullptr, nullptr) == 0);
        const Touchscreen touchscreen = open(QFile::decodeName(path));
        VeltaCalibrationThread thread;
        const Listener gui(&thread);
        thread.setup(touchscreen.get(), &record, 0, 50, 50, "Top left");
        QTest::ignoreMessage(QtDebugMsg, "getxy: ts_read_raw error 1");
        thread.start();
        QTRY_COMPARE(gui.crosses.size(), 2);
        close(plug);
        QVERIFY(thread.wait(JoinLimitMs));
        QCoreApplication::processEvents();
        QCOMPARE(gui.errors, {-217});
        close(device);
    }

    /// A module that makes nothing of what the device sends, which never ends.
    void neverASample()
    {
        root().write("/etc/ts.conf", "module_raw touchkit\n");
        const Touchscreen touchscreen = open("/dev/zero");
        ts_sample sample{};
        QCOMPARE(TouchSampler(3).read(touchscreen.get(), &sample), TouchSampler::Result::Failed);

        const TouchSampler patient(std::numeric_limits<int>::max());
        std::thread stopper([&patient] {
            std::this_thread::sleep_for(50ms);
            patient.stop();
        });
        QCOMPARE(patient.read(touchscreen.get(), &sample), TouchSampler::Result::Stopped);
        stopper.join();
    }

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

private:
    void closeWindows() override
    {
        pFifo.reset();
        qunsetenv("TSLIB_CONFFILE");
        qunsetenv("TSLIB_TSDEVICE");
    }

    Touchscreen open(const QString &path)
    {
        Touchscreen touchscreen(ts_open(QFile::encodeName(path).constData(), 0));
        need(touchscreen && ts_config(touchscreen.get()) == 0, path);
        return touchscreen;
    }

    void sample(VeltaCalibrationThread &thread)
    {
        thread.start();
        QVERIFY(thread.wait(JoinLimitMs));
        thread.join();
        QCoreApplication::processEvents();
    }

    std::unique_ptr<TouchscreenFifo> pFifo;
    CalibrationRecord record;
};

PANEL_TEST_MAIN(TestCalibrationThread)
#include "tst_calibrationthread.moc"
