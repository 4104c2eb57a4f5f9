#pragma once

class VeltaInputPanel;

/// The on-screen keyboard that is open; null when none is.
VeltaInputPanel *openKeyboard();
