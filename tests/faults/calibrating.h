#pragma once

#include "calibration/calibrationpage.h"
#include "calibration/calibrationrun.h"
#include "platform/devicepath.h"
#include "platform/windowserver.h"
#include "tests/calibration/simulatedpanel.h"
#include "tests/calibration/touchsheet.h"
#include "tests/faults/trial.h"
#include "tests/platform/touchscreenfifo.h"

#include <QPushButton>

/// A calibration from its start to its end, with the touches left out.
class Calibrating : public Trial
{
public:
    static constexpr QSize ScreenSize{320, 240};
    enum End { Accepted, Withdrawn, ProgramEnds };

    /// \a file is the calibration before; empty: none.
    Calibrating(const QByteArray &file, End how) : oldFile(file), end(how)
    {
        pPage->showFullScreen();
        DeviceRoot root;
        prepare(root);
        QStringList complaints;
        if (const auto answer = ask(start, complaints)) {
            oldLanding = answer->landing;
        }
        if (const auto answer = ask([this] { return calibrate([] {}, Accepted); }, complaints)) {
            newLanding = answer->landing;
        }
        newFile = root.read(Calibration);
        need(oldLanding != newLanding && newFile != oldFile && complaints.isEmpty(),
             "a calibration without faults " + complaints.join(u'\n'));
    }

    void prepare(const DeviceRoot &root) override
    {
        const TouchscreenFifo fifo(root);
        if (!oldFile.isEmpty()) {
            root.write(Calibration, oldFile);
        }
    }

    Answer run(const std::function<void()> &arm) override { return calibrate(arm, end); }

    QStringList judge(const DeviceRoot &root, const Answer &answer) override
    {
        QStringList complaints = judgeFile(root);
        const bool bNew = end == Accepted;
        if (answer.errors.isEmpty() && end != ProgramEnds
            && (answer.landing != (bNew ? newLanding : oldLanding)
                || root.read(Calibration) != (bNew ? newFile : oldFile))) {
            complaints += "not a word, but not in force or not in the file";
        }
        if (end != ProgramEnds && answer.landing != oldLanding && answer.landing != newLanding) {
            complaints += "neither calibration is in force";
        }
        return complaints;
    }

    QStringList judgeRestart(const DeviceRoot &root, const Answer *pAnswer, bool bMarked) override
    {
        QStringList complaints;
        const auto answer = ask(start, complaints);
        complaints += judgeFile(root);
        if (!answer) {
            return complaints;
        }
        const bool bMayBeNew = end == Accepted && (pAnswer || bMarked);
        const bool bMustBeNew = end == Accepted && pAnswer && pAnswer->errors.isEmpty();
        if ((answer->landing != newLanding || !bMayBeNew)
            && (answer->landing != oldLanding || bMustBeNew)) {
            complaints += QStringLiteral("a new start has %1 calibration in force")
                              .arg(answer->landing == newLanding       ? "the new"
                                       : answer->landing == oldLanding ? "the old"
                                                                       : "another");
        }
        QStringList left = filesOf(root).keys();
        left.removeAll(Calibration);
        left.removeAll("/etc/ts.conf");
        if (!left.isEmpty()) {
            complaints += QStringLiteral("left behind: ") + left.join(u' ');
        }
        return complaints;
    }

private:
    static inline const QString Touchscreen = "/dev/input/touchscreen";
    static inline const QString Calibration = "/etc/pointercal";

    QStringList judgeFile(const DeviceRoot &root) const
    {
        const QByteArray file = root.read(Calibration);
        const bool bAbsent = !root.exists(Calibration);
        return file == newFile || (file == oldFile && bAbsent == oldFile.isEmpty())
            ? QStringList()
            : QStringList(QStringLiteral("the file is torn: '%1'").arg(QString::fromUtf8(file)));
    }

    /// Where a touch lands: that tells the calibration in force.
    static QPoint landing()
    {
        TouchSheet sheet;
        sheet.raise();
        QFile touchscreen(devicePath(Touchscreen));
        if (touchscreen.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) { // never waits
            for (const int nPressure : {1, 0}) {
                touchscreen.write(TouchscreenFifo::sample({200, 120}, nPressure));
            }
        }
        return sheet.takeTouch().value_or(QPoint(-1, -1));
    }

    static Answer start()
    {
        WindowServer server;
        server.openPointer();
        Answer answer;
        answer.landing = landing();
        return answer;
    }

    static void measure(CalibrationRun &run)
    {
        // The touchscreen under a screen that it does not quite cover.
        const CalibrationRecord record = recordOf(ScreenSize, [](QPoint pixel) {
            return RawPoint{40 + pixel.x() * 4 / 5, 40 + pixel.y() * 4 / 5};
        });
        // As the sampling thread hands a point over, without the seconds that it takes.
        while (run.state() == CalibrationState::Sampling) {
            run.samplingThread()->stop();
            run.takePoint(record);
            run.endPoint();
        }
    }

    Answer calibrate(const std::function<void()> &arm, End how)
    {
        constexpr int AcceptSeconds = 10;
        const BoxWatcher eyes(1);
        WindowServer server;
        server.openPointer();
        arm();
        pPage->StartCalibration();
        measure(*pPage->findChild<CalibrationRun *>());
        auto *pAccept = pPage->findChild<QPushButton *>("acceptCalibrationButton");
        if (how == Accepted) {
            FileFaults::mark();
            pAccept->click();
        }
        for (int i = 0; i <= AcceptSeconds && how == Withdrawn; ++i) {
            pPage->updateLCD();
        }
        if (how == ProgramEnds) {
            pPage.reset();
        }
        FileFaults::disarm();
        Answer answer;
        answer.landing = landing();
        answer.errors = errorsIn(eyes);
        return answer;
    }

    const QByteArray oldFile;
    const End end;
    // Made once, before the copies of this process, each of which has its own. Not painted before:
    // Qt does that with threads, which a copy would not have.
    std::unique_ptr<CalibrationPage> pPage = std::make_unique<CalibrationPage>();
    QByteArray newFile;
    QPoint oldLanding;
    QPoint newLanding;
};
