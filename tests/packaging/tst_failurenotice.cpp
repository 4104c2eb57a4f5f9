#include "packaging/failurenotice/framebuffer.h"
#include "packaging/failurenotice/letters.h"
#include "tests/support/devicetest.h"

#include <QImage>

#include <bit>

class FailureNoticeTest : public DeviceTest
{
    Q_OBJECT

private Q_SLOTS:
    // The whole text is on the screen, in letters that can be read from where the operator stands.
    void anyScreen_data()
    {
        row("240x320", 240, 320, 2);
        row("272x480", 272, 480, 2);
        row("320x240", 320, 240, 2);
        row("480x272", 480, 272, 3);
        row("800x480", 800, 480, 5);
        row("1920x1080", 1920, 1080, 12);
        row("smaller than a letter", 4, 4, 1);
    }
    void anyScreen()
    {
        FETCH(int, width, int, height, int, scale);
        const std::vector<std::string> text{
            "The panel does not run.", "Switch the device off and on again.",
            "If this message comes back, call the service and tell them:",
            "operator-panel: start-limit-hit 127"};
        const NoticeLayout layout = layOut(text, width, height);
        QImage screen(width, height, QImage::Format_RGB32);
        screen.fill(0);
        int pixels = 0;
        draw(layout, width, height, [&](const Box &box) {
            const QRect pixel(box.nX, box.nY, box.nWidth, box.nHeight);
            QVERIFY(screen.rect().contains(pixel));
            QCOMPARE(screen.pixel(pixel.center()), qRgb(0, 0, 0)); // no letter over another
            screen.setPixel(pixel.center(), qRgb(255, 255, 255));
            ++pixels;
        });
        QCOMPARE(layout.nScale, scale);
        int expected = 0;
        for (const std::string &paragraph : text) {
            for (const char character : paragraph) {
                for (const auto bits : letterFor(character)) {
                    expected += std::popcount(bits);
                }
            }
        }
        QVERIFY(width == 4 || pixels == expected);
    }

    void options_data()
    {
        const QByteArray first = "/dev/fb0";
        row("none", QByteArray(), first, 0);
        row("plain", "-platform linuxfb", first, 0);
        row("turned", "-platform linuxfb:rotation=270", first, 3);
        row("another", "-platform linuxfb:fb=/dev/fb1:rotation=90 -style x", "/dev/fb1", 1);
        row("odd", "-platform linuxfb:rotation=-90", first, 3);
    }
    void options()
    {
        FETCH(QByteArray, options, QByteArray, device, int, turns);
        const FramebufferOptions read(options.isNull() ? nullptr : options.constData());
        QCOMPARE(QByteArray::fromStdString(read.sDevice), device);
        QCOMPARE(read.nQuarterTurns, turns);
    }

    // A panel without a screen must not be kept from its way to the console.
    void noFramebuffer()
    {
        root().write("/fb0", "no device");
        FramebufferOptions options(nullptr);
        options.sDevice = root().path("/fb0").toStdString();
        QVERIFY(!Framebuffer(options).isUsable());
        options.sDevice = root().path("/missing").toStdString();
        QVERIFY(!Framebuffer(options).isUsable());
    }
};

PANEL_TEST_MAIN(FailureNoticeTest)
#include "tst_failurenotice.moc"
