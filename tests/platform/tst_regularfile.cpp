#include "platform/regularfile.h"
#include "platform/requestfile.h"
#include "tests/support/devicetest.h"
#include "tests/support/ordinaryuser.h"

class RegularFileTest : public DeviceTest
{
    Q_OBJECT

private:
    QString path() const { return root().path("/tmp/file"); }
    QByteArray name() const { return QFile::encodeName(path()); }
    QStringList folder() const
    {
        return QDir(root().path("/tmp")).entryList(QDir::Files | QDir::System, QDir::Name);
    }

private Q_SLOTS:
    void kinds_data()
    {
        // How it is read, links refused and followed; whether it is a request, and stays; whether
        // a new file can take its place, and replace it.
        const int nAbsent = FileContent::Absent;
        const int nReadable = FileContent::Readable;
        const int nNot = FileContent::Unreadable;
        row("nothing", nAbsent, nAbsent, false, false, true, true);
        row("file", nReadable, nReadable, true, true, true, true);
        row("fifo", nNot, nNot, false, false, true, true);
        row("link", nNot, nReadable, false, false, true, true);
        row("dangling", nNot, nAbsent, false, false, true, true);
        row("directory", nNot, nNot, false, false, true, false);
        row("full directory", nNot, nNot, false, true, false, false);
    }
    void kinds()
    {
        FETCH(int, refuse, int, follow, bool, requested, bool, stays, bool, anew, bool, replaced);
        const QByteArray kind = QTest::currentDataTag();
        root().write("/tmp/target", "target");
        root().plant("/tmp/file", kind);
        QCOMPARE(int(readRegularFile(path(), Links::Refuse).state), refuse);
        const FileContent followed = readRegularFile(path(), Links::Follow);
        QCOMPARE(int(followed.state), follow);
        QCOMPARE(followed.content.isEmpty(), followed.state != FileContent::Readable);
        QCOMPARE(followed.sError.isEmpty(), followed.state != FileContent::Unreadable);

        if (!requested && kind != "nothing") {
            expectWarning("is no file and so no request");
        }
        QCOMPARE(isRequested(path()), requested);
        QCOMPARE(isRequested(path()), requested); // and not a second line
        struct stat status = {};
        QCOMPARE(lstat(name().constData(), &status) == 0, stays);

        for (const bool bAnew : {true, false}) {
            root().plant("/tmp/file", kind);
            const bool bDone =
                bAnew ? writeNewFile(path(), "new") : replaceFile(path(), "new", 0640);
            QCOMPARE(bDone, bAnew ? anew : replaced);
            QCOMPARE(root().read("/tmp/target"), "target");
            if (bDone) {
                QCOMPARE(lstat(name().constData(), &status), 0);
                QVERIFY(S_ISREG(status.st_mode));
                QCOMPARE(root().read("/tmp/file"), "new");
                QVERIFY(!bAnew || (status.st_mode & 0777) == 0600);
            }
            QCOMPARE(folder(), bDone ? QStringList({"file", "target"}) : QStringList("target"));
        }
    }

    /// A request that cannot be opened is none, and stays.
    void unreadableRequest()
    {
        root().write("/tmp/.system/request", "");
        chmod(qPrintable(root().path("/tmp/.system/request")), 0);
        const OrdinaryUser user(root(), "/tmp/.system");
        QVERIFY(!isRequested(root().path("/tmp/.system/request")));
        QVERIFY(root().exists("/tmp/.system/request"));
    }

    /// One that cannot be removed is served once, and again when it is made again.
    void requestServedOnce()
    {
        root().write("/tmp/ask", "");
        RequestFile request("/tmp/ask");
        QVERIFY(request.isPending());
        request.begin();
        {
            const OrdinaryUser user(root(), "/tmp");
            expectWarning("/tmp/ask cannot be removed");
            QVERIFY(!request.finish() && !request.isPending());
            QVERIFY(request.isBegun());
        }
        root().remove("/tmp/ask");
        root().write("/tmp/ask", "again");
        QVERIFY(request.isPending() && !request.isBegun());
        QVERIFY(request.finish() && !root().exists("/tmp/ask"));
        QVERIFY(!request.isPending());
    }

    void limit()
    {
        root().write("/tmp/file", QByteArray(100000, 'x'));
        QCOMPARE(readRegularFile(path(), Links::Refuse, 100000).content.size(), 100000);
        QCOMPARE(readRegularFile(path(), Links::Refuse, 99999).state, FileContent::Unreadable);
    }

    void permissions()
    {
        const mode_t mask = umask(077);
        QVERIFY(replaceFile(path(), "first", 0640));
        umask(mask);
        struct stat status = {};
        QCOMPARE(stat(name().constData(), &status), 0);
        QCOMPARE(int(status.st_mode & 0777), 0640);
        QCOMPARE(chmod(name().constData(), 0604), 0);
        QVERIFY(replaceFile(path(), "second", 0640));
        QCOMPARE(stat(name().constData(), &status), 0);
        QCOMPARE(int(status.st_mode & 0777), 0604);
    }

    void strays()
    {
        root().write("/tmp/file", "kept");
        root().write("/tmp/file.panel-a1B2c3", "half a fi");
        root().write("/tmp/fileX", "kept");
        removeStrayFiles(path());
        QCOMPARE(folder(), QStringList({"file", "fileX"}));
    }

    void noRoom()
    {
        QVERIFY(!writeNewFile("/dev/full/file", "new") && !replaceFile("/nowhere/file", "new"));
        QCOMPARE(errno, ENOENT);
        // A full disk takes the beginning, which does not stay.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit before = {};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit room = {2, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &room);
        const bool bDone = writeNewFile(path(), "new") || replaceFile(path(), "new");
        setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(!bDone);
        QCOMPARE(folder(), QStringList());
    }
};

PANEL_TEST_MAIN(RegularFileTest)
#include "tst_regularfile.moc"
