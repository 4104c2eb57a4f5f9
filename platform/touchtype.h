#pragma once

/// Kind of touchscreen that the panel is built with.
enum class TouchType {
    None, ///< no touchscreen device
    Single, ///< read through tslib, needs calibration
    Multi ///< reports screen positions by itself, never calibrated
};

/// Reads the kind of touchscreen from the device: whether touchscreenDevice() is there, then its
/// device-tree property.
/// A property that is missing, unreadable, empty or unknown means a single-touch screen.
TouchType readTouchType();
