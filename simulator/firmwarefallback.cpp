// Runs a program that needs the device's firmware library: with the device's own where the loader
// finds one, else with the simulated one. Where the loader looks (LD_LIBRARY_PATH, what ldconfig
// has found, the library folders) it alone knows, so it is asked. Without Qt: this is in front of
// every start of the panel.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

namespace {

constexpr char Variable[] = "LD_LIBRARY_PATH";

/// A library that is there and cannot be loaded is the device's fault to report, not ours to hide:
/// a panel must not show a simulated machine in place of a real one.
bool isMissing()
{
    if (dlopen("libfirmware.so", RTLD_LAZY | RTLD_LOCAL)) {
        return false;
    }
    const char *pReason = dlerror();
    constexpr char Missing[] = "libfirmware.so: cannot open shared object file: No such file";
    return pReason && std::strncmp(pReason, Missing, sizeof(Missing) - 1) == 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || argv[1][0] == '-') {
        std::fprintf(stderr, "firmware-fallback: usage: firmware-fallback PROGRAM [ARGUMENT]...\n");
        return 2;
    }
    if (isMissing()) {
        std::fprintf(stderr, "No libfirmware.so on this device: the simulated one is used\n");
        const char *pBefore = std::getenv(Variable);
        const std::string folders =
            pBefore && *pBefore ? std::string(pBefore) + ":" SIMULATOR_FOLDER : SIMULATOR_FOLDER;
        setenv(Variable, folders.c_str(), 1);
    }
    execvp(argv[1], argv + 1);
    std::fprintf(stderr, "firmware-fallback: cannot run %s: %s\n", argv[1], std::strerror(errno));
    return 127;
}
