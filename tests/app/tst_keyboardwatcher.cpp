#include "app/keyboardwatcher.h"
#include "platform/devicepath.h"
#include "platform/windowserver.h"
#include "platform/windowstack.h"
#include "tests/platform/keyboardfifo.h"
#include "tests/support/devicetest.h"

#include <map>

class KeyboardWatcherTest : public DeviceTest
{
    Q_OBJECT

private:
    std::unique_ptr<WindowServer> pServer;
    std::unique_ptr<KeyboardWatcher> pWatcher;
    std::map<QChar, KeyboardFifo> keyboards;

    void start()
    {
        pServer = std::make_unique<WindowServer>();
        pWatcher = std::make_unique<KeyboardWatcher>();
        pWatcher->start();
    }
    void closeWindows() override
    {
        pWatcher.reset();
        pServer.reset();
        keyboards.clear();
        qunsetenv("TSLIB_TSDEVICE");
    }
    void rescan() { pWatcher->rescan(root().path("/dev/input")); }
    void plug(QChar digit)
    {
        keyboards.insert_or_assign(digit, KeyboardFifo(root(), "keyboard" + QString(digit)));
    }
    /// The keyboards that are read, as digits.
    QString readOnes() const
    {
        QString digits;
        for (const auto &[digit, keyboard] : keyboards) {
            digits += keyboard.isRead() ? QString(digit) : QString();
        }
        return digits;
    }

private Q_SLOTS:
    void comeAndGo_data()
    {
        // "+0" plugs keyboard0 in, "-0" pulls it, "." is a pass of the event loop, "h" and "s" hide
        // and show the window; at its end one of the third column is read, and handlers were closed
        // so often: of two, the first goes for the second.
        row("one", "+0.", "0", 0);
        row("one pulled", "+0.-0.", "", 1);
        row("second", "+0.+1.", "01", 2);
        row("second, nothing new", "+0.+1...", "01", 2);
        row("third does nothing", "+0.+1.+2.", "01", 2);
        row("third pulled again", "+0.+1.+2.-2.", "01", 2);
        row("first of three pulled", "+0.+1.+2.-0.", "12", 4);
        row("second of three pulled", "+0.+1.+2.-1.", "02", 4);
        row("two of three pulled", "+0.+1.+2.-0-1.", "2", 3);
        row("swapped in one pass", "+0.-0+1.", "1", 1);
        row("plugged in anew in one pass", "+0.-0+0.", "0", 1);
        row("node replaced behind the link", "+0.+0.", "0", 1);
        row("three from the start", "+0+1+2.", "", 0);
        row("window away beside a third", "+0.+1.+2.h.s", "01", 4);
        row("two more while it is away", "+0.h+1+2.s", "0", 1);
        row("others while it is away", "+0.h-0+1+2+3.s", "", 1);
        row("of those others, two stay", "+0.h-0+1+2+3.s-3.", "12", 2);
    }
    void comeAndGo()
    {
        FETCH(QString, story, QString, read, int, closings);
        QWidget window;
        window.show();
        start();
        QSignalSpy closed(pServer.get(), &WindowServer::keyboardClosed);
        for (qsizetype i = 0; i < story.size(); ++i) {
            if (story[i] == u'.') {
                rescan();
            } else if (story[i] == u'h' || story[i] == u's') {
                window.setVisible(story[i] == u's');
            } else if (story[i++] == u'+') {
                plug(story[i]);
            } else {
                keyboards.at(story[i]).unplug();
            }
        }
        QCOMPARE(pServer->hasKeyboard(), !read.isEmpty());
        QCOMPARE(readOnes().size(), read.isEmpty() ? 0 : 1);
        QVERIFY2(read.contains(readOnes()), qPrintable(readOnes()));
        QCOMPARE(closed.size(), closings);
    }

    void noKeyboards_data()
    {
        // of the link; empty: no link
        row("device without an end", "/dev/null");
        row("no event device", "/dev/zero");
        row("plain file", "/etc/ts.conf");
        row("folder", "/dev");
        row("nothing", "/dev/nothing");
        row("no link", "");
    }
    void noKeyboards()
    {
        FETCH(QString, target);
        root().write("/etc/ts.conf", "");
        const QString link = root().path("/dev/input/keyboard0");
        if (target.isEmpty()) {
            root().write("/dev/input/keyboard0", "");
        } else {
            const bool bReal = QFileInfo(target).exists() && !QFileInfo(target).isDir();
            QVERIFY(QFile::link(bReal ? target : root().path(target), link));
            if (!QFileInfo(link).isDir()) { // which are not listed at all
                expectWarning("it is no keyboard");
                expectWarning("found null pointer");
            }
        }
        start();
        QVERIFY(!pServer->hasKeyboard());
        // It is counted all the same, and a keyboard beside it works.
        QFile::remove(link);
        plug('1');
        rescan();
        QCOMPARE(readOnes(), "1");
    }

    void simulatedOnesOnlyThere()
    {
        plug('0');
        const QString path = keyboards.at('0').link;
        QVERIFY(isKeyboard(path));
        const QByteArray before = qgetenv("PANEL_ROOT");
        qunsetenv("PANEL_ROOT");
        QVERIFY(!isKeyboard(path));
        QCOMPARE(devicePath("/dev"), "/dev");
        qputenv("PANEL_ROOT", before);
    }

    /// While no window is there nobody reads it; what is held down since then does nothing.
    void windowHidden()
    {
        QLineEdit edit;
        edit.show();
        plug('0');
        start();
        const KeyboardFifo &keyboard = keyboards.at('0');
        QVERIFY(keyboard.isRead());
        edit.hide();
        rescan();
        QVERIFY(!keyboard.isRead());
        keyboard.type({KEY_X});
        plug('1');

        const auto isTaken = [this, &edit] {
            QVERIFY(!edit.windowHandle()->isVisible());
            QCOMPARE(readOnes().size(), 1);
        };
        connect(WindowStack::instance(), &WindowStack::firstShown, &edit, isTaken);
        edit.show();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        const KeyboardFifo &used = keyboards.at(readOnes().front());
        used.repeat(KEY_X);
        used.type({KEY_Y});
        used.repeat(KEY_Y); // of a key that has been pressed here
        QTRY_COMPARE(edit.text(), "yy");
    }

    /// By itself: a folder that is there, one that comes late, and one that goes and comes back.
    void watches()
    {
        QDir folder(root().path("/dev/input"));
        QVERIFY(folder.removeRecursively());
        start();
        auto *pTimer = pWatcher->findChild<QTimer *>();
        QVERIFY(pTimer->isActive());
        QCOMPARE(pTimer->interval(), 2000);
        pTimer->setInterval(10);
        for (int i = 0; i < 2; ++i) {
            QVERIFY(folder.mkpath("."));
            plug('0');
            QTRY_VERIFY(pServer->hasKeyboard());
            QTRY_VERIFY(!pTimer->isActive());
            keyboards.at('0').unplug();
            QTRY_VERIFY(!pServer->hasKeyboard());
            QVERIFY(folder.removeRecursively());
            QTRY_VERIFY(pTimer->isActive());
        }
    }
};

PANEL_TEST_MAIN(KeyboardWatcherTest)
#include "tst_keyboardwatcher.moc"
