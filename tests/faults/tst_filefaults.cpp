#include "tests/faults/calibrating.h"
#include "tests/faults/saving.h"
#include "tests/support/devicetest.h"

#include <sys/mman.h>

using FileFaults::Fault;
using FileFaults::Journal;

namespace {
constexpr const char *FaultNames[] = {"no fault", "fails once", "disk full", "disk dead", "killed"};
}

/// What the operator confirms is applied whole or not at all, and the operator knows which, at
/// whatever moment the disk fails or the power goes.
class TestFileFaults : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        void *pShared = mmap(nullptr, sizeof(Journal), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        QVERIFY(pShared != MAP_FAILED);
        pJournal = new (pShared) Journal;
    }

    void save_data()
    {
        row("clean", QByteArray());
        row("planted file", "[options]\nconfig_passwd=0000\n");
    }
    void save()
    {
        FETCH(QByteArray, foreign);
        Saving saving(foreign);
        tryAll(saving);
    }

    void calibrate_data()
    {
        row("accepted", Calibrating::Accepted);
        row("program ends", Calibrating::ProgramEnds);
    }
    void calibrate()
    {
        FETCH(Calibrating::End, end);
        tryCalibrating(Old, end);
    }

    void withdrawn_data()
    {
        row("not accepted", Old);
        row("not accepted, the first", QByteArray());
    }
    void withdrawn()
    {
        FETCH(QByteArray, before);
        tryCalibrating(before, Calibrating::Withdrawn);
    }

private:
    static constexpr char Old[] = "16384 0 0 0 8192 0 65536\n";

    void tryCalibrating(const QByteArray &before, Calibrating::End end)
    {
        setScreen(Calibrating::ScreenSize);
        Calibrating calibrating(before, end);
        tryAll(calibrating);
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
                    complaints += QStringLiteral("%1 at %2: %3")
                                      .arg(FaultNames[int(fault)], pJournal->faultyCall, complaint);
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
            complaints += "a call could not be noted";
        }
        if (pJournal->nFirstFault == 0 && fault != Fault::None) {
            complaints.clear(); // about a run without faults, which has been judged
            return 0;
        }
        if (answer) {
            complaints += trial.judge(root, *answer);
            if (fault == Fault::Once && answer->nResult != 0 && filesOf(root) != before
                && trial.planted().isEmpty()) {
                complaints += "what is not applied stays";
            }
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
            complaints += "the journal lacks a change";
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
