#pragma once

/// True once the program has replaced the pointer by a blank one for its whole life. Whoever shows
/// the pointer for a while (touchscreen calibration) must put the blank one back afterwards.
/// GUI thread only.
extern bool gCursorHidden;
