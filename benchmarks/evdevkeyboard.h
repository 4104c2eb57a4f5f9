#pragma once

#include <QByteArray>

#include <span>

class DeviceRoot;

/// A keyboard plugged into a device root: a pipe behind the link /dev/input/keyboard0, which the
/// program's own driver reads as it reads the kernel's. One key press is what the kernel sends for
/// it: press, repeats and release, each with its report.
class EvdevKeyboard
{
public:
    /// Plugs it in. Ends the process when that is not possible. \a root outlives it.
    explicit EvdevKeyboard(const DeviceRoot &root);
    ~EvdevKeyboard();
    EvdevKeyboard(const EvdevKeyboard &) = delete;
    EvdevKeyboard &operator=(const EvdevKeyboard &) = delete;

    /// Adds a stroke to what is sent next: \a codes (of <linux/input-event-codes.h>) go down in
    /// order, the last one repeats \a nRepeats times, and all come up in the opposite order.
    void add(std::span<const int> codes, int nRepeats);
    /// Sends what was added, in one piece.
    void send();
    /// Whether the driver has taken all that was sent.
    bool isRead() const;

private:
    void addEvent(int nCode, int nValue);

    int nFd = -1;
    QByteArray pending;
};
