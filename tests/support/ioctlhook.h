#pragma once

#include <cstdarg>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

/// Answers for the kernel where it can, and then gives true and the call's \a result. A program
/// that includes this defines it.
bool answerIoctl(int fd, unsigned long request, void *pArgument, int &result);

/// In place of the C library's, for tslib and Qt too.
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *pArgument = va_arg(arguments, void *);
    va_end(arguments);
    int result = 0;
    return answerIoctl(fd, request, pArgument, result)
        ? result
        : static_cast<int>(syscall(SYS_ioctl, fd, request, pArgument));
}
