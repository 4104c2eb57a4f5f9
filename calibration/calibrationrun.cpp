#include "calibration/calibrationrun.h"

#include "platform/touchscreenpaths.h"
#include "settings/errorcatalogue.h"

#include <QDebug>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>

#include <array>
#include <chrono>
#include <utility>

namespace {

using namespace std::chrono_literals;
using State = CalibrationState;
using Event = CalibrationEvent;
using Action = CalibrationAction;

constexpr int AcceptSeconds = 10;
constexpr int StartSeconds = 5;
constexpr auto CountInterval = 1s;

constexpr std::array<const char *, CalibrationRecord::PointCount> PointNames{
    "Top left", "Top right", "Bot right", "Bot left", CenterPointName};

bool isAwaiting(State state)
{
    return state == State::Awaiting || state == State::AwaitingLeft;
}

} // namespace

CalibrationRun::CalibrationRun(const CalibrationPace &pace, QObject *parent)
    : QObject(parent), countTimer(this), thread(this, pace)
{
    countTimer.setInterval(CountInterval);
    connect(&countTimer, &QTimer::timeout, this, [this] {
        handle(current == State::CountingDown ? Event::StartTick : Event::AcceptTick);
    });
}

CalibrationRun::~CalibrationRun()
{
    blockSignals(true);
    stopSampling();
    if (isAwaiting(current)) {
        data.restoreOldCalibration();
    } else {
        data.settle();
    }
}

short CalibrationRun::handle(Event event)
{
    const CalibrationStep step = calibrationStep(current, event);
    if (!step.bMeant) {
        return 0;
    }
    current = step.next;
    if (current != State::CountingDown && !isAwaiting(current)) {
        countTimer.stop();
    }
    Q_EMIT stateChanged();
    return perform(step.action);
}

short CalibrationRun::perform(Action action)
{
    switch (action) {
    case Action::None:
        return 0;
    case Action::BeginCountdown:
        beginCount(StartSeconds);
        return 0;
    case Action::BeginAcceptance:
        beginCount(AcceptSeconds);
        return 0;
    case Action::Count:
        count();
        return 0;
    case Action::AskToStart:
        Q_EMIT startDue();
        return 0;
    case Action::Begin:
        return begin();
    case Action::NextPoint:
        startPoint();
        return 0;
    case Action::StopSampling:
        stopSampling();
        return 0;
    case Action::Apply:
        apply();
        return 0;
    case Action::Accept:
        return accept();
    case Action::Restore:
        return restore();
    }
    Q_UNREACHABLE();
}

short CalibrationRun::start()
{
    handle(Event::Accept);
    return handle(Event::Start);
}

void CalibrationRun::beginCount(int from)
{
    nSeconds = from;
    countTimer.start();
    Q_EMIT counted(nSeconds);
}

void CalibrationRun::count()
{
    if (nSeconds >= 1) {
        Q_EMIT counted(--nSeconds);
    } else {
        handle(Event::Expired);
    }
}

short CalibrationRun::begin()
{
    stopSampling();
    data.settle();
    data.takeRemountFailures(); // of a try that nobody has asked for
    nPoints = 0;
    Q_EMIT begun();

    const QSize size = QGuiApplication::primaryScreen()->geometry().size();
    data.nScreenWidth = size.width();
    data.nScreenHeight = size.height();
    data.backupCalibration();
    suspension.emplace();
    const short code = data.openTouchscreen();
    if (code != 0) {
        handle(Event::TouchscreenFailed);
    } else {
        startPoint();
    }
    return code;
}

void CalibrationRun::startPoint()
{
    arrived.reset();
    const QPoint target = crosshairTargets({data.nScreenWidth, data.nScreenHeight})[nPoints];
    thread.setup(data.touchscreen(), &sampled, static_cast<int>(nPoints), target.x(), target.y(),
                 QLatin1String(PointNames[nPoints]));
    thread.start();
}

void CalibrationRun::stopSampling()
{
    thread.stop();
    Q_EMIT samplingStopped();
    data.closeTouchscreen();
    suspension.reset();
}

void CalibrationRun::takePoint(const CalibrationRecord &measured)
{
    thread.join();
    arrived = measured;
}

void CalibrationRun::endPoint()
{
    if (current != State::Sampling || !thread.isFinished()) {
        return;
    }
    thread.join();
    if (!arrived) {
        // It has ended without a word, so something keeps it from waiting for touches.
        fail(ERR_TS_READ_PRESS);
        return;
    }
    data.record = *arrived;
    ++nPoints;
    handle(nPoints < CalibrationRecord::PointCount ? Event::PointMeasured : Event::AllMeasured);
}

void CalibrationRun::fail(short code)
{
    qDebug("CalibrationPanel CalThreadError\n");
    handle(Event::TouchscreenFailed);
    Q_EMIT failed(code);
}

void CalibrationRun::apply()
{
    const short code = data.applyCalibration(data.record);
    const short closeCode = data.closeTouchscreen();
    suspension.reset(); // boxes need the pointer
    tellRemountFailures();
    tell(code, pointerCalibrationName());
    tell(closeCode, QStringLiteral("closeTouchscreen"));
    Q_EMIT applied();
}

short CalibrationRun::accept()
{
    const short code = data.acceptCalibration();
    tellRemountFailures();
    tell(code, pointerCalibrationName());
    return code;
}

short CalibrationRun::restore()
{
    const short code = data.restoreOldCalibration();
    tellRemountFailures();
    if (code != 0) {
        tell(code, pointerCalibrationName());
    } else {
        Q_EMIT boxDue(0, QString());
    }
    handle(Event::Restored);
    return code;
}

void CalibrationRun::tellRemountFailures()
{
    const QString directory = QFileInfo(pointerCalibrationName()).path();
    for (const short code : data.takeRemountFailures()) {
        tell(code, directory);
    }
}

void CalibrationRun::tell(short code, const QString &text)
{
    if (code != 0 && code != TouchCalibrationData::RemountFailed) {
        Q_EMIT boxDue(code, text);
    }
}
