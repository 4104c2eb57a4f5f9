#include "platform/programahead.h"

#include <algorithm>
#include <cstdint>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

// Where the linker puts the code of the first frame before all other code, this is the end of it
// (cmake/lean.cmake); null elsewhere.
extern "C" [[gnu::weak]] const char panel_first_frame_end[];
extern "C" const char etext[]; // the end of all code; the linker's own

namespace {

// Bytes. The kernel reads no more for one call than the storage takes in one transfer, and forgets
// the rest: as much as panels' flash takes at least.
constexpr std::uintptr_t Stretch = 512 * 1024;

void readAhead(std::uintptr_t begin, std::uintptr_t end)
{
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    for (std::uintptr_t position = begin & ~(pageSize - 1); position < end; position += Stretch) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): addresses are what an object's table has
        madvise(reinterpret_cast<void *>(position), std::min(Stretch, end - position),
                MADV_WILLNEED);
    }
}

int readObjectAhead(dl_phdr_info *object, std::size_t, void *)
{
    const auto otherCode = reinterpret_cast<std::uintptr_t>(panel_first_frame_end);
    const auto codeEnd = reinterpret_cast<std::uintptr_t>(etext);
    for (const ElfW(Phdr) *part = object->dlpi_phdr; part < object->dlpi_phdr + object->dlpi_phnum;
         ++part) {
        if (part->p_type != PT_LOAD) {
            continue;
        }
        const std::uintptr_t begin = object->dlpi_addr + part->p_vaddr;
        const std::uintptr_t end = begin + part->p_filesz;
        if (begin <= otherCode && otherCode < end) {
            readAhead(begin, otherCode);
            readAhead(codeEnd, end);
        } else {
            readAhead(begin, end);
        }
    }
    return 1; // the program itself is the first object; its libraries have been there before it
}

} // namespace

void readProgramAhead()
{
    dl_iterate_phdr(readObjectAhead, nullptr);
}
