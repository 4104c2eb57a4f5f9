// Starts a program that tells a service manager when its first frame is on the screen, ends it
// then, and prints one line: milliseconds from exec to that frame, milliseconds of processor time,
// and the program's proportional share of memory (PSS) in kB.
//
// framewatch PROGRAM [ARGUMENT]...

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int LimitMilliseconds = 60'000;
constexpr char SocketPath[] = "/run/framewatch.socket";

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::exit(1);
}

int openSocket()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, SocketPath, sizeof SocketPath);
    unlink(SocketPath);
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0
        || setenv("NOTIFY_SOCKET", SocketPath, 1) != 0) {
        fail(SocketPath);
    }
    return fd;
}

/// False when the limit is over before the program says that it is ready.
bool waitUntilReady(int fd)
{
    pollfd waiting{fd, POLLIN, 0};
    while (poll(&waiting, 1, LimitMilliseconds) > 0) {
        std::string message(256, '\0');
        const ssize_t size = recv(fd, message.data(), message.size(), 0);
        if (size > 0 && message.find("READY=1") != std::string::npos) {
            return true;
        }
    }
    return false;
}

long proportionalShare(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("Pss:")) {
            return std::stol(line.substr(line.find_first_of("0123456789")));
        }
    }
    return 0;
}

double milliseconds(const timeval &time)
{
    return double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: framewatch PROGRAM [ARGUMENT]...\n");
        return 2;
    }
    const int fd = openSocket();
    pid_t process = 0;
    const auto begin = Clock::now();
    if (posix_spawn(&process, argv[1], nullptr, nullptr, argv + 1, environ) != 0) {
        fail(argv[1]);
    }
    const bool bReady = waitUntilReady(fd);
    const std::chrono::duration<double, std::milli> wall = Clock::now() - begin;
    const long nShare = bReady ? proportionalShare(process) : 0;
    kill(process, SIGKILL);
    rusage usage{};
    wait4(process, nullptr, 0, &usage);
    unlink(SocketPath);
    if (!bReady) {
        std::fprintf(stderr, "no first frame\n");
        return 1;
    }
    std::printf("%.1f %.1f %ld\n", wall.count(),
                milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime), nShare);
    return 0;
}
