#include "platform/programahead.h"

#include <algorithm>
#include <cstdint>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

// Bytes. The kernel reads no more for one call than the storage takes in one transfer, and forgets
// the rest: as much as panels' flash takes at least.
constexpr std::uintptr_t Stretch = 512 * 1024;

int readAhead(dl_phdr_info *object, std::size_t, void *)
{
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    for (const ElfW(Phdr) *part = object->dlpi_phdr; part < object->dlpi_phdr + object->dlpi_phnum;
         ++part) {
        if (part->p_type != PT_LOAD) {
            continue;
        }
        std::uintptr_t position = (object->dlpi_addr + part->p_vaddr) & ~(pageSize - 1);
        const std::uintptr_t end = object->dlpi_addr + part->p_vaddr + part->p_filesz;
        for (; position < end; position += Stretch) {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): addresses are what an object's table has
            madvise(reinterpret_cast<void *>(position), std::min(Stretch, end - position),
                    MADV_WILLNEED);
        }
    }
    return 1; // the program itself is the first object; its libraries have been there before it
}

} // namespace

void readProgramAhead()
{
    dl_iterate_phdr(readAhead, nullptr);
}
