#include "calibration/calibrationpage.h"
#include "platform/firmware.h"
#include "platform/pointertransform.h"
#include "platform/windowserver.h"
#include "tests/support/devicetest.h"

using namespace std::chrono_literals;

namespace {

struct Result
{
    int code;
    QByteArray output;
};

Result run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.waitForFinished(30000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAll()};
}

/// "plc state 6" as arguments.
Result panelctl(const QByteArray &line)
{
    return run(QStringLiteral(PANELCTL), QString::fromLatin1(line).split(u' '));
}

} // namespace

class TestPanelctl : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    void plcAndNetworkReachTheFirmware()
    {
        QCOMPARE(panelctl("init").code, 0);
        QCOMPARE(panelctl("plc stop now").code, 2); // bad usage
        QCOMPARE(panelctl("plc state 6").code, 0);
        RuntimeLink link = RuntimeLink::open();
        QCOMPARE(link.status().value_or(PlcStatus{}).state, 6);
        QCOMPARE(panelctl("plc fail-start").code, 0);
        QVERIFY(!link.startAllApplications());
        link.close();
        QVERIFY(!link.isOpen());
        QCOMPARE(panelctl("plc no-link").code, 0);
        QVERIFY(!RuntimeLink::open().isOpen());
        QCOMPARE(panelctl("net dhcp").code, 0);
        QVERIFY(root().read("/etc/settings.ini").contains("eth0.mode=dhcp"));
        QCOMPARE(panelctl("net lease 10.0.3.9").code, 0);
        QVERIFY(root().read("/simulator/firmware.state").contains("10.0.3.9"));
    }

    /// The real pages on the real touchscreen driver, the operator in another process. Exit is
    /// disabled until Accept is hit, so the request's end shows that both were, through the new
    /// calibration.
    void calibratePlaysTheOperator()
    {
        const QString file = "/etc/pointercal";
        setScreen({320, 240});
        const QByteArray init = " --mapping swapped,mirror-y --screen 320x240";
        QCOMPARE(panelctl("init --pointercal good" + init).code, 0);
        const auto exact = PointerTransform::parse(root().read(file));
        QVERIFY(exact);
        QCOMPARE(panelctl("init --pointercal wrong" + init).code, 0);
        WindowServer windowServer;
        QVERIFY(windowServer.openPointer());
        CalibrationPage page({0ms, 0ms});
        page.startAutoCalibration();

        QProcess person;
        person.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        person.start(QStringLiteral(PANELCTL),
                     {"calibrate", "--start", "--exit", "--noise", "1", "--pause", "50"});
        QTRY_COMPARE_WITH_TIMEOUT(person.state(), QProcess::NotRunning, 60000);
        QCOMPARE(person.exitCode(), 0);
        QVERIFY(!root().exists("/tmp/.system/TouchCalibration"));
        const auto measured = PointerTransform::parse(root().read(file));
        QVERIFY(measured);
        for (const RawPoint raw : {RawPoint{900, 900}, {3000, 900}, {900, 3000}, {3000, 3000}}) {
            QVERIFY((measured->map(raw) - exact->map(raw)).manhattanLength() <= 4);
        }
    }

    void syscfgMerges_data()
    {
        row("replaces",
            "[options]\neth0.mode=keep\n\n[network]\n; note\neth0.mode=static\neth0.ip=1.2.3.4\n",
            "[options]\neth0.mode=keep\n\n[network]\n; note\neth0.mode=dhcp\neth0.ip=1.2.3.4\n"
            "dnsserver1=a\\\\b&\n");
        row("adds the group, duplicates go", "[input]\nk=1\nk=2\r\n",
            "[input]\nk=1\nk=2\n[network]\neth0.mode=dhcp\ndnsserver1=a\\\\b&\n");
    }
    void syscfgMerges()
    {
        FETCH(QByteArray, settings, QByteArray, merged);
        QCOMPARE(panelctl("init").code, 0);
        root().write("/etc/settings.ini", settings);
        const QByteArray changes = "[network]\neth0.mode=dhcp\ndnsserver1=a\\\\b&\n";
        root().write("/tmp/new settings.ini", changes);
        const QString input = root().path("/tmp/new settings.ini");
        QCOMPARE(panelctl("syscfg fail 3").code, 0);
        QCOMPARE(run(root().path("/bin/syscfg"), {"-i", input, "-g", "all"}).code, 3);
        QCOMPARE(root().read("/etc/settings.ini"), settings);
        QCOMPARE(panelctl("syscfg ok").code, 0);
        const Result result = run(root().path("/bin/syscfg"), {"-i", input, "-g", "all"});
        QCOMPARE(result.output, "");
        QCOMPARE(result.code, 0);
        QCOMPARE(root().read("/etc/settings.ini"), merged);
        QCOMPARE(root().read("/simulator/syscfg-1.ini"), changes);
        QVERIFY(
            panelctl("log").output.contains("syscfg '-i' '" + input.toUtf8() + "' '-g' 'all'\n"));
    }
};

PANEL_TEST_MAIN(TestPanelctl)
#include "tst_panelctl.moc"
