#pragma once

#include "platform/requestfile.h"

/// The service hook that writes a picture of the screen when a request file asks for it. GUI
/// thread.
class ScreenshotRequest
{
public:
    /// Clears up what a picture that was cut off at its writing has left.
    ScreenshotRequest();

    /// Writes the picture that is asked for, if one is, and removes the request, also when the
    /// picture cannot be written. The picture is a new file, put whole in the place of whatever had
    /// its name.
    void serve();

private:
    RequestFile request;
};
