#pragma once

#include "platform/windowserver.h"
#include "tests/calibration/simulatedpanel.h"
#include "tests/platform/touchscreenfifo.h"
#include "tests/support/devicetest.h"

/// Base of the tests that calibrate a touchscreen which real tslib reads.
class CalibrationTest : public DeviceTest
{
protected:
    /// x' = x / 4, y' = y / 8: not what any of the simulated panels needs.
    static constexpr char OldFile[] = "16384 0 0 0 8192 0 65536\n";
    static constexpr SimulatedPanel Glass{true, false, true, 0};
    static constexpr int RunLimitMs = 30000; // far more than any machine takes
    static inline const QString CalibrationFile = "/etc/pointercal";
    static constexpr char CannotWrite[] = "Cannot write the pointer calibration file";

    std::unique_ptr<TouchscreenFifo> pFifo;
    std::unique_ptr<WindowServer> pServer;

    /// On a picture turned by \a rotation quarter turns; an empty \a oldFile is left away.
    void openPointer(const QByteArray &oldFile = OldFile, int rotation = 0)
    {
        if (!pFifo) {
            pFifo = std::make_unique<TouchscreenFifo>(root());
        }
        if (!oldFile.isEmpty()) {
            root().write(CalibrationFile, oldFile);
        }
        qputenv("QT_QPA_PLATFORM", "offscreen:rotation=" + QByteArray::number(rotation));
        pServer.reset();
        pServer = std::make_unique<WindowServer>();
        need(pServer->openPointer(), "a pointer");
    }
    void touch(QPoint finger) const { pFifo->tap(Glass.touch(finger)); }
    void touchTargets() const
    {
        for (const QPoint target : crosshairTargets(Glass.picture())) {
            touch(target);
        }
    }

    void closeWindows() override
    {
        pServer.reset();
        pFifo.reset();
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qunsetenv("TSLIB_TSDEVICE");
        qunsetenv("POINTERCAL_FILE");
    }
};
