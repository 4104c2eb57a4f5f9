#include "app/restartsequence.h"
#include "tests/platform/notifysocket.h"
#include "tests/support/devicetest.h"

#include <QElapsedTimer>

#include <sys/socket.h>
#include <sys/syscall.h>

using State = RestartSequence::State;
using Event = RestartSequence::Event;

/// The program itself: how it begins to run, how it ends and how it restarts the panel.
class EndingTest : public DeviceTest
{
    Q_OBJECT

private:
    std::unique_ptr<QProcess> pProgram;

    void start(
        const QString &platform, const std::function<void()> &prepare = [] {})
    {
        pProgram = std::make_unique<QProcess>();
        pProgram->setChildProcessModifier(prepare);
        pProgram->start(QStringLiteral(OPERATOR_PANEL), {"-platform", platform});
        QVERIFY(pProgram->waitForStarted());
    }
    /// Where the program finds its service manager.
    QByteArray notifySocket() const
    {
        QByteArray path = QFile::encodeName(root().path("/tmp/notify"));
        qputenv("NOTIFY_SOCKET", path);
        return path;
    }
    void closeWindows() override
    {
        qunsetenv("NOTIFY_SOCKET");
        if (pProgram) {
            pProgram->kill();
            pProgram->waitForFinished();
        }
        pProgram.reset();
    }
    /// Whether the program catches signals by now.
    bool catches(int nSignal) const
    {
        QFile file(QStringLiteral("/proc/%1/status").arg(pProgram->processId()));
        if (!file.open(QIODevice::ReadOnly)) {
            return false;
        }
        const QByteArray status = file.readAll();
        const auto nLine = status.indexOf("SigCgt:\t") + 8;
        return status.mid(nLine, 16).toULongLong(nullptr, 16) & (1ULL << (nSignal - 1));
    }

    /// Whether its main thread waits for time to pass, as the event loop never does.
    bool sleeps() const
    {
        QFile file(QStringLiteral("/proc/%1/syscall").arg(pProgram->processId()));
        return file.open(QIODevice::ReadOnly)
            && file.readAll().split(' ').constFirst().toInt() == SYS_clock_nanosleep;
    }

private Q_SLOTS:
    void endsInTime_data()
    {
        row("SIGTERM, idle", SIGTERM, "0", false);
        row("SIGINT, a firmware call hangs", SIGINT, "60000", true);
    }
    void endsInTime()
    {
        FETCH(int, number, QString, delayMs, bool, hard);
        root().setFirmware("delayMs", delayMs);
        NotifySocket manager(notifySocket());
        start("offscreen", [] {
            std::signal(SIGINT, SIG_IGN);
            std::signal(SIGALRM, SIG_IGN);
        });
        QTRY_VERIFY(catches(number));
        QTRY_VERIFY(manager.texts().contains("READY=1")); // the frame goes before all calls
        QTRY_COMPARE(sleeps(), hard);
        QElapsedTimer timer;
        timer.start();
        kill(static_cast<pid_t>(pProgram->processId()), number);
        QVERIFY(pProgram->waitForFinished(10000));
        QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(pProgram->exitStatus() == QProcess::CrashExit, hard);
        QCOMPARE(pProgram->exitCode(), hard ? SIGKILL : 0);
        QCOMPARE(manager.texts(),
                 hard ? QByteArrayList({"READY=1"}) : QByteArrayList({"READY=1", "STOPPING=1"}));
    }

    void restartSteps_data()
    {
        const auto asked = Event::Asked;
        const auto good = Event::Succeeded;
        const auto bad = Event::Failed;
        const auto late = Event::TimeUp;
        row("asked twice", QList{asked, asked}, State::Commanded, false);
        row("succeeds", QList{asked, good}, State::Awaited, false);
        row("asked again, succeeds", QList{asked, good, asked, good}, State::Awaited, false);
        row("fails", QList{asked, bad}, State::Failed, true);
        row("fails, then succeeds", QList{asked, bad, asked, good}, State::Awaited, false);
        row("hangs", QList{asked, late}, State::Overdue, true);
        row("hangs, then fails", QList{asked, late, bad}, State::Overdue, true);
        row("does not happen", QList{asked, good, late}, State::Overdue, true);
        // Not waited for 120 s again.
        row("never happens", QList{asked, good, late, asked, good}, State::Overdue, true);
        row("retry fails", QList{asked, good, late, asked, bad}, State::Failed, true);
        row("retry hangs", QList{asked, good, late, asked, late}, State::Overdue, true);
    }
    void restartSteps()
    {
        FETCH(QList<Event>, events, State, state, bool, retry);
        RestartSequence sequence(root().path("/sbin/reboot"));
        for (const Event event : std::as_const(events)) {
            sequence.handle(event);
        }
        QCOMPARE(sequence.state(), state);
        QCOMPARE(sequence.isRetryDue(), retry);
    }

    // The end of the program leaves a shutdown alone, and does not wait for it.
    void restartGoesOnAfterTheEnd()
    {
        root().writeCommand("/sbin/reboot", "sleep 0.3; echo down >\"$PANEL_ROOT/log\"");
        {
            RestartSequence sequence(root().path("/sbin/reboot"));
            QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
            QTimer::singleShot(0, &sequence, &RestartSequence::restart);
            QCoreApplication::exec();
            QCOMPARE(sequence.state(), State::Commanded);
        }
        QVERIFY(!root().exists("/log"));
        QTRY_COMPARE(root().read("/log"), QByteArray("down\n"));
    }

    // Nobody reads what it and its libraries write.
    void fullErrorStream_data() { eitherWay("pipe", "socket"); }
    void fullErrorStream()
    {
        FETCH(bool, socket);
        int ends[2] = {};
        QCOMPARE(socket ? socketpair(AF_UNIX, SOCK_STREAM, 0, ends) : pipe2(ends, 0), 0);
        fcntl(ends[1], F_SETFL, fcntl(ends[1], F_GETFL) | O_NONBLOCK);
        while (write(ends[1], "x", 1) == 1) { }
        fcntl(ends[1], F_SETFL, fcntl(ends[1], F_GETFL) & ~O_NONBLOCK);
        root().write("/tmp/makeScreenshot", "");
        qputenv("QT_LOGGING_RULES", "*=true"); // thousands of lines
        start("offscreen", [&ends] {
            dup2(ends[1], STDOUT_FILENO);
            dup2(ends[1], STDERR_FILENO);
        });
        qunsetenv("QT_LOGGING_RULES");
        QTRY_VERIFY_WITH_TIMEOUT(root().exists("/tmp/screenshot.png"), 20000);
        QVERIFY(socket || !(fcntl(ends[1], F_GETFL) & O_NONBLOCK)); // ours is as it was
        const QImage picture(root().path("/tmp/screenshot.png"));
        int nOrange = 0; // of the box that tells that the fonts are missing
        for (int y = 0; y < picture.height(); ++y) {
            nOrange += picture.pixelColor(picture.width() / 3, y) == QColor("orange") ? 1 : 0;
        }
        QVERIFY(nOrange > 0);
        pProgram->terminate();
        QVERIFY(pProgram->waitForFinished());
        QCOMPARE(pProgram->exitStatus(), QProcess::NormalExit);
        QVERIFY(!(fcntl(ends[1], F_GETFL) & O_NONBLOCK));
        close(ends[0]);
        close(ends[1]);
    }

    void noDisplay_data()
    {
        row("no framebuffer", "linuxfb:fb=/nowhere", "framebuffer");
        row("no such platform", "nosuch", "platform plugin");
    }
    void noDisplay()
    {
        FETCH(QString, platform, QByteArray, missing);
        qputenv("TMPDIR", QFile::encodeName(root().path("/tmp")));
        NotifySocket manager(notifySocket());
        start(platform);
        qunsetenv("TMPDIR");
        QVERIFY(pProgram->waitForFinished());
        QCOMPARE(pProgram->exitStatus(), QProcess::NormalExit);
        QCOMPARE(pProgram->exitCode(), 1);
        const QByteArray errors = pProgram->readAllStandardError();
        const auto nLine = errors.indexOf("No display, ");
        QVERIFY2(nLine >= 0, errors.constData());
        QVERIFY2(errors.mid(nLine).contains(missing), errors.constData());
        QCOMPARE(errors.mid(nLine).count('\n'), 1);
        QVERIFY(QDir(root().path("/tmp")).isEmpty(QDir::Files));
        QCOMPARE(manager.texts(), {"STATUS=" + errors.mid(nLine).trimmed()});
    }
};

PANEL_TEST_MAIN(EndingTest)
#include "tst_ending.moc"
