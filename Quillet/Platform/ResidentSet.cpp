#include "Platform/ResidentSet.h"

#include <link.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct Mapping {
    void* begin;
    void* end;
};

/// Those whose every page is a file's, so that nothing is lost with them. Where a debugger set a
/// breakpoint, say, a page is the process's own.
std::vector<Mapping> unchangedMappings() {
    std::vector<Mapping> found;
    Mapping current{};
    std::size_t anonymous = 0, swapped = 0;  // KiB
    std::ifstream file("/proc/self/smaps");
    for (std::string line; std::getline(file, line);) {
        Mapping next{};
        if (std::sscanf(line.c_str(), "%p-%p ", &next.begin, &next.end) == 2) current = next;
        std::sscanf(line.c_str(), "Anonymous: %zu kB", &anonymous);
        const bool isLast = std::sscanf(line.c_str(), "Swap: %zu kB", &swapped) == 1;
        if (isLast && anonymous == 0 && swapped == 0) found.push_back(current);
    }
    return found;
}

void trimWithin(std::uintptr_t begin, std::uintptr_t end, const std::vector<Mapping>& unchanged) {
    for (const Mapping& mapping : unchanged) {
        const auto mappingBegin = reinterpret_cast<std::uintptr_t>(mapping.begin);
        const auto mappingEnd = reinterpret_cast<std::uintptr_t>(mapping.end);
        if (mappingBegin < end && mappingEnd > begin)
            madvise(mapping.begin, mappingEnd - mappingBegin, MADV_DONTNEED);
    }
}

/// The loader is locked while it names its objects, so none of them goes away meanwhile.
int trimObject(dl_phdr_info* object, std::size_t, void* unchanged) {
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto& segment = object->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
        const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
        trimWithin(begin, begin + segment.p_memsz,
                   *static_cast<const std::vector<Mapping>*>(unchanged));
    }
    return 0;
}

}  // namespace

void ResidentSet::trim() {
    auto unchanged = unchangedMappings();
    dl_iterate_phdr(trimObject, &unchanged);
}
