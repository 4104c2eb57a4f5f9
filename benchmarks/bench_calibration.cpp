// The touchscreen: how far off touches are after a calibration with a finger that misses, what the
// sampling thread costs while it waits for a touch, and what one sample costs from the device to
// the mouse event. Google Benchmark's own options apply to the last.
//
// bench_calibration [SECONDS]

#include "benchmarks/benchapplication.h"
#include "calibration/calibrationrecord.h"
#include "calibration/touchcalibrationdata.h"
#include "calibration/veltacalibrationthread.h"
#include "platform/pointertransform.h"
#include "platform/windowserver.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMouseEvent>
#include <QWidget>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// ---- accuracy -----------------------------------------------------------------------------------

constexpr QSize ScreenSize(800, 480);
constexpr int Panels = 1000;
constexpr unsigned Seed = 1;
constexpr int LargestRaw = 4095; // 12 bit
constexpr int GridLines = 9;

using Random = std::mt19937_64;

/// The affine map u = a x + b y + c of each axis.
struct Affine
{
    std::array<double, 3> u{};
    std::array<double, 3> v{};

    QPointF map(QPointF p) const
    {
        return {u[0] * p.x() + u[1] * p.y() + u[2], v[0] * p.x() + v[1] * p.y() + v[2]};
    }
};

/// A touchscreen somewhere in its range: uses 40 to 95 % of it on each axis, up to 3 % askew,
/// perhaps mirrored, perhaps with its axes exchanged.
Affine randomPanel(Random &random)
{
    const auto between = [&random](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    const auto coin = [&between] { return between(0, 1) < 0.5; };
    const auto axis = [&](double length, double across) {
        const double span = between(0.4, 0.95) * LargestRaw;
        const double skew = between(-0.03, 0.03) * span;
        const double least = std::max(0.0, -skew);
        const double most = LargestRaw - span - std::max(0.0, skew);
        double offset = least < most ? between(least, most) : (least + most) / 2;
        double factor = span / (length - 1);
        if (coin()) {
            offset += span;
            factor = -factor;
        }
        return std::array{factor, skew / (across - 1), offset};
    };
    Affine panel;
    panel.u = axis(ScreenSize.width(), ScreenSize.height());
    const auto [alongY, alongX, offset] = axis(ScreenSize.height(), ScreenSize.width());
    panel.v = {alongX, alongY, offset};
    if (coin()) {
        std::swap(panel.u, panel.v);
    }
    return panel;
}

RawPoint touch(const Affine &panel, QPointF finger)
{
    const QPointF raw = panel.map(finger);
    return {std::clamp(int(std::lround(raw.x())), 0, LargestRaw),
            std::clamp(int(std::lround(raw.y())), 0, LargestRaw)};
}

/// The map that takes three touches exactly to three points of the screen.
Affine threePoints(const CalibrationPairs &pairs)
{
    const auto &r = pairs.devicePoints;
    const auto &s = pairs.screenPoints;
    const double x1 = r[1].x - r[0].x;
    const double y1 = r[1].y - r[0].y;
    const double x2 = r[2].x - r[0].x;
    const double y2 = r[2].y - r[0].y;
    const double determinant = x1 * y2 - x2 * y1;
    const auto row = [&](double t0, double t1, double t2) {
        const double a = ((t1 - t0) * y2 - (t2 - t0) * y1) / determinant;
        const double b = ((t2 - t0) * x1 - (t1 - t0) * x2) / determinant;
        return std::array{a, b, t0 - a * r[0].x - b * r[0].y};
    };
    return {row(s[0].x(), s[1].x(), s[2].x()), row(s[0].y(), s[1].y(), s[2].y())};
}

/// \a transform before it is cut to whole pixels: without the half that makes the cut a rounding.
Affine coefficients(const PointerTransform &transform)
{
    std::array<double, 7> number{};
    std::ranges::transform(transform.toFile().simplified().split(' '), number.begin(),
                           [](const QByteArray &word) { return word.toDouble(); });
    const double divisor = number[6];
    return {{number[0] / divisor, number[1] / divisor, number[2] / divisor - 0.5},
            {number[3] / divisor, number[4] / divisor, number[5] / divisor - 0.5}};
}

/// Largest distance, in pixels, between a finger on the grid and where \a map reports it.
template <typename Map>
double largestError(const Affine &panel, Map map)
{
    double largest = 0;
    for (int row = 0; row < GridLines; ++row) {
        for (int column = 0; column < GridLines; ++column) {
            const QPoint finger((ScreenSize.width() - 1) * column / (GridLines - 1),
                                (ScreenSize.height() - 1) * row / (GridLines - 1));
            const QPointF seen = map(touch(panel, finger));
            largest = std::max(largest, std::hypot(seen.x() - finger.x(), seen.y() - finger.y()));
        }
    }
    return largest;
}

struct Percentiles
{
    explicit Percentiles(std::vector<double> values)
    {
        std::ranges::sort(values);
        median = values[values.size() / 2];
        most = values[values.size() * 95 / 100];
        largest = values.back();
    }
    double median;
    double most; ///< 95 % are at most this
    double largest;
};

void printAccuracy(double noise, const char *goal)
{
    Random random(Seed);
    std::normal_distribution<double> normal;
    std::vector<double> five;
    std::vector<double> unrounded;
    std::vector<double> three;
    int nRefused = 0;
    for (int i = 0; i < Panels; ++i) {
        const Affine panel = randomPanel(random);
        CalibrationPairs pairs;
        const auto targets = crosshairTargets(ScreenSize);
        for (std::size_t k = 0; k < targets.size(); ++k) {
            const double missX = noise * normal(random);
            const double missY = noise * normal(random);
            pairs.screenPoints[k] = targets[k];
            pairs.devicePoints[k] = touch(panel, QPointF(targets[k]) + QPointF(missX, missY));
        }
        const auto transform = PointerTransform::fit(pairs);
        if (!transform) {
            ++nRefused;
            continue;
        }
        five.push_back(largestError(panel, [&](RawPoint raw) { return transform->map(raw); }));
        const Affine exact = coefficients(*transform);
        unrounded.push_back(
            largestError(panel, [&](RawPoint raw) { return exact.map(QPointF(raw.x, raw.y)); }));
        const Affine formula = threePoints(pairs);
        three.push_back(largestError(
            panel, [&](RawPoint raw) { return formula.map(QPointF(raw.x, raw.y)).toPoint(); }));
    }
    if (five.empty()) {
        qFatal("every calibration was refused");
    }
    const Percentiles pixels(five);
    const Percentiles positions(unrounded);
    const Percentiles formula(three);
    std::printf(
        "noise %g px: median %.2f, 95 %% %.2f, worst %.2f px; before rounding to pixels %.2f, "
        "%.2f, %.2f; three points %.2f, %.2f, %.2f; %d of %d refused (goal: %s)\n",
        noise, pixels.median, pixels.most, pixels.largest, positions.median, positions.most,
        positions.largest, formula.median, formula.most, formula.largest, nRefused, Panels, goal);
}

// ---- the device ---------------------------------------------------------------------------------

/// The touchscreen of the device root, a pipe that tslib reads.
QByteArray makeTouchscreen()
{
    writeDeviceFile("/proc/device-tree/qrd-specific/qrd_touch_type", QByteArray("single", 7));
    writeDeviceFile("/etc/ts.conf", "module_raw waveshare len=8\nmodule linear\n");
    writeDeviceFile("/etc/pointercal", "13107 0 0 0 7864 0 65536\n");
    QByteArray path = qgetenv("PANEL_ROOT") + "/dev/input/touchscreen";
    QDir().mkpath(QFileInfo(QFile::decodeName(path)).path());
    if (mkfifo(path.constData(), 0600) != 0) {
        qFatal("cannot make %s", path.constData());
    }
    return path;
}

void send(int nPipe, RawPoint raw, bool bPressed)
{
    const std::array<unsigned char, 8> sample{0xaa,
                                              static_cast<unsigned char>(bPressed ? 100 : 0),
                                              static_cast<unsigned char>(raw.x >> 8),
                                              static_cast<unsigned char>(raw.x & 0xff),
                                              static_cast<unsigned char>(raw.y >> 8),
                                              static_cast<unsigned char>(raw.y & 0xff)};
    if (::write(nPipe, sample.data(), sample.size()) != ssize_t(sample.size())) {
        qFatal("the touchscreen's pipe is full");
    }
}

// ---- waiting ------------------------------------------------------------------------------------

double cpuMs()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

long wakeUps()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
}

void printWaiting(int nSeconds)
{
    TouchCalibrationData data;
    if (data.openTouchscreen() != 0) {
        qFatal("the touchscreen cannot be opened");
    }
    VeltaCalibrationThread thread;
    thread.setup(data.touchscreen(), &data.record, 0, 50, 50, QStringLiteral("Top left"));
    thread.start();
    usleep(500000); // it has begun to wait
    const double before = cpuMs();
    const long wokenBefore = wakeUps();
    sleep(static_cast<unsigned>(nSeconds));
    const double spent = cpuMs() - before;
    const long woken = wakeUps() - wokenBefore - 1; // ours
    const auto stopping = std::chrono::steady_clock::now();
    thread.stop();
    const std::chrono::duration<double, std::milli> stopped =
        std::chrono::steady_clock::now() - stopping;
    std::printf("sampling thread, nobody touches: %.3f ms CPU and %ld wake-ups in %d s (goal: 0), "
                "stopped and joined within %.2f ms (goal: 1000)\n",
                spent, woken, nSeconds, stopped.count());
}

// ---- one sample ---------------------------------------------------------------------------------

class Sheet : public QWidget
{
public:
    long nEvents = 0;

protected:
    void mousePressEvent(QMouseEvent * /*event*/) override { ++nEvents; }
    void mouseMoveEvent(QMouseEvent * /*event*/) override { ++nEvents; }
    void mouseReleaseEvent(QMouseEvent * /*event*/) override { ++nEvents; }
};

void awaitEvent(const Sheet &sheet, long nWanted)
{
    while (sheet.nEvents < nWanted) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

QByteArray touchscreenPath;

/// From the sample's arrival on the file descriptor through tslib, its calibration and the event
/// loop to the widget under the finger.
void touchSample(benchmark::State &state)
{
    WindowServer server;
    Sheet sheet;
    sheet.setWindowFlags(Qt::FramelessWindowHint);
    sheet.setGeometry(QGuiApplication::primaryScreen()->geometry());
    sheet.show();
    QCoreApplication::processEvents();
    const int nPipe = open(touchscreenPath.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (!server.openPointer() || nPipe < 0) {
        state.SkipWithError("no touchscreen");
        return;
    }
    send(nPipe, {1000, 1000}, true);
    awaitEvent(sheet, 1);
    long nSent = 1;
    for ([[maybe_unused]] auto _ : state) {
        send(nPipe, {1000 + 100 * int(nSent % 2), 1000}, true);
        awaitEvent(sheet, ++nSent);
    }
    send(nPipe, {1000, 1000}, false);
    awaitEvent(sheet, nSent + 1);
    close(nPipe);
}
BENCHMARK(touchSample)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    const BenchApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    const int nSeconds = argc > 1 ? std::max(1, atoi(argv[1])) : 10;

    std::printf("Largest error on a 9 x 9 grid of 800 x 480 pixels, %d random panels, seed %u\n",
                Panels, Seed);
    printAccuracy(0, "1 px");
    printAccuracy(2, "median 3.5 px");
    printAccuracy(5, "median 8.8 px");
    touchscreenPath = makeTouchscreen();
    printWaiting(nSeconds);
    std::fflush(stdout);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
