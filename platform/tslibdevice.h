#pragma once

#include <optional>

struct tsdev;

/// \file
/// What everyone who opens the touchscreen through tslib needs besides tslib.

/// Opens touchscreenDevice(), not yet configured, for this process alone: no command that it runs
/// inherits it. The caller closes it with ts_close(). nullptr with errno set on failure.
tsdev *openTslibDevice(bool nonBlocking);

/// Lets other readers have the touches of \a device, which tslib takes for itself at the first
/// read when its configuration says "grab_events=1". Returns false when it had not taken them.
bool releaseGrab(tsdev *device);
/// Takes the touches back after a releaseGrab() that returned true. False when another reader has
/// them (errno says so). tslib does so by itself only after a ts_reconfig().
bool takeGrab(tsdev *device);

/// Whether a finger is on the touchscreen; nothing when the device cannot say.
std::optional<bool> isTouched(tsdev *device);
