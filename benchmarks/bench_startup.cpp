// Start-up of the panel against the floor (startup_floor): wall-clock and CPU time from exec to
// the first painted frame, and peak memory. Both programs run in turn, medians are printed. The
// panel runs once more in German, for what a language costs. The lean program runs along where it
// is named.
//
// bench_startup BIN_DIR [PAIRS [LEAN]]: BIN_DIR is the build folder, PAIRS defaults to 21, LEAN is
// the program of the lean build that paints without a framebuffer.

#include "benchmarks/devicefixture.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Start
{
    double dWall; // ms
    double dCpu; // ms
    double dMemory; // MiB, the highest that was resident
};

long long monotonicNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

double milliseconds(const timeval &time)
{
    return time.tv_sec * 1e3 + time.tv_usec / 1e3;
}

Start measure(const QByteArray &program, const QByteArray &platform)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        qFatal("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const std::array<const char *, 4> arguments{program.constData(), "-platform",
                                                platform.constData(), nullptr};
    pid_t pid = 0;
    const long long nBegin = monotonicNanoseconds();
    if (posix_spawn(&pid, program.constData(), &actions, nullptr,
                    const_cast<char *const *>(arguments.data()), environ)
        != 0) {
        qFatal("cannot start %s", program.constData());
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    FILE *pOutput = fdopen(ends[0], "r");
    std::array<char, 64> line{};
    long long nFrame = 0;
    if (fgets(line.data(), line.size(), pOutput)) {
        nFrame = strtoll(line.data(), nullptr, 10);
    }
    fclose(pOutput);
    rusage usage{};
    wait4(pid, nullptr, 0, &usage);
    if (nFrame == 0) {
        qFatal("%s painted no frame", program.constData());
    }
    return {double(nFrame - nBegin) / 1e6,
            milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime),
            double(usage.ru_maxrss) / 1024};
}

double median(const std::vector<Start> &starts, double Start::*pField)
{
    std::vector<double> values;
    values.reserve(starts.size());
    for (const Start &start : starts) {
        values.push_back(start.*pField);
    }
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

/// In German, which is translated, or in English.
Start measurePanel(const QByteArray &program, const QByteArray &platform, bool bGerman)
{
    qputenv("LC_ALL", bGerman ? "de_DE.UTF-8" : "C");
    const Start start = measure(program, platform);
    qputenv("LC_ALL", "C");
    return start;
}

struct Column
{
    const char *name;
    double Start::*pField;
    const char *unit;
    double dFloorGoal; ///< of the panel, as a part of the floor's
    double dLeanGoal; ///< of the lean panel; 0: none
};
constexpr Column Columns[] = {{"time", &Start::dWall, "ms", 1.20, 0.40},
                              {"CPU", &Start::dCpu, "ms", 1.20, 0.40},
                              {"memory", &Start::dMemory, "MiB", 1.15, 0}};
constexpr double GoalOfLanguage = 1.01;

void report(const char *what, const Column &column, const char *whose, double dValue,
            double dReference, double dGoal)
{
    printf("%-8s %s %7.1f %-3s  %s %7.1f %-3s  ratio %.2f", column.name, what, dValue, column.unit,
           whose, dReference, column.unit, dValue / dReference);
    if (dGoal > 0) {
        printf(" (goal %.2f)", dGoal);
    }
    putchar('\n');
}

void reportLean(const std::vector<Start> &lean, const std::vector<Start> &panel,
                const std::vector<Start> &floor)
{
    for (const Column &column : Columns) {
        const double dLean = median(lean, column.pField);
        report("lean ", column, "floor", dLean, median(floor, column.pField), column.dLeanGoal);
        report("lean ", column, "panel", dLean, median(panel, column.pField), 0);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc < 2) {
        fprintf(stderr, "usage: bench_startup BIN_DIR [PAIRS [LEAN]]\n");
        return 2;
    }
    const QString build = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const int nPairs = argc > 2 ? std::max(1, atoi(argv[2])) : 21;
    const DeviceFixture device(build + "/simulator/panelctl");
    qputenv("PANEL_ROOT", QFile::encodeName(device.root()));
    qputenv("LD_LIBRARY_PATH", QFile::encodeName(build + "/simulator"));
    qputenv("QT_PLUGIN_PATH", QFile::encodeName(build + "/benchmarks/plugins"));
    qputenv("QT_QPA_GENERIC_PLUGINS", "frameprobe");
    qputenv("FRAMEPROBE", "first");
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(device.root()));
    const QByteArray platform = device.platform().toLocal8Bit();
    const QByteArray panel = QFile::encodeName(build + "/operator-panel");
    const QByteArray floor = QFile::encodeName(build + "/benchmarks/startup_floor");
    const QByteArray lean = argc > 3 ? argv[3] : "";
    measure(panel, platform); // files come from the disk once
    measure(floor, platform);
    std::vector<Start> panelStarts;
    std::vector<Start> germanStarts;
    std::vector<Start> floorStarts;
    std::vector<Start> leanStarts;
    for (int i = 0; i < nPairs; ++i) {
        panelStarts.push_back(measurePanel(panel, platform, false));
        germanStarts.push_back(measurePanel(panel, platform, true));
        floorStarts.push_back(measure(floor, platform));
        if (!lean.isEmpty()) {
            leanStarts.push_back(measurePanel(lean, platform, false));
        }
    }
    printf("start-up, medians of %d pairs at 800x480\n", nPairs);
    for (const Column &column : Columns) {
        report("panel", column, "floor", median(panelStarts, column.pField),
               median(floorStarts, column.pField), column.dFloorGoal);
    }
    if (!leanStarts.empty()) {
        reportLean(leanStarts, panelStarts, floorStarts);
    }
    printf("German   time %.3f  CPU %.3f of English (goal %.2f)\n",
           median(germanStarts, &Start::dWall) / median(panelStarts, &Start::dWall),
           median(germanStarts, &Start::dCpu) / median(panelStarts, &Start::dCpu), GoalOfLanguage);
    return 0;
}
