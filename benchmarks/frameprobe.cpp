#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QGenericPlugin>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace {

long long monotonicNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

// Watches the program it is loaded into. With FRAMEPROBE=first it prints the time at which the
// first frame is painted and the event loop runs, and ends the program. With FRAMEPROBE=count it
// keeps "paints wake-ups" in the file that FRAMEPROBE_FILE names (shared memory, read by others).
class Probe : public QObject
{
public:
    Probe() : bFirst(qgetenv("FRAMEPROBE") == "first")
    {
        qApp->installEventFilter(this);
        if (!bFirst) {
            pCounters = fopen(qgetenv("FRAMEPROBE_FILE").constData(), "w");
            connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
                    [this] {
                        ++nAwake;
                        write();
                    });
        }
    }
    ~Probe() override
    {
        if (pCounters) {
            fclose(pCounters);
        }
    }

protected:
    bool eventFilter(QObject *pObject, QEvent *pEvent) override
    {
        if (pEvent->type() == QEvent::Paint && pObject->isWidgetType()) {
            ++nPaints;
            if (bFirst && nPaints == 1) {
                QTimer::singleShot(0, this, [] {
                    printf("%lld\n", monotonicNanoseconds());
                    fflush(stdout);
                    _exit(0);
                });
            }
            write();
        }
        return false;
    }

private:
    void write()
    {
        if (pCounters) {
            rewind(pCounters);
            fprintf(pCounters, "%lld %lld\n", nPaints, nAwake);
            fflush(pCounters);
        }
    }

    const bool bFirst;
    FILE *pCounters = nullptr;
    long long nPaints = 0;
    long long nAwake = 0;
};

} // namespace

class FrameProbePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "frameprobe.json")

public:
    QObject *create(const QString &, const QString &) override { return new Probe; }
};

#include "frameprobe.moc"
