#include "platform/pointertransform.h"
#include "platform/windowserver.h"
#include "tests/platform/sheet.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/devicetest.h"

#include <algorithm>
#include <array>
#include <sys/socket.h>
#include <tslib.h>

namespace {

const QString CalibrationFile = "/etc/pointercal";
const QString TsConf = "/etc/ts.conf";
constexpr std::array<QPoint, 5> Targets{QPoint(50, 50), QPoint(750, 50), QPoint(750, 430),
                                        QPoint(50, 430), QPoint(400, 240)};

/// x = 799 - raw y / 5, y = raw x / 8.
constexpr char SwappedFile[] = "0 -13107 52396032 8192 0 32768 65536\n";
constexpr RawPoint swappedRaw(int x, int y)
{
    return {8 * y, 5 * (799 - x)};
}

QStringList tapAt(int x, int y)
{
    return {QStringLiteral("press %1,%2").arg(x).arg(y),
            QStringLiteral("release %1,%2").arg(x).arg(y)};
}

/// The pairs of a touchscreen that reports 4 units for a pixel, \a offset units off.
CalibrationPairs scaledPairs(int offset)
{
    CalibrationPairs pairs{{}, Targets};
    std::ranges::transform(Targets, pairs.devicePoints.begin(), [offset](QPoint target) {
        return RawPoint{4 * target.x() + offset, 4 * target.y() + offset};
    });
    return pairs;
}

} // namespace

class TestPointerHandler : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        DeviceTest::init();
        pTouchscreen = std::make_unique<TouchscreenFifo>(root());
        pSheet = std::make_unique<Sheet>();
        pSheet->show();
        QVERIFY(QTest::qWaitForWindowExposed(pSheet.get()));
    }

    void nothingIsLostWhileBlocked()
    {
        start();
        for (int i = 0; i < 30; ++i) {
            pTouchscreen->send({100 + i, 200}, 1);
        }
        pTouchscreen->send({0, 0}, 0);
        pTouchscreen->tap({300, 300});
        sendNow({400, 50}, 1);
        QCOMPARE(pSheet->take(),
                 QStringList({"press 100,200", "move 129,200", "release 129,200"}) + tapAt(300, 300)
                     + QStringList{"press 400,50"});

        // More touches than are read in one go.
        sendNow({0, 0}, 0);
        pSheet->take();
        for (int i = 0; i < 1000; ++i) {
            pTouchscreen->tap({i % 800, 10});
        }
        processAll();
        QCOMPARE(pSheet->take().size(), 2000);
    }

    void positionsStayOnScreen()
    {
        root().write(CalibrationFile, "65536 0 -655360 0 65536 -655360 65536");
        start();
        QCOMPARE(tap({0, 0}), tapAt(0, 0));
        QCOMPARE(tap({4095, 4095}), tapAt(799, 479));
        QCOMPARE(tap({809, 489}), tapAt(799, 479));
        QCOMPARE(tap({10, 489}), tapAt(0, 479));
    }

    void topmostWindowGetsTouch()
    {
        start();
        Sheet box;
        box.setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
        box.setGeometry(200, 100, 100, 100);
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        waitOutDoubleTap();
        QCOMPARE(tap({250, 150}), QStringList());
        QCOMPARE(box.take(), tapAt(250, 150));
        QCOMPARE(tap({20, 20}), QStringList());
        QCOMPARE(box.take(), QStringList());

        // A touch that began on the box stays with it.
        pTouchscreen->send({250, 150}, 1);
        pTouchscreen->send({20, 20}, 1);
        sendNow({0, 0}, 0);
        QCOMPARE(box.take(), QStringList({"press 250,150", "move 20,20", "release 20,20"}));
        QCOMPARE(pSheet->take(), QStringList());
    }

    void environmentNamesPaths()
    {
        TouchscreenFifo other(root(), "/tmp/other");
        root().write("/tmp/other.cal", "65536 0 655360 0 65536 0 65536");
        root().write("/tmp/other.cal.panel-a1B2c3", "half a fi"); // of a killed save
        root().write(CalibrationFile, SwappedFile);
        qputenv("TSLIB_TSDEVICE", QFile::encodeName(other.path));
        qputenv("POINTERCAL_FILE", QFile::encodeName(root().path("/tmp/other.cal")));
        start();
        QCOMPARE(tap({100, 100}), QStringList());
        other.tap({100, 100});
        processAll();
        QCOMPARE(pSheet->take(), tapAt(110, 100));
        QVERIFY(!root().exists("/tmp/other.cal.panel-a1B2c3"));
        // Whoever opens the touchscreen next finds the environment as the device set it.
        QVERIFY(!qEnvironmentVariableIsSet("TSLIB_CALIBFILE"));
        QVERIFY(!qEnvironmentVariableIsSet("TSLIB_CONFFILE"));
    }

    void suspended()
    {
        start();
        QCOMPARE(tap({10, 20}), tapAt(10, 20));
        pServer->suspendPointer();
        pServer->suspendPointer();
        pSheet->hide();
        pSheet->show(); // does not resume it
        waitOutDoubleTap();
        QCOMPARE(tap({30, 40}), QStringList());

        // Another reader gets all that comes meanwhile.
        pTouchscreen->tap({50, 60});
        processAll();
        QCOMPARE(readElsewhere(16),
                 TouchscreenFifo::sample({30, 40}, 1) + TouchscreenFifo::sample({30, 40}, 0));

        pServer->resumePointer();
        processAll();
        QCOMPARE(pSheet->take(), QStringList());
        QCOMPARE(tap({70, 80}), tapAt(70, 80));
        pServer->resumePointer();
        QCOMPARE(tap({90, 80}), tapAt(90, 80));
    }

    void suspendReleasesPress()
    {
        start();
        sendNow({10, 20}, 1);
        pServer->suspendPointer();
        processAll();
        QCOMPARE(pSheet->take(), tapAt(10, 20));
        pTouchscreen->send({10, 20}, 0);
        pServer->resumePointer();
        QCOMPARE(tap({30, 40}), tapAt(30, 40));

        // The end of the program is no exception.
        sendNow({10, 20}, 1);
        pServer.reset();
        processAll();
        QCOMPARE(pSheet->take(), tapAt(10, 20));
    }

    /// What begins or ends while no window is there presses no button, and another program has it.
    void windowHidden()
    {
        QPushButton button("Start", pSheet.get());
        button.setGeometry(600, 400, 80, 40);
        button.setFocusPolicy(Qt::NoFocus);
        button.show();
        QSignalSpy clicks(&button, &QPushButton::clicked);
        start();
        sendNow({640, 420}, 1);
        QVERIFY(button.isDown());
        pSheet->hide();
        processAll();
        QVERIFY(!button.isDown());
        pTouchscreen->send({640, 420}, 0);
        pTouchscreen->tap({640, 420});
        processAll();
        const QByteArray press = TouchscreenFifo::sample({640, 420}, 1);
        const QByteArray lift = TouchscreenFifo::sample({640, 420}, 0);
        QCOMPARE(readElsewhere(24), lift + press + lift);

        pTouchscreen->send({640, 420}, 1);
        pSheet->show();
        waitOutDoubleTap();
        pTouchscreen->send({640, 421}, 1); // held since then
        processAll();
        QVERIFY(!button.isDown());
        sendNow({640, 421}, 0);
        QCOMPARE(clicks.size(), 0);
        sendNow({640, 420}, 1);
        pSheet->hide();
        Sheet other;
        other.show();
        waitOutDoubleTap();
        pTouchscreen->send({640, 420}, 0);
        pTouchscreen->tap({640, 420});
        processAll();
        QCOMPARE(other.take(), tapAt(640, 420));
        QCOMPARE(clicks.size(), 0);
    }

    void cannotOpen_data()
    {
        row("no device", "/nonexistent/touchscreen", "module linear",
            "Cannot open the touchscreen /nonexistent");
        row("no touchscreen", "/dev/null", "module_raw input\nmodule linear",
            "^/dev/null is not used");
        row("unknown module", QByteArray(), "module_raw nonsense\n", "tslib cannot configure");
        row("empty configuration", QByteArray(), "", "tslib cannot configure");
        row("FIFO", QByteArray(), "fifo",
            "tslib cannot configure .*ts.conf cannot be read: not a regular file");
    }
    void cannotOpen()
    {
        FETCH(QByteArray, device, QByteArray, conf, QString, warning);
        if (!device.isEmpty()) {
            qputenv("TSLIB_TSDEVICE", device);
        }
        const QByteArray good = root().read(TsConf);
        root().plant(TsConf, conf);
        pServer = std::make_unique<WindowServer>();
        expectWarning(warning);
        QVERIFY(!pServer->openPointer());

        pServer->suspendPointer();
        pServer->clearCalibration();
        pServer->resumePointer(); // no second warning
        QCOMPARE(tap({10, 20}), QStringList());

        qunsetenv("TSLIB_TSDEVICE");
        root().plant(TsConf, good);
        pServer->resumePointer();
        QCOMPARE(tap({30, 40}), tapAt(30, 40));
    }

    /// Back as soon as it is plugged in, with one warning line however long it takes, and with the
    /// calibration; but not while suspended.
    void vanishedTouchscreen()
    {
        // A socket can be cut off, which a FIFO that tslib opens for writing too cannot.
        static std::array<int, 2> ends{};
        static int nTries = 0;
        const auto plugIn = [] {
            return socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data())
                == 0;
        };
        ts_open_restricted = [](const char *, int, void *) {
            ++nTries;
            return std::exchange(ends[0], -1);
        };
        const auto send = [](RawPoint point) {
            const QByteArray bytes = TouchscreenFifo::sample(point, 1);
            QCOMPARE(write(ends[1], bytes.constData(), std::size_t(bytes.size())), bytes.size());
            processAll();
        };
        const QString gone("touchscreen is gone");
        QVERIFY(plugIn());
        start();
        QVERIFY(isStored(scaledPairs(20)));
        auto *pTimer = pServer->findChild<QTimer *>();
        QVERIFY(!pTimer->isActive());
        send({420, 820});
        expectWarning(gone);
        close(ends[1]);
        processAll();
        QCOMPARE(pSheet->take(), tapAt(100, 200));
        QCOMPARE(pTimer->interval(), 2000);
        pTimer->setInterval(1);
        nTries = 0;
        QTRY_VERIFY(nTries > 3);
        pServer->suspendPointer();
        QVERIFY(!pTimer->isActive());
        nTries = 0;
        root().write("/dev/input/anything", "");
        QTest::qWait(20);
        QCOMPARE(nTries, 0);
        pServer->resumePointer();
        QVERIFY(plugIn());
        QTRY_VERIFY(!pTimer->isActive());
        send({420, 820});
        QCOMPARE(pSheet->take(), QStringList{"press 100,200"});

        // Out and in again while nobody reads it.
        pServer->suspendPointer();
        processAll();
        pSheet->take();
        close(ends[1]);
        QVERIFY(plugIn());
        expectWarning(gone);
        pServer->resumePointer();
        send({420, 820});
        QCOMPARE(pSheet->take(), QStringList{"press 100,200"});
        expectWarning(gone);
        close(ends[1]);
        processAll();
        pServer.reset();
    }

    /// Another device under the same name, although the old one says nothing of its end.
    void replaced_data() { eitherWay("in use", "suspended"); }
    void replaced()
    {
        FETCH(bool, suspended);
        start();
        QCOMPARE(tap({10, 20}), tapAt(10, 20));
        if (suspended) {
            pServer->suspendPointer();
        }
        QFile::remove(pTouchscreen->path); // what is open keeps its number
        pTouchscreen = std::make_unique<TouchscreenFifo>(root());
        if (suspended) {
            pServer->resumePointer();
        }
        pTouchscreen->tap({30, 40});
        QTRY_COMPARE(pSheet->log, tapAt(30, 40));
    }

    void configurationVanishes()
    {
        start();
        const QByteArray good = root().read(TsConf);
        root().write(TsConf, "module_raw nonsense\n");
        expectWarning("cannot reload");
        QVERIFY(isStored(scaledPairs(20)));
        QCOMPARE(tap({420, 820}), QStringList());
        root().write(TsConf, good);
        pServer->resumePointer();
        QCOMPARE(tap({420, 820}), tapAt(100, 200));
    }

    void reinstates_data()
    {
        // of the file, if it is one
        const QByteArray swapped(SwappedFile);
        row("own file", swapped, true, "");
        row("of ts_calibrate", "13107 0 -65536 0 8738 -131072 65536 800 480 1", true, "");
        row("coarser than the screen, own layout", "700000 11 -7\r\n12 400000 33\r\n65536\r\n",
            true, "");
        row("almost singular", "1 0 0 0 1 0 65536\n", true, "");
        row("broken", "1 2 3", true, "");
        row("none", QByteArray(), false, "");
        row("link", swapped, true, "/rw/flash/pointercal");
        row("dangling link", QByteArray(), false, "/rw/flash/pointercal");
        row("relative link", swapped, true, "../flash/pointercal");
        row("dangling relative link", QByteArray(), false, "../flash/pointercal");
    }
    void reinstates()
    {
        FETCH(QByteArray, content, bool, exists, QString, link);
        const bool bLinked = !link.isEmpty();
        const QString path = root().path(CalibrationFile);
        const QString etc = root().path("/etc");
        if (bLinked) {
            // Its directory is a link as well: ".." is not what the path lets expect.
            QVERIFY(QDir().mkpath(root().path("/rw/flash")));
            QVERIFY(QDir().rename(etc, root().path("/rw/etc")) && QFile::link("rw/etc", etc));
            QVERIFY(QFile::link(link.startsWith(u'/') ? root().path(link) : link, path));
        }
        if (exists) {
            root().write(bLinked ? "/rw/flash/pointercal" : CalibrationFile, content);
            if (!PointerTransform::parse(content)) {
                expectWarning("pointercal is broken");
            }
        }
        start();
        const std::array<RawPoint, 3> probes{RawPoint{130, 270}, {411, 99}, {77, 344}};
        QList<QStringList> before;
        for (const RawPoint probe : probes) {
            before += tap(probe);
        }
        // More than one round: a restored calibration must not drift.
        for (int i = 0; i < 3; ++i) {
            const SavedCalibration backup = pServer->saveCalibration();
            pServer->clearCalibration();
            QVERIFY(isStored(scaledPairs(20)) && file() != content);
            pServer->clearCalibration();
            QVERIFY(pServer->restoreCalibration(backup));
            QCOMPARE(root().exists(CalibrationFile), exists);
            QCOMPARE(QFileInfo(path).isSymLink(), bLinked);
            QCOMPARE(file(), content);
            for (std::size_t probe = 0; probe < probes.size(); ++probe) {
                QCOMPARE(tap(probes[probe]), before[qsizetype(probe)]);
            }
        }
    }

    void fileChangesBehindProgram_data()
    {
        // The file as it was loaded, and after a run and its restore.
        const QByteArray swapped(SwappedFile);
        const QByteArray zero("65536 0 0 0 65536 0 0\n");
        row("broken", swapped, zero, swapped);
        row("replaced", swapped, "65536 0 9 0 65536 9 65536", swapped);
        row("deleted", swapped, QByteArray(), swapped);
        row("broken, none before", QByteArray(), zero, zero);
        // A directory stands for a file that cannot be read.
        row("unreadable", QByteArray(), "directory", "directory");
    }
    /// tslib never gets what has not been checked, and a restore is what was in force.
    void fileChangesBehindProgram()
    {
        FETCH(QByteArray, before, QByteArray, change, QByteArray, restored);
        root().plant(CalibrationFile, before);
        start();
        const QStringList touch = tap(swappedRaw(100, 200));
        const bool bUnreadable = change == "directory";
        if (!change.isEmpty()) {
            root().plant(CalibrationFile, change);
        }
        // A run that is refused leaves in force what was, not what the file says now.
        CalibrationPairs line{{}, Targets};
        line.devicePoints.fill({2000, 2000});
        pServer->clearCalibration();
        pServer->clearCalibration();
        expectWarning("calibration refused");
        QVERIFY(!isStored(line));
        QCOMPARE(tap(swappedRaw(100, 200)), touch);

        const SavedCalibration backup = pServer->saveCalibration();
        pServer->clearCalibration();
        if (bUnreadable) {
            expectWarning(CannotWrite);
        }
        QCOMPARE(isStored(scaledPairs(20)), !bUnreadable);
        pServer->clearCalibration();
        QVERIFY(pServer->restoreCalibration(backup));
        QCOMPARE(tap(swappedRaw(100, 200)), touch);
        QCOMPARE(bUnreadable ? QByteArray("directory") : file(), restored);
    }

    void nobodyAccepted_data()
    {
        const QByteArray old(SwappedFile);
        const QByteArray none;
        // What stands at the file before the run, or nothing; what happens between the run and the
        // next start; and the file after it: old, new or somebody else's.
        row("cut", old, none, old);
        row("cut, none before", none, none, none);
        row("cut, broken before", "1 2 3", none, "1 2 3");
        row("cut, unreadable before", "fifo", none, none);
        row("cut, behind a link", "link", none, old);
        row("accepted", old, "accept", "new");
        row("restored", old, "restore", old);
        row("somebody else's", old, "9 0 0 0 9 0 9", "9 0 0 0 9 0 9");
        row("cut before the file", old, old, old);
        row("second run, cut", old, "again", old);
        row("cut after the second note", old, "note", old);
        row("emptied note", old, "empty", "new");
        row("broken note", old, "broken", "new");
    }
    /// The next start goes back to what was there before a run that nobody has accepted.
    void nobodyAccepted()
    {
        FETCH(QByteArray, old, QByteArray, event, QByteArray, file);
        const QString path = root().path(CalibrationFile);
        const bool bUsable = old == SwappedFile || old == "link";
        if (old == "link") {
            root().write("/tmp/target", SwappedFile);
        }
        root().plant(CalibrationFile, old);
        if (!old.isEmpty() && !bUsable) {
            expectWarning("pointercal is broken");
        }
        start();
        const QStringList before = tap(swappedRaw(100, 200));
        const SavedCalibration backup = pServer->saveCalibration();
        QCOMPARE(pServer->calibrate(scaledPairs(20), backup), CalibrationOutcome::Stored);
        const QByteArray stored = this->file();
        const QString note = (old == "link" ? "/tmp/target" : CalibrationFile) + ".unaccepted";
        QVERIFY(root().exists(note));

        if (event == "accept") {
            QVERIFY(WindowServer::acceptCalibration());
        } else if (event == "restore") {
            QVERIFY(pServer->restoreCalibration(backup));
        } else if (event == "again" || event == "note") {
            QCOMPARE(pServer->calibrate(scaledPairs(40), backup), CalibrationOutcome::Stored);
            if (event == "note") {
                root().write(CalibrationFile, stored);
            }
        } else if (event == "empty") {
            root().write(note, {});
        } else if (event == "broken") {
            root().write(note, root().read(note).replace("65536", "65537"));
        } else if (!event.isEmpty()) {
            root().write(CalibrationFile, event);
        }
        const bool bTakenBack = file != "new" && this->file() != file;
        if (bTakenBack) {
            expectWarning("Nobody has accepted");
            if (!bUsable && file != "") {
                expectWarning("pointercal is broken");
            }
        }
        if (old == "fifo") {
            expectWarning("pointercal is broken");
        }
        start();
        QCOMPARE(this->file(), file == "new" ? stored : file);
        QCOMPARE(root().exists(CalibrationFile), !file.isEmpty());
        QCOMPARE(QFileInfo(path).isSymLink(), old == "link");
        QVERIFY(!root().exists(note));
        if (bTakenBack) {
            QCOMPARE(tap(swappedRaw(100, 200)), before);
        }
    }

private:
    void closeWindows() override
    {
        pServer.reset();
        pSheet.reset();
        pTouchscreen.reset();
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qunsetenv("TSLIB_TSDEVICE");
        qunsetenv("POINTERCAL_FILE");
        ts_open_restricted = nullptr;
    }

    static constexpr char CannotWrite[] = "Cannot write the pointer calibration file";
    std::unique_ptr<TouchscreenFifo> pTouchscreen;
    std::unique_ptr<WindowServer> pServer;
    std::unique_ptr<Sheet> pSheet;

    void start()
    {
        pServer = std::make_unique<WindowServer>();
        QVERIFY(pServer->openPointer());
    }
    /// What another reader of the touchscreen gets.
    QByteArray readElsewhere(qint64 nBytes) const
    {
        QFile reader(pTouchscreen->path);
        return reader.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? reader.read(nBytes)
                                                                        : QByteArray();
    }
    void sendNow(RawPoint raw, int pressure)
    {
        pTouchscreen->send(raw, pressure);
        processAll();
    }
    QStringList tap(RawPoint raw)
    {
        pTouchscreen->tap(raw);
        processAll();
        return pSheet->take();
    }
    bool isStored(const CalibrationPairs &pairs)
    {
        return pServer->calibrate(pairs, pServer->saveCalibration()) == CalibrationOutcome::Stored;
    }
    QByteArray file() { return root().read(CalibrationFile); }
};

PANEL_TEST_MAIN(TestPointerHandler)
#include "tst_pointerhandler.moc"
