#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace quorlin {

// What `run` prints on standard output, findings by way of a recorder.
std::string printed_by(const std::function<void()>& run);

// An entry of a transcript: the name of a case, the status that `run` returns and what it prints.
std::string transcript_entry(const std::string& name, const std::function<int()>& run);

// For inputs that count by their number: a line with a checksum for each 16 of `count` transcripts. `run` makes one
// from a random engine that is always the same, without two draws in one expression: compilers differ in their order.
// What it prints by way of printed_by has the places of findings and the
// facts in it, too. With QUORLIN_TRANSCRIPTS=FOLDER the transcripts are stored there, to be compared (diff -r) with
// those of a build whose checksums are right.
std::string transcript_checksums(const std::string& name, int count,
                                 const std::function<std::string(std::mt19937& random)>& run);

// The bytes with up to four faults: a changed bit or byte, some bytes removed or doubled, a cut.
std::vector<uint8_t> with_faults(std::vector<uint8_t> bytes, std::mt19937& random);

// Compares `text` with the file at `path` (relative to the folder of the tests). With QUORLIN_UPDATE_GOLDEN=1 the file
// is rewritten; its difference is then part of the change and to be read as such.
void expect_golden(const std::string& path, const std::string& text);

}  // namespace quorlin
