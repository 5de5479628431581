#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <span>
#include <string>

#include "bits/file_reader.h"

namespace quorlin {

// A place for the files of a test that no other run of the tests uses; gone when the test program ends.
inline std::string scratch_path(const std::string& name) {
    struct Scratch {
        std::string path = testing::TempDir() + "quorlin_" + std::to_string(getpid());
        Scratch() { std::filesystem::create_directories(path); }
        ~Scratch() {
            std::error_code error;
            std::filesystem::remove_all(path, error);
        }
    };
    static const Scratch scratch;
    return scratch.path + "/" + name;
}

// A started reader on `bytes`, which must stay, as on a file at `path`.
inline FileReader open_bytes(std::span<const uint8_t> bytes, const std::string& path,
                             uint32_t chunk_size = READER_CHUNK_SIZE) {
    FileReader reader;
    // The stream only reads. Of no bytes, the C library would write one after its block.
    auto* const block = const_cast<uint8_t*>(bytes.data());
    reader.file.reset(bytes.empty() ? std::fopen("/dev/null", "rb") : fmemopen(block, bytes.size(), "rb"));
    reader.path = path;
    reader.chunk_size = chunk_size;
    reader_start(reader);
    return reader;
}

// What a file holds; empty when it cannot be read.
inline std::string file_text(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The files of a directory by name, with what they hold; the directory is removed.
inline std::map<std::string, std::string> take_files(const std::string& directory) {
    std::map<std::string, std::string> files;
    for (const auto& file : std::filesystem::directory_iterator(directory))
        files[file.path().filename().string()] = file_text(file.path().string());
    std::filesystem::remove_all(directory);
    return files;
}

}  // namespace quorlin
