// Preloaded into quorlin: reads of the file FAULT_FILE fail in the sector from byte FAULT_OFFSET on.
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr long SECTOR = 512;
std::FILE* failed_file = nullptr;

// Bytes of the stream before the fault.
long good_bytes(std::FILE* file) {
    char path[4096] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(fileno(file));
    const char* faulty = std::getenv("FAULT_FILE");
    if (readlink(link.c_str(), path, sizeof path - 1) < 0 || faulty == nullptr) return 1L << 40;
    if (!std::string(path).ends_with(faulty)) return 1L << 40;
    const long left = std::atol(std::getenv("FAULT_OFFSET")) - std::ftell(file);
    return left <= -SECTOR ? 1L << 40 : std::max(left, 0L);
}

template <typename Function>
Function* next_symbol(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// A stream of another file may have the address of a failed one that was closed.
void note(std::FILE* file, bool failed) {
    failed_file = failed ? file : nullptr;
    if (failed) errno = EIO;
}

}  // namespace

extern "C" size_t fread(void* to, size_t size, size_t count, std::FILE* file) {
    const size_t good = static_cast<size_t>(good_bytes(file)) / size;
    const size_t got = next_symbol(&fread, "fread")(to, size, std::min(count, good), file);
    note(file, good < count && got == good);
    return got;
}

extern "C" char* fgets(char* to, int size, std::FILE* file) {
    note(file, good_bytes(file) == 0);
    return failed_file == file ? nullptr : next_symbol(&fgets, "fgets")(to, size, file);
}

extern "C" int ferror(std::FILE* file) noexcept {
    return file == failed_file ? 1 : next_symbol(&ferror, "ferror")(file);
}
