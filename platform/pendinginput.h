#pragma once

/// Throws away the touches and keys that were made while the program was busy. Runs the event loop
/// until none come any more, half a second at most; other events take their course. GUI thread
/// only.
void discardPendingInput();
