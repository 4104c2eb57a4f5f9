// The on-screen keyboard: from a key press of the keypad to the repainted display, against a bare
// QLineEdit that gets the same key event, and from showPanel() to the painted keyboard, the first
// and the second time.
//
// bench_keyboard [ROUNDS]: how often each line edit is filled and emptied, 100 unless told.

#include "benchmarks/benchapplication.h"
#include "input/qveltalineedit.h"
#include "input/veltainputpanel.h"
#include "input/veltainputpanelcontext.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int Openings = 30;
constexpr double Goal = 2;

/// Tells when a widget is being painted.
class PaintWatcher : public QObject
{
public:
    explicit PaintWatcher(QWidget *widget) { widget->installEventFilter(this); }

    /// Lets the program run until the widget's next paint has reached the screen.
    void wait()
    {
        bPainted = false;
        while (!bPainted) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        bPainted = bPainted || event->type() == QEvent::Paint;
        return QObject::eventFilter(watched, event);
    }

private:
    bool bPainted = false;
};

struct Figures
{
    std::vector<double> times; // us

    double quantile(double dShare)
    {
        const auto at = times.begin() + qsizetype(dShare * double(times.size() - 1));
        std::nth_element(times.begin(), at, times.end());
        return *at;
    }
};

double microseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e3;
}

void activate(QWidget *window)
{
    window->show();
    window->activateWindow();
    while (QApplication::activeWindow() != window || !QApplication::focusWidget()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

/// \a digits and as many Backspaces into the active window \a window, each of which changes
/// what \a edit shows.
void pressKeys(QWidget *window, QLineEdit *edit, const char *digits, Figures *pFigures)
{
    PaintWatcher paint(edit);
    QCoreApplication::processEvents();
    const int nDigits = int(qstrlen(digits));
    for (int i = 0; i < 2 * nDigits; ++i) {
        const bool bDigit = i < nDigits;
        const int nKey = bDigit ? digits[i] : int(Qt::Key_Backspace);
        const QString text = bDigit ? QString(QLatin1Char(digits[i])) : QString();
        QKeyEvent press(QEvent::KeyPress, nKey, Qt::NoModifier, text);
        QKeyEvent release(QEvent::KeyRelease, nKey, Qt::NoModifier, text);
        QElapsedTimer timer;
        timer.start();
        QCoreApplication::sendEvent(window->windowHandle(), &press);
        paint.wait();
        pFigures->times.push_back(microseconds(timer));
        QCoreApplication::sendEvent(window->windowHandle(), &release);
        QCoreApplication::processEvents();
    }
    const QString left = edit->text().remove(u'.');
    if (!left.isEmpty()) {
        qFatal("the keys did not arrive: \"%s\" is left", qPrintable(left));
    }
}

void compareKeyPresses(const char *mode, const char *mask, const char *digits, quint8 nSeconds,
                       int nRounds)
{
    QLabel label(QStringLiteral("Address: "));
    QLineEdit target;
    target.setWhatsThis(QLatin1String(mode));
    target.setInputMask(QLatin1String(mask));
    VeltaInputPanelContext context(&target, &label, false, nSeconds, ScreenWidth, ScreenHeight);
    const auto *pPanel = context.findChild<VeltaInputPanel *>();
    QVeltaLineEdit *pDisplay = pPanel->lineEdit();

    QWidget window;
    window.resize(ScreenWidth, ScreenHeight);
    auto *pBare = new QLineEdit(&window);
    pBare->setInputMask(QLatin1String(mask));
    pBare->setEchoMode(pDisplay->echoMode());
    pBare->setFont(pDisplay->font());
    pBare->resize(pDisplay->size());

    // In turn, so that a busy machine slows both alike; the first round fills the caches.
    Figures bare;
    Figures keyboard;
    for (int i = 0; i <= nRounds; ++i) {
        if (i == 1) {
            bare.times.clear();
            keyboard.times.clear();
        }
        activate(&window);
        pBare->setFocus();
        pBare->home(false);
        pressKeys(&window, pBare, digits, &bare);
        context.showPanel();
        activate(&context);
        pressKeys(&context, pDisplay, digits, &keyboard);
        context.hide();
    }
    const auto report = [&](const char *what, double dShare) {
        const double dKeyboard = keyboard.quantile(dShare);
        const double dBare = bare.quantile(dShare);
        printf("  %-15s keyboard %7.1f us  bare line edit %7.1f us  ratio %.2f (goal %.2f)\n", what,
               dKeyboard, dBare, dKeyboard / dBare, Goal);
    };
    printf("%s, key press to repainted display, %zu presses each\n", mode, keyboard.times.size());
    report("median", 0.5);
    report("99th percentile", 0.99);
}

/// Opens the keyboard and waits until it is painted.
void open(VeltaInputPanelContext *pContext)
{
    PaintWatcher paint(pContext->findChild<VeltaInputPanel *>()->lineEdit());
    pContext->showPanel();
    paint.wait();
}

/// Closes it, and lets the page below paint itself.
void close(VeltaInputPanelContext *pContext, QWidget *page)
{
    pContext->hide();
    activate(page);
    QCoreApplication::processEvents();
}

void measureOpening(const char *mode)
{
    QWidget page;
    page.resize(ScreenWidth, ScreenHeight);
    QVBoxLayout layout(&page);
    QLabel label(QStringLiteral("Address: "));
    QLineEdit target;
    target.setWhatsThis(QLatin1String(mode));
    layout.addWidget(&label);
    layout.addWidget(&target);
    activate(&page);
    QCoreApplication::processEvents();

    Figures first;
    Figures second;
    double dVeryFirst = 0;
    for (int i = 0; i < Openings; ++i) {
        QElapsedTimer timer;
        timer.start();
        // A page makes a field's keyboard when the field is edited for the first time.
        VeltaInputPanelContext context(&target, &label, false, ScreenWidth, ScreenHeight);
        open(&context);
        first.times.push_back(microseconds(timer) / 1e3);
        dVeryFirst = i == 0 ? first.times.front() : dVeryFirst;
        close(&context, &page);
        timer.start();
        open(&context);
        second.times.push_back(microseconds(timer) / 1e3);
        close(&context, &page);
    }
    printf("%-14s opening: %6.1f ms the very first time, %6.1f ms the first time of a field, "
           "%6.1f ms the second time (medians of %d)\n",
           mode, dVeryFirst, first.quantile(0.5), second.quantile(0.5), Openings);
}

} // namespace

int main(int argc, char **argv)
{
    const int nRounds = argc > 1 ? std::max(1, atoi(argv[1])) : 100;
    const BenchApplication application(argc, argv);
    for (const char *mode : {"NumInput", "HexInput", "AlphaNumInput"}) {
        measureOpening(mode);
    }
    compareKeyPresses("NumInput", "000.000.000.000; ", "192168178200", 0, nRounds);
    compareKeyPresses("NumInputPW", "00000000; ", "19216817", 20, nRounds);
    return 0;
}
