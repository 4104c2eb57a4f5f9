#include "simulator/calibratecommand.h"

#include "calibration/calibrationrecord.h"
#include "platform/requestfiles.h"
#include "simulator/finger.h"

#include <QDeadlineTimer>
#include <QPoint>

#include <algorithm>
#include <array>
#include <random>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto LongestVerdict = 5s;
// A glance at the page before it is touched; the panel drops what is touched sooner.
constexpr auto PageUp = 500ms;
constexpr auto RequestNoticed = 1500ms;
constexpr auto RequestRemoved = 3s;
constexpr auto PollInterval = 20ms;
constexpr auto ButtonPress = 120ms;

constexpr int OpeningsInARun = 2;

/// The page's buttons, from top to bottom.
enum Button { Start, Accept, Exit };

/// Where the page has \a button on a screen of the size \a screen: in a box in the middle of the
/// screen, one below the other over its whole width.
QPoint buttonMiddle(Button button, const QSize &screen)
{
    constexpr int BoxMargin = 9;
    constexpr int LargestBoxHeight = 440;
    constexpr int Title = 28; // the box's title and the distance below it
    constexpr int LargestPitch = 86; // from one button to the next
    constexpr int TextShare = 12; // what the text below takes from each pitch

    const int boxHeight = std::min(screen.height() - 2 * BoxMargin, LargestBoxHeight);
    const int pitch = std::min(boxHeight / 4 - TextShare, LargestPitch);
    return {screen.width() / 2,
            (screen.height() - boxHeight) / 2 + Title + pitch / 2 + button * pitch};
}

struct Options
{
    bool bStart = false;
    bool bAccept = true;
    bool bExit = false;
    double nNoise = 0; ///< pixels, standard deviation
    std::chrono::seconds wait{};
    std::chrono::milliseconds hold{};
    std::chrono::milliseconds pause{}; ///< before each cross: its way there and a verdict
    unsigned seed = 0;
};

Options takeOptions(Arguments &arguments)
{
    Options options;
    options.bStart = arguments.takeFlag(QStringLiteral("--start"));
    const bool bAccept = arguments.takeFlag(QStringLiteral("--accept"));
    options.bAccept = !arguments.takeFlag(QStringLiteral("--no-accept"));
    options.bExit = arguments.takeFlag(QStringLiteral("--exit"));
    if (!options.bAccept && (bAccept || options.bExit)) {
        // Exit is disabled until the calibration is accepted or taken back.
        arguments.setError(
            QStringLiteral("--no-accept contradicts %1")
                .arg(bAccept ? QStringLiteral("--accept") : QStringLiteral("--exit")));
    }
    options.nNoise = arguments.takeNumberOption(QStringLiteral("--noise"), 0, 0, 100);
    options.seed =
        static_cast<unsigned>(arguments.takeNumberOption(QStringLiteral("--seed"), 1, 0, 1 << 30));
    options.wait =
        std::chrono::seconds(arguments.takeNumberOption(QStringLiteral("--wait"), 20, 1, 600));
    options.hold = std::chrono::milliseconds(
        arguments.takeNumberOption(QStringLiteral("--ms"), 120, 0, 60000));
    options.pause = std::chrono::milliseconds(
        arguments.takeNumberOption(QStringLiteral("--pause"), 800, 0, 60000));
    return options;
}

/// Waits until \a condition holds; false when it does not within \a limit.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        std::this_thread::sleep_for(PollInterval);
    }
    return true;
}

class Operator
{
public:
    Operator(Finger &ownFinger, const Options &chosen)
        : finger(ownFinger), options(chosen), random(chosen.seed)
    { }

    bool isRunning() const { return finger.openings() >= OpeningsInARun; }

    bool waitForRun()
    {
        const QDeadlineTimer deadline(options.wait);
        const auto running = [this] { return isRunning(); };
        if (!options.bStart) {
            return waitUntil(running, options.wait);
        }
        // The page comes with a tick of the panel; a press before it does nothing.
        while (!waitUntil(running, RequestNoticed)) {
            if (deadline.hasExpired() || !press(Start)) {
                return false;
            }
        }
        return true;
    }

    bool touchCrosses()
    {
        for (const QPoint &cross : crosshairTargets(finger.screenSize())) {
            std::this_thread::sleep_for(options.pause);
            const QPoint position = cross + tremble();
            if (!finger.touch(position, position, options.hold)) {
                return false;
            }
        }
        return true;
    }

    bool press(Button button)
    {
        const QPoint middle = buttonMiddle(button, finger.screenSize());
        return finger.touch(middle, middle, ButtonPress);
    }

private:
    QPoint tremble()
    {
        if (options.nNoise <= 0) {
            return {};
        }
        std::normal_distribution<double> noise(0, options.nNoise);
        const double x = noise(random);
        return QPointF(x, noise(random)).toPoint();
    }

    Finger &finger;
    const Options &options;
    std::mt19937 random;
};

} // namespace

ExitCode calibrateCommand(const DeviceFolder &device, Arguments &arguments)
{
    const QString request = CalibrationRequestFile;
    const Options options = takeOptions(arguments);
    if (!arguments.finish()) {
        return usageError(arguments.error());
    }
    Finger finger(device);
    if (!finger.open()) {
        return failure(finger.errorText());
    }
    if (!device.exists(request) && !device.write(request, QByteArray())) {
        return ExitCode::Failed;
    }
    Operator person(finger, options);
    if (!person.waitForRun()) {
        return failure(
            QStringLiteral("no calibration run begins within %1 s").arg(options.wait.count()));
    }
    if (!person.touchCrosses()) {
        return failure(finger.errorText());
    }
    if (!waitUntil([&person] { return !person.isRunning(); }, LongestVerdict)) {
        return failure(QStringLiteral("the panel still waits for a touch after the fifth cross"));
    }
    if (options.bAccept) {
        std::this_thread::sleep_for(PageUp);
        person.press(Accept);
    }
    if (options.bExit) {
        std::this_thread::sleep_for(PageUp);
        person.press(Exit);
        if (!waitUntil([&] { return !device.exists(request); }, RequestRemoved)) {
            return failure(
                QStringLiteral("Accept or Exit were not hit: the request is still there"));
        }
    }
    return ExitCode::Done;
}
