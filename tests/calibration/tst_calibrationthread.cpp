#include "calibration/veltacalibrationthread.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/devicetest.h"
#include "tests/support/testmain.h"

#include <QElapsedTimer>
#include <QMap>

#include <chrono>
#include <limits>
#include <memory>
#include <pty.h>
#include <thread>
#include <tslib.h>

using namespace std::chrono_literals;

namespace {

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
                static const QMap<QString, char> letters{{QStringLiteral("#000000"), 'b'},
                                                         {QStringLiteral("#ffff00"), 'y'},
                                                         {QStringLiteral("#ffffff"), 'w'},
                                                         {QStringLiteral("#00ff00"), 'g'},
                                                         {QStringLiteral("#ff0000"), 'r'}};
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

/// The sampling thread on a touchscreen that real tslib reads.
class TestCalibrationThread : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void reduces_data();
    void reduces();
    void secondPoint();
    void stops_data();
    void stops();
    void readError_data();
    void readError();
    void unplugged();
    void neverASample();

private:
    Touchscreen open(const QString &path);
    void sample(VeltaCalibrationThread &thread);

    std::unique_ptr<TouchscreenFifo> pFifo;
    CalibrationRecord record;
};

void TestCalibrationThread::init()
{
    DeviceTest::init();
    pFifo = std::make_unique<TouchscreenFifo>(root());
    qputenv("TSLIB_CONFFILE", QFile::encodeName(root().path(QStringLiteral("/etc/ts.conf"))));
    record = {};
}

void TestCalibrationThread::cleanup()
{
    pFifo.reset();
    qunsetenv("TSLIB_CONFFILE");
    DeviceTest::cleanup();
}

Touchscreen TestCalibrationThread::open(const QString &path)
{
    Touchscreen touchscreen(ts_open(QFile::encodeName(path).constData(), 0));
    if (!touchscreen || ts_config(touchscreen.get()) != 0) {
        qFatal("tslib cannot open %s", qPrintable(path));
    }
    return touchscreen;
}

void TestCalibrationThread::sample(VeltaCalibrationThread &thread)
{
    thread.start();
    QVERIFY(thread.wait(JoinLimitMs));
    thread.join();
    QCoreApplication::processEvents();
}

void TestCalibrationThread::reduces_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("expected"); ///< of samples at 1000, 1001, 1002, ...

    QTest::newRow("1") << 1 << 1000;
    QTest::newRow("2") << 2 << 1000;
    QTest::newRow("3") << 3 << 1001;
    QTest::newRow("126") << 126 << 1062;
    QTest::newRow("127") << 127 << 1063;
    QTest::newRow("128") << 128 << 1063;
    QTest::newRow("300") << 300 << 1063;
}

void TestCalibrationThread::reduces()
{
    QFETCH(int, count);
    const Touchscreen touchscreen = open(pFifo->path);
    VeltaCalibrationThread thread;
    const Listener gui(&thread);

    // A lifted finger before the touch does not count.
    pFifo->send({9, 9}, 0);
    for (int i = 0; i < count; ++i) {
        pFifo->send({1000 + i, 3000 - i}, 1);
    }
    pFifo->send({9, 9}, 0);
    thread.setup(touchscreen.get(), &record, 0, 50, 60, QStringLiteral("Top left"));
    sample(thread);

    QCOMPARE(gui.records, {&record});
    QTEST(record.rawX[0], "expected");
    const int odd = count % 2 == 0 && count < 127 ? 1 : 0;
    QCOMPARE(record.rawY[0], 4000 - record.rawX[0] - odd);
    QCOMPARE(QPoint(record.screenX[0], record.screenY[0]), QPoint(50, 60));
    QCOMPARE(gui.colours, count > 1 ? "bywg" : "bwg");
    QCOMPARE(gui.crosses.constLast(), QPoint(50, 60));
}

/// The second point glides there, and is asked again while the touch is where the first one was.
void TestCalibrationThread::secondPoint()
{
    const Touchscreen touchscreen = open(pFifo->path);
    VeltaCalibrationThread thread;
    thread.setup(touchscreen.get(), &record, 0, 50, 50, QStringLiteral("Top left"));
    pFifo->tap({1000, 1000});
    sample(thread);

    // The tolerance of a touchscreen that does not tell its axes is 51.
    Listener gui(&thread);
    thread.setup(touchscreen.get(), &record, 1, 750, 40, QStringLiteral("Top right"));
    pFifo->tap({1051, 949});
    pFifo->tap({1052, 1000});
    sample(thread);
    QCOMPARE(RawPoint({record.rawX[1], record.rawY[1]}), (RawPoint{1052, 1000}));
    QCOMPARE(gui.colours, "gbwrbwg");
    QCOMPARE(gui.crosses[0], QPoint(50, 50));
    QCOMPARE(gui.crosses[9], QPoint(50 + 9 * 70, 41));
    QCOMPARE(gui.crosses[10], QPoint(750, 40));

    // A new run knows no point before its first.
    gui.colours.clear();
    thread.setup(touchscreen.get(), &record, 0, 50, 50, QStringLiteral("Top left"));
    pFifo->tap({1052, 1000});
    sample(thread);
    QCOMPARE(gui.colours, "bwg");
}

void TestCalibrationThread::stops_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("pressed"); ///< samples with pressure
    QTest::addColumn<bool>("released"); ///< and one without
    QTest::addColumn<char>("colour"); ///< of the screen at the stop
    const QString corner = QStringLiteral("Top right");
    QTest::newRow("before the touch") << 0 << corner << 0 << false << 'b';
    QTest::newRow("during the touch") << 0 << corner << 2 << false << 'y';
    QTest::newRow("during a long touch") << 0 << corner << 300 << false << 'y';
    QTest::newRow("while gliding") << 1 << corner << 0 << false << 'g';
    QTest::newRow("in the pause of a bad touch") << 1 << corner << 1 << true << 'r';
    QTest::newRow("in the last pause") << 0 << QStringLiteral("Center") << 1 << true << 'g';
}

void TestCalibrationThread::stops()
{
    QFETCH(int, index);
    QFETCH(QString, name);
    QFETCH(int, pressed);
    QFETCH(bool, released);
    QFETCH(char, colour);
    const Touchscreen touchscreen = open(pFifo->path);
    VeltaCalibrationThread thread;
    if (index > 0) {
        thread.setup(touchscreen.get(), &record, 0, 50, 50, QStringLiteral("Top left"));
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

    QElapsedTimer time;
    time.start();
    thread.stop();
    QVERIFY(time.elapsed() < 1000);
    QVERIFY(!thread.isRunning());
    QCoreApplication::processEvents();
    QVERIFY(gui.records.isEmpty() && gui.errors.isEmpty());

    // The same object samples the next run.
    thread.setup(touchscreen.get(), &record, 0, 50, 50, QStringLiteral("Top left"));
    pFifo->tap({3000, 3000});
    sample(thread);
    QCOMPARE(gui.records.size(), 1);
}

void TestCalibrationThread::readError_data()
{
    QTest::addColumn<QByteArray>("content"); ///< at its end the device cannot be read
    QTest::addColumn<QList<int>>("codes");
    QTest::addColumn<QByteArray>("message");

    const QByteArray press = TouchscreenFifo::sample({1000, 1000}, 1);
    QTest::newRow("before the touch")
        << QByteArray() << QList<int>{-217} << QByteArray("getxy: ts_read_raw error 1");
    QTest::newRow("during the touch")
        << press + press << QList<int>{-218} << QByteArray("getxy: ts_read_raw error 2");
}

void TestCalibrationThread::readError()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, message);
    const QString path = QStringLiteral("/dev/input/broken");
    root().write(path, content);
    const Touchscreen touchscreen = open(root().path(path));
    VeltaCalibrationThread thread;
    const Listener gui(&thread);
    thread.setup(touchscreen.get(), &record, 0, 50, 50, QStringLiteral("Top left"));
    QTest::ignoreMessage(QtDebugMsg, message.constData());
    sample(thread);
    QVERIFY(gui.records.isEmpty());
    QTEST(gui.errors, "codes");
}

/// A device that vanishes while the thread waits for its samples.
void TestCalibrationThread::unplugged()
{
    int plug = -1;
    int device = -1;
    char path[128];
    QVERIFY(openpty(&plug, &device, path, nullptr, nullptr) == 0);
    const Touchscreen touchscreen = open(QFile::decodeName(path));
    VeltaCalibrationThread thread;
    const Listener gui(&thread);
    thread.setup(touchscreen.get(), &record, 0, 50, 50, QStringLiteral("Top left"));
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
void TestCalibrationThread::neverASample()
{
    root().write(QStringLiteral("/etc/ts.conf"), "module_raw touchkit\n");
    const Touchscreen touchscreen = open(QStringLiteral("/dev/zero"));
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

PANEL_TEST_MAIN(TestCalibrationThread)
#include "tst_calibrationthread.moc"
