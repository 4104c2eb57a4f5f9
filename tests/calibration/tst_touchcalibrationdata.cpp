#include "calibration/calibrationrun.h"
#include "calibration/touchcalibrationdata.h"
#include "platform/windowstack.h"
#include "settings/errorcatalogue.h"
#include "tests/calibration/calibrationtest.h"
#include "tests/calibration/touchsheet.h"
#include "tests/platform/keyboardfifo.h"
#include "tests/support/ioctlhook.h"
#include "tests/support/ordinaryuser.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <tslib.h>

namespace {

CalibrationRecord measured(const SimulatedPanel &panel)
{
    return recordOf(panel.picture(), [&panel](QPoint target) { return panel.touch(target); });
}

/// The record of a run at its start, the backup taken.
struct Run : TouchCalibrationData
{
    explicit Run(QSize screen = SimulatedPanel::Size)
    {
        nScreenWidth = screen.width();
        nScreenHeight = screen.height();
        backupCalibration();
    }
};

/// Stands for the kernel where a test lets the FIFO pass for an event device.
struct FakeEventDevice
{
    bool bPresent = false;
    std::atomic<int> nGrabber = -1; ///< the descriptor that has grabbed it
};
FakeEventDevice eventDevice;

int fakeIoctl(int fd, unsigned long request, void *pArgument)
{
    const unsigned long number = _IOC_NR(request);
    if (request == EVIOCGRAB) {
        int expected = pArgument ? -1 : fd;
        const bool bDone =
            eventDevice.nGrabber.compare_exchange_strong(expected, pArgument ? fd : -1);
        errno = pArgument ? EBUSY : EINVAL;
        return bDone ? 0 : -1;
    }
    if (request == EVIOCGVERSION) {
        *static_cast<int *>(pArgument) = EV_VERSION;
        return 0;
    }
    if (number == _IOC_NR(EVIOCGBIT(EV_ABS, 0))) {
        memset(pArgument, 0, _IOC_SIZE(request));
        static_cast<uchar *>(pArgument)[0] = (1 << ABS_X) | (1 << ABS_Y);
        static_cast<uchar *>(pArgument)[ABS_PRESSURE / 8] = 1 << ABS_PRESSURE % 8;
        return 0;
    }
    if (number >= _IOC_NR(EVIOCGBIT(0, 0)) && number <= _IOC_NR(EVIOCGBIT(EV_MAX, 0))) {
        memset(pArgument, 0xff, _IOC_SIZE(request));
        return 0;
    }
    errno = ENOTTY;
    return -1;
}

} // namespace

bool answerIoctl(int fd, unsigned long request, void *pArgument, int &result)
{
    const bool bAnswered = eventDevice.bPresent && _IOC_TYPE(request) == 'E';
    result = bAnswered ? fakeIoctl(fd, request, pArgument) : 0;
    return bAnswered;
}

class TestTouchCalibrationData : public CalibrationTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        DeviceTest::init();
        pFifo = std::make_unique<TouchscreenFifo>(root());
        calibrationFile = CalibrationFile;
    }

    void touchLandsWhereFingerIs_data()
    {
        for (int i = 0; i < 32; ++i) {
            row("way " + QByteArray::number(i), bool(i & 4), bool(i & 1), bool(i & 2), i / 8);
        }
    }
    void touchLandsWhereFingerIs()
    {
        FETCH(bool, exchanged, bool, mirroredX, bool, mirroredY, int, rotation);
        const SimulatedPanel panel{exchanged, mirroredX, mirroredY, rotation};
        const QSize screen = panel.picture();
        setScreen(screen);
        openPointer(OldFile, rotation);
        const RawPoint anywhere = panel.touch({100, 100});
        const QPoint before = landing(anywhere);

        Run data(screen);
        QCOMPARE(data.applyCalibration(measured(panel)), 0);
        for (int x = 5; x < screen.width(); x += screen.width() / 4) {
            for (int y = 5; y < screen.height(); y += screen.height() / 4) {
                const QPoint off = landing(panel.touch({x, y})) - QPoint(x, y);
                QVERIFY2(
                    qMax(qAbs(off.x()), qAbs(off.y())) <= 1,
                    qPrintable(QString::asprintf("%d,%d is off by %d,%d", x, y, off.x(), off.y())));
            }
        }

        QCOMPARE(data.restoreOldCalibration(), 0);
        QCOMPARE(root().read(calibrationFile), OldFile);
        QCOMPARE(landing(anywhere), before);
    }

    void readOnlyDirectory_data()
    {
        // "file" in the environment, empty: the built-in one. "mount" is what the command does,
        // empty: there is none. "log" of the command, and the file's state when it came.
        const QByteArray works = "if [ $2 = remount,rw ]; then chmod 755 $3; else chmod 555 $3; fi";
        const QByteArray asked = "-o remount,rw DIR old\n-o remount,ro DIR ";
        const QByteArray empty;
        const int remount = TouchCalibrationData::RemountFailed;
        const QString file = "/flash/cal/pointercal";
        row("writable", file, true, works, 0, empty, false);
        row("read-only", file, false, works, 0, asked + "new\n", false);
        row("mount without effect", file, false, "exit 32", int(ERR_FILE_WRITE), asked + "old\n",
            false);
        row("mount crashes", file, false, "kill -9 $$", remount, asked + "old\n", true);
        row("no mount", file, false, empty, remount, empty, true);
        row("built-in, read-only", "", false, works, 0, asked + "new\n", false);
        row("built-in, no mount", "", false, empty, remount, empty, true);
    }
    /// Whatever becomes of the remount: after the restore everything is as it was.
    void readOnlyDirectory()
    {
        FETCH(QString, file, bool, writable, QByteArray, mount, int, result, QByteArray, log, bool,
              fails);

        if (!file.isEmpty()) {
            calibrationFile = file;
            qputenv("POINTERCAL_FILE", QFile::encodeName(root().path(file)));
        }
        const QString directory = QFileInfo(calibrationFile).path();
        root().write(calibrationFile, OldFile);
        if (!mount.isEmpty()) {
            const QByteArray written = QFile::encodeName(root().path(calibrationFile));
            root().writeCommand("/bin/mount",
                                "state=new; grep -q '^16384 0 0 0 8192 0 65536$' " + written
                                    + " && state=old\necho \"$*\" $state >> "
                                    + QFile::encodeName(root().path("/tmp/log")) + '\n' + mount);
        }
        QFile::setPermissions(root().path(directory),
                              QFile::Permissions(writable ? 0x7755 : 0x5555));
        const OrdinaryUser user(root());
        openPointer({});

        const SimulatedPanel panel{true, true, false, 0};
        const RawPoint raw = panel.touch({100, 300});
        const QPoint before = landing(raw);
        const QPoint uncalibrated(qMin(raw.x, 799), qMin(raw.y, 479));

        Run data;
        if (result == ERR_FILE_WRITE) {
            expectWarning(CannotWrite);
        }
        QCOMPARE(int(data.applyCalibration(measured(panel))), result);
        QCOMPARE(landing(raw),
                 result == 0                    ? QPoint(100, 300)
                     : result == ERR_FILE_WRITE ? before
                                                : uncalibrated);
        QCOMPARE(root().read(calibrationFile) == OldFile, result != 0);
        const QByteArray path = QFile::encodeName(root().path(directory));
        QCOMPARE(root().read("/tmp/log"), log.replace("DIR", path));
        const std::vector<short> failures{ERR_REMOUNT_CAL, ERR_REMOUNT_PROTECT};
        QCOMPARE(data.takeRemountFailures(), fails ? failures : std::vector<short>());

        QCOMPARE(WindowServer::isCalibrationUnaccepted(), result == 0);
        QCOMPARE(data.acceptCalibration(), 0);
        QVERIFY(!WindowServer::isCalibrationUnaccepted());
        if (result != 0) {
            // Accepted all the same. The next run does not forget what was there before.
            data.settle();
            data.backupCalibration();
        }
        QCOMPARE(data.restoreOldCalibration(), 0);
        QCOMPARE(root().read(calibrationFile), OldFile);
        QCOMPARE(landing(raw), before);
    }

    /// The operator has accepted, but the note for the next start can be neither removed nor
    /// emptied, not even after a remount.
    void acceptFails()
    {
        root().write(calibrationFile, OldFile);
        root().writeCommand("/bin/mount", "exit 32");
        const QString note = root().path(calibrationFile + ".unaccepted");
        const OrdinaryUser user(root());
        openPointer({});
        Run data;
        QCOMPARE(data.applyCalibration(measured({})), 0);
        QFile::setPermissions(note, QFile::Permissions(0x4444));
        chmod(qPrintable(root().path("/etc")), 0555);
        expectWarning("Cannot remove .*unaccepted");
        QCOMPARE(data.acceptCalibration(), ERR_FILE_ERASE);
        chmod(qPrintable(root().path("/etc")), 0755);
        data.settle();
        QVERIFY(!QFile::exists(note));
    }

    /// A power cut before anybody has accepted, where the directory has to be remounted.
    void nobodyAccepts()
    {
        root().write(calibrationFile, OldFile);
        root().writeCommand("/bin/mount", "[ $2 = remount,rw ] && chmod 755 $3 || chmod 555 $3");
        const OrdinaryUser user(root(), "/etc");
        openPointer({});
        Run data;
        QCOMPARE(data.applyCalibration(measured({})), 0);
        const QByteArray unaccepted = root().read(calibrationFile);
        QVERIFY(unaccepted != OldFile);
        // What cannot be read now is no reason to keep it for good.
        const QString path = root().path(calibrationFile);
        for (const QString &unreadable : {path, path + ".unaccepted"}) {
            QFile::setPermissions(unreadable, {});
            expectWarning("Cannot read .* or its note");
            if (unreadable == path) {
                expectWarning("is broken");
            }
            openPointer({});
            QFile::setPermissions(unreadable, QFile::Permissions(0x6600));
            QCOMPARE(root().read(calibrationFile), unaccepted);
        }
        expectWarning("Nobody has accepted");
        openPointer({});
        QCOMPARE(root().read(calibrationFile), OldFile);
        QVERIFY(!WindowServer::isCalibrationUnaccepted()
                && !QFileInfo(root().path("/etc")).isWritable());
    }

    /// Without a restore in between, the calibration of the first run is the one to go back to. At
    /// the very first there was none.
    void twoRuns()
    {
        openPointer({});
        const SimulatedPanel first{false, true, false, 0};
        const SimulatedPanel second{true, false, true, 0};
        Run data;
        data.applyCalibration(measured(first));
        const QByteArray file = root().read(calibrationFile);

        data.settle();
        QCOMPARE(data.backupCalibration(), 0);
        QCOMPARE(data.backupCalibration(), WARN_CAL_BACKUP_LOADED);
        data.applyCalibration(measured(second));
        QVERIFY(root().read(calibrationFile) != file);
        for (const short code : {short(0), ERR_CAL_NO_BACKUP}) {
            QCOMPARE(data.restoreOldCalibration(), code);
            QCOMPARE(root().read(calibrationFile), file);
            QCOMPARE(landing(first.touch({600, 200})), QPoint(600, 200));
        }
    }

    /// tslib may keep an event device to itself. Pointer and run still have it in turn, and no
    /// command that the panel runs has it at all.
    void grabbedTouchscreen()
    {
        eventDevice.bPresent = true;
        root().write("/etc/ts.conf", "module_raw input grab_events=1\nmodule linear\n");
        const int fifo =
            open(QFile::encodeName(pFifo->path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        const auto tap = [fifo](int x, int y) {
            for (const int pressure : {50, 0}) {
                const QByteArray bytes = eventRecord(EV_ABS, ABS_X, x)
                    + eventRecord(EV_ABS, ABS_Y, y) + eventRecord(EV_ABS, ABS_PRESSURE, pressure)
                    + eventRecord(EV_KEY, BTN_TOUCH, pressure != 0)
                    + eventRecord(EV_SYN, SYN_REPORT, 0);
                QCOMPARE(write(fifo, bytes.constData(), std::size_t(bytes.size())), bytes.size());
            }
        };
        int pointer = -1;
        const auto pointerHasIt = [&] {
            tap(100, 200);
            return pSheet->takeTouch() == QPoint(100, 200) && eventDevice.nGrabber == pointer;
        };
        openPointer({});
        tap(120, 200);
        QCOMPARE(pSheet->takeTouch(), QPoint(120, 200));
        pointer = eventDevice.nGrabber;
        QVERIFY(pointer >= 0);

        pServer->suspendPointer();
        pServer->suspendPointer();
        TouchCalibrationData data;
        QCOMPARE(data.openTouchscreen(), 0);
        tap(300, 200);
        ts_sample sample{};
        QCOMPARE(ts_read_raw(data.touchscreen(), &sample, 1), 1);
        QCOMPARE(sample.x, 300);
        QCOMPARE(eventDevice.nGrabber, ts_fd(data.touchscreen()));
        for (const int fd : {pointer, ts_fd(data.touchscreen())}) {
            QVERIFY(fcntl(fd, F_GETFD) & FD_CLOEXEC);
        }

        QCOMPARE(data.closeTouchscreen(), 0);
        pServer->resumePointer();
        QVERIFY(pointerHasIt());
        pServer->clearCalibration();
        QVERIFY(pointerHasIt());

        // tslib forgets the grab when it is configured anew, and takes it by itself.
        pServer->suspendPointer();
        pServer->clearCalibration();
        pServer->resumePointer();
        QVERIFY(pointerHasIt());

        auto pRun = std::make_unique<CalibrationRun>();
        for (const bool bWithdrawn : {true, false}) { // or the program ends
            QCOMPARE(pRun->start(), 0);
            QCOMPARE(eventDevice.nGrabber, -1);
            tap(300, 200);
            QTRY_VERIFY(eventDevice.nGrabber >= 0);
            bWithdrawn ? void(pRun->handle(CalibrationEvent::Withdraw)) : pRun.reset();
            QCOMPARE(eventDevice.nGrabber, pointer);
            QVERIFY(pointerHasIt());
        }

        // No window is there, and a calibration that is asked for in front of its window.
        pSheet->hide();
        QCOMPARE(eventDevice.nGrabber, -1);
        pServer->resumePointer();
        QCOMPARE(eventDevice.nGrabber, -1);
        connect(WindowStack::instance(), &WindowStack::firstShown, pSheet.get(), [this, &pointer] {
            QVERIFY(!pSheet->windowHandle()->isVisible());
            QCOMPARE(eventDevice.nGrabber, pointer);
        });
        pSheet->show();
        QVERIFY(pointerHasIt());

        // Someone outside is faster. It is tried again, with one warning line.
        pServer->suspendPointer();
        eventDevice.nGrabber = fifo;
        expectWarning("Cannot take the touches back");
        pServer->resumePointer();
        auto *pTimer = pServer->findChild<QTimer *>();
        QVERIFY(pTimer->isActive());
        pTimer->setInterval(1);
        QTest::qWait(20);
        QCOMPARE(eventDevice.nGrabber, fifo);
        eventDevice.nGrabber = -1;
        QTRY_COMPARE(eventDevice.nGrabber, pointer);
        QVERIFY(!pTimer->isActive());
        ::close(fifo);
    }

private:
    void closeWindows() override
    {
        pSheet.reset();
        CalibrationTest::closeWindows();
        eventDevice.bPresent = false;
        eventDevice.nGrabber = -1;
    }

    void openPointer(const QByteArray &oldFile, int rotation = 0)
    {
        CalibrationTest::openPointer(oldFile, rotation);
        pSheet = std::make_unique<TouchSheet>();
    }

    QPoint landing(RawPoint raw)
    {
        return pSheet->landing([&] { pFifo->tap(raw); });
    }

    std::unique_ptr<TouchSheet> pSheet;
    QString calibrationFile;
};

PANEL_TEST_MAIN(TestTouchCalibrationData)
#include "tst_touchcalibrationdata.moc"
