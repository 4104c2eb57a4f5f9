#include "calibration/calibrationpage.h"
#include "calibration/calibrationrun.h"
#include "platform/devicepath.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"
#include "settings/veltasettings.h"
#include "tests/calibration/touchsheet.h"
#include "tests/faults/crashmodel.h"
#include "tests/faults/filefaults.h"
#include "tests/faults/processcopy.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/boxwatcher.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"
#include "tests/support/testmain.h"

#include <QDataStream>
#include <QDirIterator>

#include <new>
#include <sys/mman.h>

using namespace std::chrono_literals;
using FileFaults::Fault;
using FileFaults::Journal;

namespace {

/// The operator gets an answer within this.
constexpr auto AnswerLimit = 3s;
constexpr QSize ScreenSize{320, 240};
const QString Touchscreen = "/dev/input/touchscreen";
const QStringList WatchedFolders{"/etc", "/tmp"};
const QString Settings = "/etc/settings.ini";
const QString NewSettings = "/tmp/newsettings.ini";
const QString Calibration = "/etc/pointercal";

Files filesOf(const DeviceRoot &root)
{
    Files files;
    for (const QString &folder : WatchedFolders) {
        QDirIterator it(root.path(folder), QDir::Files | QDir::Hidden | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next().mid(root.path(QString()).size());
            files[path] = root.read(path);
        }
    }
    return files;
}

void setFiles(const DeviceRoot &root, const Files &files)
{
    const QStringList before = filesOf(root).keys();
    for (const QString &path : before) {
        root.remove(path);
    }
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        root.write(it.key(), it.value());
    }
}

/// What the program has told, and what it does now.
struct Answer
{
    int nResult = 0;
    QStringList errors; ///< texts of the boxes that told of one
    QPoint landing; ///< of a touch

    QByteArray pack() const
    {
        QByteArray packed;
        QDataStream(&packed, QIODevice::WriteOnly) << nResult << errors << landing;
        return packed;
    }
    static Answer unpack(const QByteArray &packed)
    {
        Answer answer;
        QDataStream(packed) >> answer.nResult >> answer.errors >> answer.landing;
        return answer;
    }
};

/// The boxes of \a eyes that told of an error or gave a warning.
QStringList errorsIn(const BoxWatcher &eyes)
{
    return eyes.texts().filter(QRegularExpression(QStringLiteral("^(Error|Warning)")));
}

/// Something that the operator does, to be done again and again on a disk that fails.
class Trial
{
public:
    virtual ~Trial() = default;
    /// Fills a new device.
    virtual void prepare(const DeviceRoot &root) = 0;
    /// Files that are there only when the operator begins.
    virtual Files planted() const { return {}; }
    /// In a copy of the process: does it, between \a arm() and FileFaults::disarm().
    virtual Answer run(const std::function<void()> &arm) = 0;
    /// What is wrong with the program's \a answer and the device; empty when nothing is.
    virtual QStringList judge(const DeviceRoot &root, const Answer &answer) = 0;
    /// What is wrong with a new start on what is left: of a run that has given its answer, or was
    /// cut off.
    virtual QStringList judgeRestart(const DeviceRoot &root, const Answer *pAnswer,
                                     bool bMarked) = 0;
};

/// Runs \a task on \a root in a copy of the process; adds to \a complaints when it gives no answer.
std::optional<Answer> ask(const std::function<Answer()> &task, QStringList &complaints,
                          bool bDies = false)
{
    const CopyEnding ending = runInCopy([&] { return task().pack(); }, AnswerLimit);
    if (!ending.bInTime) {
        complaints += QStringLiteral("no answer within %1 s").arg(AnswerLimit.count());
    } else if (ending.bCrashed || ending.bKilled != bDies) {
        complaints += QStringLiteral("ends unasked");
    } else if (!ending.bKilled) {
        return Answer::unpack(ending.answer);
    }
    return std::nullopt;
}

// ---- SAVE ---------------------------------------------------------------------------------------

class Saving : public Trial
{
public:
    /// \a foreign stands at the name of the new-settings file when SAVE is pressed.
    explicit Saving(const QByteArray &foreign) : foreignFile(foreign) { }

    void prepare(const DeviceRoot &root) override
    {
        root.write(Settings, StaticSettings);
        // Keeps what it is given, whole, in a place of its own.
        root.writeCommand(QStringLiteral("/bin/syscfg"),
                          "{ cat \"$2\"; echo end; } >>\"$PANEL_ROOT/simulator/given\"");
    }

    Files planted() const override
    {
        return foreignFile.isEmpty() ? Files() : Files{{NewSettings, foreignFile}};
    }

    Answer run(const std::function<void()> &arm) override { return save(arm, foreignFile); }

    QStringList judge(const DeviceRoot &root, const Answer &answer) override
    {
        QStringList complaints = judgeGiven(root);
        if (answer.nResult != 0 && answer.nResult != ERR_INI_ACCESS
            && answer.nResult != ERR_INI_FORMAT) {
            complaints += QStringLiteral("result %1").arg(answer.nResult);
        }
        if ((answer.nResult == 0) != !given(root).isEmpty()) {
            complaints += QStringLiteral("result %1, but %2 applied")
                              .arg(answer.nResult)
                              .arg(given(root).isEmpty() ? "nothing" : "something");
        }
        return complaints;
    }

    QStringList judgeRestart(const DeviceRoot &root, const Answer *, bool) override
    {
        QStringList complaints = judgeGiven(root);
        const qsizetype nBefore = given(root).size();
        const auto answer = ask([this] { return save([] {}, {}); }, complaints);
        if (answer && (answer->nResult != 0 || !answer->errors.isEmpty())) {
            complaints += QStringLiteral("the next SAVE ends with %1 and boxes '%2'")
                              .arg(answer->nResult)
                              .arg(answer->errors.join(QStringLiteral("', '")));
        }
        complaints += judgeGiven(root);
        if (given(root).size() != nBefore + 1) {
            complaints += QStringLiteral("the next SAVE applies nothing");
        }
        const Files left = filesOf(root);
        if (left.size() != 1 || left[Settings] != StaticSettings) {
            complaints += QStringLiteral("left behind: ") + QStringList(left.keys()).join(u' ');
        }
        return complaints;
    }

private:
    static Answer save(const std::function<void()> &arm, const QByteArray &foreign)
    {
        const BoxWatcher eyes(1);
        auto pSettings =
            std::make_unique<VeltaSettings>(Settings, NewSettings, QSettings::IniFormat);
        pSettings->init();
        pSettings->working.nNetMode = DhcpMode;
        pSettings->working.ipEntries[Dns1Entry].value = QStringLiteral("10.0.0.53");
        if (!foreign.isEmpty()) {
            QFile file(devicePath(NewSettings));
            if (!file.open(QIODevice::WriteOnly) || file.write(foreign) != foreign.size()) {
                qFatal("cannot write %s", qPrintable(file.fileName()));
            }
        }
        arm();
        Answer answer;
        answer.nResult = pSettings->saveSettings(true);
        pSettings.reset(); // may write too
        FileFaults::disarm();
        answer.errors = errorsIn(eyes);
        return answer;
    }

    /// What syscfg was given, file by file.
    static QByteArrayList given(const DeviceRoot &root)
    {
        QByteArrayList files;
        QByteArray file;
        for (const QByteArray &line : root.read(QStringLiteral("/simulator/given")).split('\n')) {
            if (line == "end") {
                files += file;
                file.clear();
            } else {
                file += line + '\n';
            }
        }
        return files;
    }

    static QStringList judgeGiven(const DeviceRoot &root)
    {
        QStringList complaints;
        for (const QByteArray &file : given(root)) {
            QByteArrayList lines = file.trimmed().split('\n');
            std::sort(lines.begin(), lines.end());
            if (lines != QByteArrayList{"[network]", "dnsserver1=10.0.0.53", "eth0.mode=dhcp"}) {
                complaints += QStringLiteral("syscfg is given '%1'")
                                  .arg(QString::fromUtf8(file.simplified()));
            }
        }
        return complaints;
    }

    const QByteArray foreignFile;
};

// ---- calibration --------------------------------------------------------------------------------

class Calibrating : public Trial
{
public:
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
        if (oldLanding == newLanding || newFile == oldFile || !complaints.isEmpty()) {
            qFatal("no calibration without faults %s", qPrintable(complaints.join(u'\n')));
        }
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
            complaints += QStringLiteral("not a word, but not in force or not in the file");
        }
        if (end != ProgramEnds && answer.landing != oldLanding && answer.landing != newLanding) {
            complaints += QStringLiteral("neither calibration is in force");
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
        left.removeAll(QStringLiteral("/etc/ts.conf"));
        if (!left.isEmpty()) {
            complaints += QStringLiteral("left behind: ") + left.join(u' ');
        }
        return complaints;
    }

private:
    QStringList judgeFile(const DeviceRoot &root) const
    {
        const QByteArray file = root.read(Calibration);
        const bool bAbsent = !root.exists(Calibration);
        return file == newFile || (file == oldFile && bAbsent == oldFile.isEmpty())
            ? QStringList()
            : QStringList(QStringLiteral("the file is torn: '%1'").arg(QString::fromUtf8(file)));
    }

    /// The touchscreen under the \a pixel of a screen that it does not quite cover.
    static RawPoint touchAt(QPoint pixel)
    {
        return {40 + pixel.x() * 4 / 5, 40 + pixel.y() * 4 / 5};
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
        CalibrationRecord record;
        for (std::size_t i = 0; i < CalibrationRecord::PointCount; ++i) {
            const QPoint target = crosshairTargets(ScreenSize)[i];
            const RawPoint touch = touchAt(target);
            record.rawX[i] = touch.x;
            record.rawY[i] = touch.y;
            record.screenX[i] = target.x();
            record.screenY[i] = target.y();
        }
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
        auto *pAccept = pPage->findChild<QPushButton *>(QStringLiteral("acceptCalibrationButton"));
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

} // namespace
Q_DECLARE_METATYPE(Calibrating::End)

/// What the operator confirms is applied whole or not at all, and the operator knows which, at
/// whatever moment the disk fails or the power goes.
class TestFileFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Hundreds of devices are made, and the journal knows what of them would be on a disk.
        if (QFileInfo(QStringLiteral("/dev/shm")).isWritable()) {
            qputenv("TMPDIR", "/dev/shm");
        }
        setScreen(ScreenSize);
        void *pShared = mmap(nullptr, sizeof(Journal), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        QVERIFY(pShared != MAP_FAILED);
        pJournal = new (pShared) Journal;
    }

    void save_data()
    {
        QTest::addColumn<QByteArray>("foreign");
        QTest::newRow("clean") << QByteArray();
        QTest::newRow("planted file") << QByteArray("[options]\nconfig_passwd=0000\n");
    }
    void save()
    {
        QFETCH(QByteArray, foreign);
        Saving saving(foreign);
        tryAll(saving);
    }

    void calibrate_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<Calibrating::End>("end");
        const QByteArray old = "16384 0 0 0 8192 0 65536\n";
        QTest::newRow("accepted") << old << Calibrating::Accepted;
        QTest::newRow("not accepted") << old << Calibrating::Withdrawn;
        QTest::newRow("not accepted, the first") << QByteArray() << Calibrating::Withdrawn;
        QTest::newRow("program ends") << old << Calibrating::ProgramEnds;
    }
    void calibrate()
    {
        QFETCH(QByteArray, before);
        QFETCH(Calibrating::End, end);
        Calibrating calibrating(before, end);
        tryAll(calibrating);
    }

private:
    static QString nameOf(Fault fault)
    {
        switch (fault) {
        case Fault::None:
            break;
        case Fault::Once:
            return QStringLiteral("fails once");
        case Fault::DiskFull:
            return QStringLiteral("disk full");
        case Fault::DiskDead:
            return QStringLiteral("disk dead");
        case Fault::Kill:
            return QStringLiteral("killed");
        }
        return QStringLiteral("no fault");
    }

    /// Every fault at every call, until there is no call left.
    void tryAll(Trial &trial)
    {
        QStringList complaints;
        judged.clear();
        int nTried = 0;
        for (const Fault fault :
             {Fault::None, Fault::Once, Fault::DiskFull, Fault::DiskDead, Fault::Kill}) {
            for (int nCall = 1; nCall > 0; ++nTried) {
                QStringList found;
                nCall = tryOne(trial, fault, nCall, found);
                for (const QString &complaint : std::as_const(found)) {
                    complaints +=
                        QStringLiteral("%1 at %2: %3")
                            .arg(nameOf(fault), QString::fromUtf8(pJournal->faultyCall), complaint);
                }
            }
        }
        complaints.removeDuplicates();
        for (const QString &complaint : std::as_const(complaints)) {
            qInfo("%s", qPrintable(complaint)); // a failure's text would be cut off
        }
        QCOMPARE(complaints.size(), 0);
        QVERIFY(nTried > 20); // or the faults have not reached the program
    }

    /// Runs \a trial with the \a fault at call number \a nCall. Returns the next call to try; 0
    /// when none is left.
    int tryOne(Trial &trial, Fault fault, int nCall, QStringList &complaints)
    {
        DeviceRoot root;
        trial.prepare(root);
        Files before = filesOf(root);
        before.insert(trial.planted());
        const QByteArray folder = QFile::encodeName(root.path(QString()));
        const auto arm = [&] { FileFaults::arm(folder.constData(), fault, nCall, pJournal); };
        const auto answer = ask([&] { return trial.run(arm); }, complaints, fault == Fault::Kill);
        if (pJournal->bIncomplete) {
            complaints += QStringLiteral("a call could not be noted");
        }
        if (pJournal->nFirstFault == 0 && fault != Fault::None) {
            complaints.clear(); // about a run without faults, which has been judged
            return 0;
        }
        if (answer) {
            complaints += trial.judge(root, *answer);
        }
        if (answer || fault == Fault::Kill) {
            judgeDisks(trial, root, CrashModel(before, *pJournal), answer ? &*answer : nullptr,
                       complaints);
        }
        return fault == Fault::None ? 0 : pJournal->nFirstFault + 1;
    }

    /// What the run has left, and what a power cut right after it leaves of that.
    void judgeDisks(Trial &trial, const DeviceRoot &left, const CrashModel &model,
                    const Answer *pAnswer, QStringList &complaints)
    {
        const QStringList errors = pAnswer ? pAnswer->errors : QStringList();
        const Files files = filesOf(left);
        if (files != model.killed()) {
            complaints += QStringLiteral("the journal lacks a change");
        }
        judgeRestart(trial, left, {files, pAnswer != nullptr, model.isMarked(), errors}, pAnswer,
                     complaints);
        for (const Files &cut : model.powerCuts()) {
            DeviceRoot root;
            trial.prepare(root);
            setFiles(root, cut);
            QStringList found;
            judgeRestart(trial, root, {cut, pAnswer != nullptr, model.isMarked(), errors}, pAnswer,
                         found);
            for (const QString &complaint : std::as_const(found)) {
                complaints += QStringLiteral("power cut: ") + complaint;
            }
        }
    }

    /// What a new start begins with, as far as the judgement depends on it.
    struct Beginning
    {
        Files files;
        bool bAnswered; ///< the run before has come to its end
        bool bMarked;
        QStringList errors; ///< told before
        friend bool operator==(const Beginning &, const Beginning &) = default;
    };

    void judgeRestart(Trial &trial, const DeviceRoot &root, const Beginning &beginning,
                      const Answer *pAnswer, QStringList &complaints)
    {
        if (!judged.contains(beginning)) {
            judged.append(beginning);
            complaints += trial.judgeRestart(root, pAnswer, beginning.bMarked);
        }
    }

    Journal *pJournal = nullptr;
    QList<Beginning> judged; ///< of the trial
};

PANEL_TEST_MAIN(TestFileFaults)
#include "tst_filefaults.moc"
