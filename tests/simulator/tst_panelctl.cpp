#include "calibration/calibrationpage.h"
#include "platform/libfirmware.h"
#include "platform/pointertransform.h"
#include "platform/windowserver.h"
#include "tests/support/devicetest.h"
#include "tests/support/screen.h"

#include <QDirIterator>
#include <QLineEdit>
#include <QMouseEvent>

namespace {

struct Result
{
    int code = -1;
    QByteArray output;
    QByteArray error;
};

Result run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(30000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

Result panelctl(const QStringList &arguments)
{
    return run(QStringLiteral(PANELCTL), arguments);
}

/// "plc state 6" as arguments.
Result panelctl(const QByteArray &line)
{
    return panelctl(QString::fromLatin1(line).split(u' '));
}

/// A full-screen widget that remembers where it was pressed and released.
class Target : public QWidget
{
public:
    QList<QPoint> presses;
    QList<QPoint> releases;

protected:
    void mousePressEvent(QMouseEvent *pEvent) override
    {
        presses.append(pEvent->globalPosition().toPoint());
    }
    void mouseReleaseEvent(QMouseEvent *pEvent) override
    {
        releases.append(pEvent->globalPosition().toPoint());
    }
};

} // namespace

class TestPanelctl : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void badUsageChangesNothing_data()
    {
        // in the error, by the line
        row("explode", "explode");
        row("--colour plc stop", "--colour");
        row("plc stop now", "now");
        row("plc state high", "high");
        row("net lease 1.2.3.256", "1.2.3.256");
        row("net static 10.0.0.1 --interface eth9", "eth9");
        row("touch 800 0", "800");
        row("touch 10", "Y");
        row("touch 10 10 --ms", "--ms");
        row("touchscreen remove", "remove");
        row("calibrate now", "now");
        row("calibrate --noise much", "much");
        row("calibrate --no-accept --exit", "--exit");
        row("keyboard type a<Foo>", "<Foo>");
        row("keyboard plug 11", "11");
        row("syscfg fail 256", "256");
        row("init --screen 800", "800");
        row("init --touch triple", "triple");
        row("init --mapping skewed,odd", "odd");
        row("screenshot", "FILE");
        row("firmware =1", "=1");
    }
    void badUsageChangesNothing()
    {
        FETCH(QString, named);
        QCOMPARE(panelctl("init").code, 0);
        const auto content = [this] {
            QByteArray all;
            QDirIterator files(root().path(QString()), QDir::Files | QDir::Hidden | QDir::System,
                               QDirIterator::Subdirectories);
            while (files.hasNext()) {
                const QFileInfo info(files.next());
                all += info.filePath().toUtf8() + QByteArray::number(info.size())
                    + info.lastModified().toString(Qt::ISODateWithMs).toUtf8();
            }
            return all;
        };
        const QByteArray before = content();
        const Result result = panelctl(QTest::currentDataTag());
        QCOMPARE(result.code, 2);
        QVERIFY2(result.error.contains(named.toLatin1()), result.error.constData());
        QCOMPARE(result.error.count('\n'), 1);
        QCOMPARE(content(), before);
    }

    void initRefusesAForeignFolder()
    {
        const QTemporaryDir folder;
        QFile precious(folder.filePath("etc"));
        QVERIFY(precious.open(QIODevice::WriteOnly));
        QCOMPARE(panelctl({"init", folder.path()}).code, 1);
        QVERIFY(precious.exists());
        QVERIFY(precious.remove());
        QCOMPARE(panelctl({"init", folder.path()}).code, 0);
        QCOMPARE(panelctl({"init", folder.path()}).code, 0);
    }

    void plcAndNetworkReachTheFirmware()
    {
        QCOMPARE(panelctl("init").code, 0);
        std::array<char, RCTRL_STATUS_SIZE> status{};
        QCOMPARE(panelctl({"plc", "app", QString(), " Gr\u00fc\u00dfe\n"}).code, 0);
        QCOMPARE(panelctl("plc state 6").code, 0);
        QCOMPARE(rctrl_get_status(1, status.data()), 0);
        QCOMPARE(status[0], char(2));
        QCOMPARE(status[4], char(6));
        QCOMPARE(QString::fromUtf8(status.data() + 88 + 440), " Gr\u00fc\u00dfe\n");
        QCOMPARE(panelctl("plc fail-start").code, 0);
        QVERIFY(rctrl_start_all_applications(1) != 0);
        QCOMPARE(panelctl("plc start-ok").code, 0);
        QCOMPARE(rctrl_start_all_applications(1), 0);
        QCOMPARE(panelctl("plc no-link").code, 0);
        QVERIFY(rctrl_init_communication() < 1);

        std::array<char, 84> text{};
        QCOMPARE(panelctl("net dhcp").code, 0);
        QVERIFY(root().read("/etc/settings.ini").contains("eth0.mode=dhcp"));
        QVERIFY(sysif_GetInterfaceIp(text.data(), "eth0") != 0);
        QCOMPARE(panelctl("net lease 10.0.3.9").code, 0);
        QCOMPARE(sysif_GetInterfaceIp(text.data(), "eth0"), 0);
        QCOMPARE(text.data(), "10.0.3.9");
        QCOMPARE(sysgw_GetDefaultGateway(text.data(), 64), 1);
        QCOMPARE(panelctl("net no-lease").code, 0);
        QCOMPARE(sysgw_GetDefaultGateway(text.data(), 64), 0);
        QCOMPARE(panelctl("net static 10.1.1.1 --interface eth2").code, 0);
        QVERIFY(sysif_IsEth2Present() != 0);
        QCOMPARE(sysdb_GetEth2Mode(text.data()), 0);
        QCOMPARE(text.data(), "static");
    }

    void bootFollowsTheSettings()
    {
        QCOMPARE(panelctl("init").code, 0);
        root().write("/etc/settings.ini", "[network]\neth0.mode=DHCP\n");
        root().write("/tmp/newsettings.ini", "left over");
        QCOMPARE(panelctl("boot").code, 0);
        std::array<char, 84> text{};
        QCOMPARE(sysdb_GetEth0Mode(text.data()), 0);
        QCOMPARE(text.data(), "dhcp");
        QVERIFY(sysif_GetInterfaceIp(text.data(), "eth0") != 0);
        QVERIFY(!root().exists("/tmp/newsettings.ini"));
    }

    void touchLandsWhereTheFingerIs_data()
    {
        row("skewed", "skewed", QSize(800, 480), 0);
        row("plain", "plain", QSize(320, 240), 0);
        row("swapped", "swapped", QSize(1920, 1080), 0);
        row("swapped, mirrored", "swapped,mirror-x,mirror-y", QSize(480, 800), 0);
        // One raw step is nearly five pixels.
        row("coarse", "coarse,mirror-y", QSize(1920, 1080), 5);
    }
    void touchLandsWhereTheFingerIs()
    {
        FETCH(QString, mapping, QSize, screen, int, tolerance);
        setScreen(screen);
        const QString size = QStringLiteral("%1x%2").arg(screen.width()).arg(screen.height());
        QCOMPARE(panelctl({"init", "--mapping", mapping, "--screen", size}).code, 0);
        Target target;
        target.setWindowFlag(Qt::FramelessWindowHint);
        target.setGeometry(QRect(QPoint(), screen));
        target.show();
        QVERIFY(QTest::qWaitForWindowExposed(&target));
        WindowServer windowServer;
        QVERIFY(windowServer.openPointer());

        const QRect inside =
            QRect(QPoint(), screen).marginsRemoved({tolerance, tolerance, tolerance, tolerance});
        const QList<QPoint> fingers{inside.topLeft(), inside.bottomRight(), inside.center()};
        for (const QPoint &finger : fingers) {
            const auto line = QByteArray::number(finger.x()) + ' ' + QByteArray::number(finger.y());
            QCOMPARE(panelctl("touch " + line + " --ms=20").code, 0);
            QTRY_COMPARE(target.releases.size(), 1);
            QCOMPARE(target.presses.size(), 1);
            for (const QPoint &seen : {target.presses.takeLast(), target.releases.takeLast()}) {
                QVERIFY2((seen - finger).manhattanLength() <= 2 * tolerance,
                         qPrintable(QStringLiteral("%1,%2").arg(seen.x()).arg(seen.y())));
            }
        }
    }

    void touchscreenComesAndGoes()
    {
        QCOMPARE(panelctl("init").code, 0);
        QCOMPARE(panelctl("touchscreen plug").code, 1);
        WindowServer windowServer;
        QVERIFY(windowServer.openPointer());
        QCOMPARE(panelctl("touchscreen unplug").code, 0);
        QVERIFY(!root().exists("/dev/input/touchscreen"));
        QCOMPARE(panelctl("touch 1 1").code, 1);
        QCOMPARE(panelctl("touchscreen unplug").code, 1);
        QCOMPARE(panelctl("touchscreen plug").code, 0);
        QCOMPARE(panelctl("touch 1 1 --ms=0").code, 0);
    }

    void calibratePlaysTheOperator_data()
    {
        // Whether the new calibration is kept; tolerance in pixels.
        // Exit is disabled until Accept is hit, so the request's end shows that both were, through
        // the new calibration.
        row("accepts and leaves", "--exit", "swapped,mirror-y", QSize(320, 240), true, 1);
        row("starts by hand, trembles, does not accept", "--start --no-accept --noise 4 --seed 3",
            "plain", QSize(800, 480), false, 12);
    }
    /// The real pages on the real touchscreen driver, the operator in another process.
    void calibratePlaysTheOperator()
    {
        FETCH(QString, options, QString, mapping, QSize, screen, bool, kept, int, tolerance);
        const QString request = "/tmp/.system/TouchCalibration";
        const QString file = "/etc/pointercal";
        setScreen(screen);
        const auto init = [&](const QString &calibration) {
            return panelctl({"init", "--pointercal", calibration, "--mapping", mapping, "--screen",
                             QStringLiteral("%1x%2").arg(screen.width()).arg(screen.height())})
                .code;
        };
        QCOMPARE(init("good"), 0);
        const auto exact = PointerTransform::parse(root().read(file));
        QVERIFY(exact);
        QCOMPARE(init("wrong"), 0);
        const QByteArray before = root().read(file);
        WindowServer windowServer;
        QVERIFY(windowServer.openPointer());
        auto pPage = std::make_unique<CalibrationPage>();
        QTimer tick; // as the main window's
        connect(&tick, &QTimer::timeout, pPage.get(), [&] {
            if (root().exists(request)) {
                pPage->startAutoCalibration();
            }
        });
        tick.start(50);

        QProcess person;
        person.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        person.start(QStringLiteral(PANELCTL), QStringList{"calibrate"} + options.split(u' '));
        QTRY_COMPARE_WITH_TIMEOUT(person.state(), QProcess::NotRunning, 60000);
        QCOMPARE(person.exitCode(), 0);
        QCOMPARE(root().exists(request), !options.contains(u"--exit"));
        QVERIFY(root().read(file) != before);
        tick.stop();
        const auto measured = PointerTransform::parse(root().read(file));
        QVERIFY(measured);
        const QRect area(QPoint(), screen);
        int nProbed = 0;
        for (int i = 0; i < 64 * 64; ++i) {
            const RawPoint raw{i % 64 * 64, i / 64 * 64};
            const QPoint finger = exact->map(raw);
            const QPoint error = measured->map(raw) - finger;
            const bool bOnScreen = area.contains(finger);
            nProbed += bOnScreen ? 1 : 0;
            QVERIFY2(!bOnScreen || std::max(std::abs(error.x()), std::abs(error.y())) <= tolerance,
                     qPrintable(QStringLiteral("%1,%2").arg(error.x()).arg(error.y())));
        }
        QVERIFY(nProbed > 100);
        pPage.reset();
        QCOMPARE(root().read(file) != before, kept);
    }

    void keyboardTypes_data()
    {
        row("US", QString(), "yZ-:;a<Left>B<lt><Home><Delete>", "Z-:;B<a");
        row("German", ":keymap=/etc/kbd/de.qmap", "yZ-[&<AltGr+q><Shift+Tab>a<Left>s<Backspace>",
            "zY\u00df\u00fc/@a");
        row("held", QString(), "abc<Left:600>X", "Xabc");
    }
    void keyboardTypes()
    {
        FETCH(QString, options, QString, typed, QString, seen);
        QCOMPARE(panelctl("init").code, 0);
        QCOMPARE(panelctl("keyboard plug").code, 0);
        QVERIFY(QFileInfo(root().path("/dev/input/keyboard0")).isSymLink());
        QLineEdit edit;
        edit.show();
        edit.activateWindow();
        edit.setFocus();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        WindowServer windowServer;
        windowServer.setKeyboardHandler(
            WindowServer::createKeyboardHandler("/dev/input/keyboard0:grab=1" + options));
        QVERIFY(windowServer.hasKeyboard());
        QCOMPARE(panelctl({"keyboard", "type", typed}).code, 0);
        QTRY_COMPARE(edit.text(), seen);
        windowServer.closeKeyboard();
        QCOMPARE(panelctl("keyboard unplug").code, 0);
        QVERIFY(QDir(root().path("/dev/input"))
                    .entryList({"keyboard*"}, QDir::AllEntries | QDir::System)
                    .isEmpty());
        QCOMPARE(panelctl("keyboard unplug").code, 1);
    }

    void nobodyListens()
    {
        QCOMPARE(panelctl("init").code, 0);
        QCOMPARE(panelctl("keyboard plug").code, 0);
        const std::array lines{"touch 1 1", "calibrate", "keyboard type a",
                               "screenshot x.png --wait 1"};
        // All at once, as each waits some seconds for the panel.
        std::array<QProcess, lines.size()> tools;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            tools[i].start(QStringLiteral(PANELCTL), QString::fromLatin1(lines[i]).split(u' '));
        }
        for (QProcess &tool : tools) {
            QVERIFY(tool.waitForFinished());
            QCOMPARE(tool.exitCode(), 1);
            const QByteArray error = tool.readAllStandardError();
            QVERIFY2(error.contains("is the panel running"), error.constData());
        }
        QVERIFY(!root().exists("/tmp/makeScreenshot"));
        QVERIFY(!root().exists("/tmp/.system/TouchCalibration"));
    }

    void syscfgMerges_data()
    {
        row("replaces",
            QByteArray("[options]\neth0.mode=keep\n\n[network]\n; note\n"
                       "eth0.mode=static\neth0.ip=1.2.3.4\n"),
            QByteArray("[options]\neth0.mode=keep\n\n[network]\n; note\n"
                       "eth0.mode=dhcp\neth0.ip=1.2.3.4\ndnsserver1=a\\\\b&\n"));
        row("adds to its group, duplicates go",
            "[network]\r\neth0.mode=a\r\neth0.mode=b\r\n\r\n[input]\r\nk=1\r\n",
            "[network]\neth0.mode=dhcp\ndnsserver1=a\\\\b&\n\n[input]\nk=1\n");
        row("adds the group", "[input]\nk=1\n",
            QByteArray("[input]\nk=1\n[network]\neth0.mode=dhcp\n"
                       "dnsserver1=a\\\\b&\n"));
        row("empty", QByteArray(), "[network]\neth0.mode=dhcp\ndnsserver1=a\\\\b&\n");
    }
    void syscfgMerges()
    {
        FETCH(QByteArray, settings, QByteArray, merged);
        QCOMPARE(panelctl("init").code, 0);
        root().write("/etc/settings.ini", settings);
        const QByteArray changes = "[network]\neth0.mode=dhcp\ndnsserver1=a\\\\b&\n";
        root().write("/tmp/new settings.ini", changes);
        const QString input = root().path("/tmp/new settings.ini");
        const Result result = run(root().path("/bin/syscfg"), {"-i", input, "-g", "all"});
        QCOMPARE(result.error, QByteArray());
        QCOMPARE(result.code, 0);
        QCOMPARE(root().read("/etc/settings.ini"), merged);
        QCOMPARE(root().read("/simulator/syscfg-1.ini"), changes);
        QVERIFY(
            panelctl("log").output.contains("syscfg '-i' '" + input.toUtf8() + "' '-g' 'all'\n"));
    }

    void syscfgMisbehaves_data()
    {
        row("fails", "fail 3", 3);
        row("crashes", "crash", -1);
        row("missing", "missing", -1);
    }
    void syscfgMisbehaves()
    {
        FETCH(QString, mode, int, code);
        QCOMPARE(panelctl("init").code, 0);
        QCOMPARE(panelctl(QStringList{"syscfg"} + mode.split(u' ')).code, 0);
        const QByteArray settings = root().read("/etc/settings.ini");
        const QString input = root().path("/tmp/newsettings.ini");
        root().write("/tmp/newsettings.ini", "[network]\neth0.mode=dhcp\n");
        const QStringList arguments{"-i", input, "-g", "all"};
        const QString program = root().path("/bin/syscfg");
        if (mode != u"missing") {
            QCOMPARE(run(program, arguments).code, code);
        }
        QCOMPARE(root().exists("/bin/syscfg"), mode != u"missing");
        QCOMPARE(root().read("/etc/settings.ini"), settings);
        QCOMPARE(panelctl("syscfg ok").code, 0);
        QCOMPARE(run(program, arguments.mid(0, 2)).code, 2);
        QCOMPARE(run(program, arguments).code, 0);
    }

    void rebootAndMountAreLogged()
    {
        QCOMPARE(panelctl("init").code, 0);
        QCOMPARE(run(root().path("/sbin/reboot"), {}).code, 0);
        QCOMPARE(run(root().path("/bin/mount"), {"-o", "remount,rw", "/a b"}).code, 0);
        const QList<QByteArray> lines = panelctl("log").output.split('\n');
        QVERIFY(lines.value(0).endsWith(" reboot"));
        QVERIFY(lines.value(1).endsWith(" mount '-o' 'remount,rw' '/a b'"));
        QCOMPARE(panelctl("log --clear").code, 0);
        QCOMPARE(panelctl("log").output, QByteArray());
    }
};

PANEL_TEST_MAIN(TestPanelctl)
#include "tst_panelctl.moc"
