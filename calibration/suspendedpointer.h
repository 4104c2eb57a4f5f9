#pragma once

#include "platform/windowserver.h"

/// The window server's pointer, not reading the touchscreen while this lives. It is resumed at the
/// end whoever suspended it before, as the operator's next touch is the Accept button.
class SuspendedPointer
{
public:
    SuspendedPointer()
    {
        if (WindowServer *pServer = WindowServer::instance()) {
            pServer->suspendPointer();
        }
    }
    ~SuspendedPointer()
    {
        if (WindowServer *pServer = WindowServer::instance()) {
            pServer->resumePointer();
        }
    }
    SuspendedPointer(const SuspendedPointer &) = delete;
    SuspendedPointer &operator=(const SuspendedPointer &) = delete;
};
