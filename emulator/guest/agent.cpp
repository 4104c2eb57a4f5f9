// The agent runs shell commands on the emulated device for whoever holds the other end of the
// virtual serial port. Every request is answered by one reply; both begin with a line of text:
//
//     run ID LIMIT SCRIPT INPUT\n<script><input>     LIMIT in ms, SCRIPT and INPUT in bytes
//     done ID STATUS OUTPUT\n<output>                STATUS as a shell has it; 124: over the limit
//
// A requester that goes away in the middle of a request is forgotten; one that goes away before the
// reply leaves a reply with its ID to whoever comes next.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int OverTheLimit = 124;
constexpr auto Look = 20ms; // how late the end of a command without output is noticed
constexpr auto HostAway = 100ms;

struct Request
{
    unsigned long long id = 0;
    std::chrono::milliseconds limit{};
    std::string script;
    std::string input;
};

/// The port to the host. Every call blocks until the host has sent or taken what is asked.
class Port
{
public:
    explicit Port(const char *pPath) : nFd(open(pPath, O_RDWR | O_CLOEXEC)) { }
    bool isOpen() const { return nFd >= 0; }

    /// False when the host goes away before \a size bytes are there.
    bool read(std::string &text, std::size_t size)
    {
        text.resize(size);
        std::size_t done = 0;
        while (done < size) {
            const ssize_t count = ::read(nFd, text.data() + done, size - done);
            if (count <= 0 && !(count < 0 && errno == EINTR)) {
                return false;
            }
            done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        }
        return true;
    }

    bool readLine(std::string &line)
    {
        line.clear();
        std::string character;
        while (read(character, 1)) {
            if (character[0] == '\n') {
                return true;
            }
            line += character;
        }
        return false;
    }

    void write(const std::string &text)
    {
        std::size_t done = 0;
        while (done < text.size()) {
            const ssize_t count = ::write(nFd, text.data() + done, text.size() - done);
            if (count > 0) {
                done += static_cast<std::size_t>(count);
            } else if (errno != EINTR) {
                std::this_thread::sleep_for(HostAway);
            }
        }
    }

private:
    int nFd = -1;
};

bool readRequest(Port &port, Request &request)
{
    std::string line;
    unsigned long long limit = 0;
    std::size_t scriptSize = 0;
    std::size_t inputSize = 0;
    if (!port.readLine(line)
        || std::sscanf(line.c_str(), "run %llu %llu %zu %zu", &request.id, &limit, &scriptSize,
                       &inputSize)
            != 4) {
        return false;
    }
    request.limit = std::chrono::milliseconds(limit);
    return port.read(request.script, scriptSize) && port.read(request.input, inputSize);
}

/// Starts the script with \a inputFd and \a outputFd in a process group of its own.
pid_t startShell(const std::string &script, int inputFd, int outputFd)
{
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);
        dup2(inputFd, STDIN_FILENO);
        dup2(outputFd, STDOUT_FILENO);
        dup2(outputFd, STDERR_FILENO);
        execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
        _exit(127);
    }
    setpgid(child, child);
    return child;
}

/// An unnamed file that holds \a content, read from its beginning; it never blocks a writer.
int temporaryFile(const std::string &content)
{
    const int fd = open("/run", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    std::size_t done = 0;
    while (fd >= 0 && done < content.size()) {
        const ssize_t count = write(fd, content.data() + done, content.size() - done);
        if (count < 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    lseek(fd, 0, SEEK_SET);
    return fd;
}

std::string contentOf(int fd)
{
    constexpr std::size_t Chunk = 65536;
    std::string content;
    std::string buffer(Chunk, '\0');
    for (;;) {
        const ssize_t count =
            pread(fd, buffer.data(), buffer.size(), static_cast<off_t>(content.size()));
        if (count <= 0) {
            return content;
        }
        content.append(buffer, 0, static_cast<std::size_t>(count));
    }
}

/// Waits for the command's end without turning the wait into a busy loop; kills its group over the
/// limit. What it leaves running in the background goes on.
int waitForEnd(pid_t child, std::chrono::milliseconds limit)
{
    const auto deadline = Clock::now() + limit;
    auto pause = 1ms;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (Clock::now() > deadline) {
            kill(-child, SIGKILL);
            waitpid(child, &status, 0);
            return OverTheLimit;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min<std::chrono::milliseconds>(pause * 2, Look);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void serve(Port &port, const Request &request)
{
    const int inputFd = temporaryFile(request.input);
    const int outputFd = temporaryFile({});
    const int status = waitForEnd(startShell(request.script, inputFd, outputFd), request.limit);
    const std::string output = contentOf(outputFd);
    close(inputFd);
    close(outputFd);
    port.write("done " + std::to_string(request.id) + ' ' + std::to_string(status) + ' '
               + std::to_string(output.size()) + '\n' + output);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: agent PORT\n");
        return 2;
    }
    Port port(argv[1]);
    if (!port.isOpen()) {
        std::perror(argv[1]);
        return 1;
    }
    for (;;) {
        Request request;
        if (readRequest(port, request)) {
            serve(port, request);
        } else {
            std::this_thread::sleep_for(HostAway); // nobody is there
        }
    }
}
