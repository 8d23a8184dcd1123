#include "Platform/LoadedCode.h"

#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <span>
#include <string>

namespace {

bool isTraced() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("TracerPid:")) return line != "TracerPid:\t0";
    return false;
}

/// Whether the loader has written addresses into the code itself, which the file has not.
bool isRelocated(const dl_phdr_info& object, const ElfW(Phdr) & dynamic) {
    const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + dynamic.p_vaddr);
    for (; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_TEXTREL) return true;
        if (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0) return true;
    }
    return false;
}

void release(std::uintptr_t begin, std::uintptr_t end) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    begin -= begin % page;
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
}

int releaseObject(dl_phdr_info* object, std::size_t, void*) {
    const std::span segments(object->dlpi_phdr, object->dlpi_phnum);
    const bool differs = std::ranges::any_of(segments, [&](const auto& segment) {
        return segment.p_type == PT_DYNAMIC && isRelocated(*object, segment);
    });
    for (const auto& segment : segments) {
        if (differs || segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
        const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
        release(begin, begin + segment.p_memsz);
    }
    return 0;
}

}  // namespace

void LoadedCode::release() {
    if (!isTraced()) dl_iterate_phdr(releaseObject, nullptr);
}
