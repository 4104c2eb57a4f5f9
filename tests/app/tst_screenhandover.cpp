#include "app/mainwindow.h"
#include "platform/screenhandover.h"
#include "platform/windowserver.h"
#include "tests/support/devicetest.h"
#include "tests/support/ioctlhook.h"

#include <QProgressBar>

#include <cstring>
#include <linux/fb.h>
#include <sys/mman.h>

namespace {

constexpr int Width = 800;
constexpr int Height = 480;
constexpr int LineLength = 4 * Width;
constexpr qsizetype FrameSize = qsizetype{LineLength} * Height;

/// A file that Qt's linuxfb takes for a framebuffer and maps: what it writes is seen at once.
class FrameBuffer
{
public:
    FrameBuffer() : file(folder.filePath("fb"))
    {
        need(file.open(QIODevice::ReadWrite) && file.resize(FrameSize), "a framebuffer");
        pPixels = file.map(0, FrameSize);
    }
    QByteArray path() const { return file.fileName().toLocal8Bit(); }
    QByteArray frame() const { return {reinterpret_cast<const char *>(pPixels), FrameSize}; }
    /// As another program does.
    void paint(char value) { std::memset(pPixels, value, FrameSize); }

private:
    QTemporaryDir folder;
    QFile file;
    uchar *pPixels = nullptr;
};

FrameBuffer *pFrameBuffer = nullptr;

} // namespace

bool answerIoctl(int, unsigned long request, void *pArgument, int &)
{
    if (request == FBIOGET_FSCREENINFO) {
        fb_fix_screeninfo info{};
        info.smem_len = FrameSize;
        info.line_length = LineLength;
        std::memcpy(pArgument, &info, sizeof info);
        return true;
    }
    if (request == FBIOGET_VSCREENINFO) {
        fb_var_screeninfo info{};
        info.xres = info.xres_virtual = Width;
        info.yres = info.yres_virtual = Height;
        info.bits_per_pixel = 32;
        info.red = {16, 8, 0};
        info.green = {8, 8, 0};
        info.blue = {0, 8, 0};
        std::memcpy(pArgument, &info, sizeof info);
        return true;
    }
    return false;
}

/// On Qt's real linuxfb: what arrives in the framebuffer.
class ScreenHandoverTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What was on the screen stays until a page is whole, which is what is told.
    void firstFrame()
    {
        pFrameBuffer->paint('\x11');
        const QByteArray before = pFrameBuffer->frame();
        ScreenHandover handover;
        QByteArray told;
        connect(&handover, &ScreenHandover::firstFrame, this, [&] {
            QVERIFY(told.isEmpty());
            told = pFrameBuffer->frame();
        });
        processAll();
        QCOMPARE(pFrameBuffer->frame(), before);
        QWidget window;
        window.setStyleSheet("background: rgb(10, 20, 30)");
        window.resize(Width, Height);
        window.show();
        QTRY_VERIFY(!told.isEmpty());
        QCOMPARE(told, QByteArray("\x1e\x14\x0a\xff", 4).repeated(Width * Height));
        processAll();
    }

    void plcRuns_data()
    {
        QTest::addColumn<bool>("justBefore");
        QTest::addRow("painted when it starts") << false;
        QTest::addRow("painted just before the tick") << true;
    }
    void plcRuns()
    {
        QFETCH(bool, justBefore);
        DeviceRoot root;
        root.setFirmware("state", "2");
        const WindowServer server;
        const ScreenHandover handover;
        MainWindow window;
        window.controlVisibility();
        window.controlVisibility();
        processAll();
        const QByteArray page = pFrameBuffer->frame();
        auto *pBar = window.findChild<QProgressBar *>();
        for (int i = 0; i < 10; ++i) {
            root.setFirmware("state", "1");
            pFrameBuffer->paint(char(0x40 + i));
            const QByteArray picture = pFrameBuffer->frame();
            if (!justBefore) {
                processAll(); // an idle page leaves it alone
            }
            window.update(); // under way when the window goes
            window.controlVisibility();
            processAll();
            pBar->setValue(pBar->value() + 1);
            QApplication::setOverrideCursor(i % 2 == 0 ? Qt::ArrowCursor : Qt::BlankCursor);
            window.updateDeviceInfo();
            window.controlVisibility();
            processAll();
            QApplication::restoreOverrideCursor();
            processAll();
            QVERIFY2(pFrameBuffer->frame() == picture, QByteArray::number(i));

            root.setFirmware("state", "2");
            window.controlVisibility();
            processAll();
            QVERIFY2(pFrameBuffer->frame() == page, QByteArray::number(i));
        }
        QDialog box(&window);
        box.resize(100, 100);
        box.show();
        processAll();
        QVERIFY(pFrameBuffer->frame() != page);
        box.hide();
        processAll();
        QVERIFY(pFrameBuffer->frame() == page);
    }
};

int main(int argc, char **argv)
{
    FrameBuffer frameBuffer;
    pFrameBuffer = &frameBuffer;
    qputenv("QT_QPA_FB_DISABLE_INPUT", "1");
    QByteArray platform =
        "linuxfb:fb=" + frameBuffer.path() + ":tty=/dev/null:nographicsmodeswitch";
    QByteArray option = "-platform";
    std::vector<char *> arguments(argv, argv + argc);
    arguments.insert(arguments.end(), {option.data(), platform.data(), nullptr});
    return runPanelTest(argc + 2, arguments.data(), "ScreenHandoverTest",
                        [](int count, char **values) {
                            ScreenHandoverTest test;
                            return QTest::qExec(&test, count, values);
                        });
}

#include "tst_screenhandover.moc"
