// Cost of single operations, to see regressions: one tick, the validator, text wrapping, loading
// the settings. Google Benchmark's own options apply.

#include "app/mainwindow.h"
#include "benchmarks/benchapplication.h"
#include "infobox/infotext.h"
#include "platform/windowserver.h"
#include "settings/errorcatalogue.h"
#include "settings/veltasettings.h"
#include "wizard/ip4validator.h"

#include <QApplication>

#include <benchmark/benchmark.h>

namespace {

void setApplication(const QByteArray &name)
{
    writeDeviceFile("/simulator/firmware.state",
                    "[firmware]\nlink=yes\nstate=2\neth0.mode=static\neth0.ip=192.168.0.20\n"
                    "eth0.netmask=255.255.255.0\napp.0="
                        + name + "\n");
}

void tick(benchmark::State &state, bool bNewName)
{
    setApplication("Conveyor");
    WindowServer server;
    MainWindow window;
    window.controlVisibility();
    window.controlVisibility();
    int nRound = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (bNewName) {
            state.PauseTiming();
            setApplication("Conveyor " + QByteArray::number(++nRound));
            state.ResumeTiming();
        }
        window.controlVisibility();
        QCoreApplication::processEvents();
    }
}
BENCHMARK_CAPTURE(tick, nothingNew, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(tick, newApplicationName, true)->Unit(benchmark::kMicrosecond);

void validate(benchmark::State &state)
{
    const IP4Validator validator;
    QString texts[] = {QStringLiteral("192.168.0.10"), QStringLiteral("255.255.254.0"),
                       QStringLiteral("192.168.001.300"), QStringLiteral("1.2.3.4.5")};
    int nMode = IP4Validator::Address;
    for ([[maybe_unused]] auto _ : state) {
        for (QString &text : texts) {
            benchmark::DoNotOptimize(validator.validate(text, nMode));
        }
    }
}
BENCHMARK(validate);

void wrap(benchmark::State &state)
{
    const QString text = errorText(*findError(ERR_CAL_TIMEOUT));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(InfoText::wrap(text, 26));
    }
}
BENCHMARK(wrap);

void loadSettings(benchmark::State &state)
{
    writeDeviceFile(
        "/etc/settings.ini",
        "[options]\nconfig_passwd=1234\n[network]\neth0.mode=static\neth0.ip=192.168.0.20\n"
        "eth0.netmask=255.255.255.0\ndefault_gateway=192.168.0.1\ndnsserver1=192.168.0.1\n"
        "dnsserver2=0.0.0.0\n");
    for ([[maybe_unused]] auto _ : state) {
        VeltaSettings settings(QStringLiteral("/etc/settings.ini"),
                               QStringLiteral("/tmp/newsettings.ini"), QSettings::IniFormat);
        benchmark::DoNotOptimize(settings.init());
    }
}
BENCHMARK(loadSettings)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    const BenchApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
