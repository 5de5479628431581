// Runs a fuzz target over every file of the directories given: past findings stay regression tests.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            std::ifstream stream(file, std::ios::binary);
            // An exact-size block, so that the sanitizer sees a read of one byte too far.
            std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
            bytes.shrink_to_fit();
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++count;
        }
    }
    std::fprintf(stderr, "%zu inputs replayed\n", count);
    return count > 0 ? 0 : 1;
}
