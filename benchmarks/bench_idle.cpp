// What the panel costs while nothing happens: wake-ups, CPU time and repaints over 20 s on the
// preview page with a stopped PLC, and over 20 s on the start page with its busy bar.
//
// bench_idle BIN_DIR [SECONDS]

#include "benchmarks/devicefixture.h"

#include <QCoreApplication>
#include <QThread>

#include <cstdio>

namespace {

struct Counters
{
    long long nPaints = 0;
    long long nAwake = 0;
    long long nSwitches = 0; // voluntary context switches of all threads: every one is a wake-up
    double dCpu = 0; // ms
};

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Counters read(qint64 nPid, const QString &counterFile)
{
    Counters counters;
    sscanf(content(counterFile).constData(), "%lld %lld", &counters.nPaints, &counters.nAwake);
    const QString tasks = QStringLiteral("/proc/%1/task").arg(nPid);
    const QStringList threads = QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &thread : threads) {
        const QByteArray status = content(tasks + '/' + thread + "/status");
        const qsizetype nAt = status.indexOf("\nvoluntary_ctxt_switches:");
        counters.nSwitches +=
            atoll(status.constData() + nAt + sizeof("\nvoluntary_ctxt_switches:"));
        counters.dCpu +=
            content(tasks + '/' + thread + "/schedstat").split(' ')[0].toDouble() / 1e6;
    }
    return counters;
}

void watch(const QString &build, const char *name, bool bLink, int nSettleMs, int nSeconds,
           const char *goals)
{
    DeviceFixture device(build + "/simulator/panelctl");
    device.control({"plc", bLink ? "link" : "no-link"});
    device.control({"plc", "stop"});
    const QString counterFile = device.root() + "/counters";
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PANEL_ROOT", device.root());
    environment.insert("LD_LIBRARY_PATH", build + "/simulator");
    environment.insert("QT_PLUGIN_PATH", build + "/benchmarks/plugins");
    environment.insert("QT_QPA_GENERIC_PLUGINS", "frameprobe");
    environment.insert("FRAMEPROBE", "count");
    environment.insert("FRAMEPROBE_FILE", counterFile);
    environment.insert("XDG_RUNTIME_DIR", device.root());
    QProcess panel;
    panel.setProcessEnvironment(environment);
    panel.setProcessChannelMode(QProcess::ForwardedChannels);
    panel.start(build + "/operator-panel", {"-platform", device.platform()});
    if (!panel.waitForStarted()) {
        qFatal("the panel does not start");
    }
    QThread::msleep(nSettleMs);
    const Counters before = read(panel.processId(), counterFile);
    QThread::sleep(nSeconds);
    const Counters after = read(panel.processId(), counterFile);
    panel.terminate();
    panel.waitForFinished();
    const double dSeconds = nSeconds;
    printf("%-13s %.2f wake-ups/s of the event loop, %.2f/s of all threads, %.3f %% CPU, "
           "%lld repaints in %d s (%s)\n",
           name, (after.nAwake - before.nAwake) / dSeconds,
           (after.nSwitches - before.nSwitches) / dSeconds,
           (after.dCpu - before.dCpu) / dSeconds / 10, after.nPaints - before.nPaints, nSeconds,
           goals);
    fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc < 2) {
        fprintf(stderr, "usage: bench_idle BIN_DIR [SECONDS]\n");
        return 2;
    }
    const QString build = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const int nSeconds = argc > 2 ? std::max(1, atoi(argv[2])) : 20;
    watch(build, "preview page:", true, 8000, nSeconds, "goals: 3 wake-ups/s, 0.05 %, 0 repaints");
    watch(build, "start page:", false, 8000, nSeconds, "goals: 5 wake-ups/s, 0.2 %");
    return 0;
}
