#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorlin {

// Writes AC-4 tables of contents and dac4 payloads from a text that reads like the standard's syntax tables:
// "name:width=value" per field. Widths: bits ("3"), an escape-coded integer in groups of bits ("v2"), a field that is
// extended by one when all of its bits are 1 ("e3.2"). Several values in a row: "language_tag_bytes:8=0x65,0x6e".
// "align" fills the byte; "{" stands for pres_bytes, an 8-bit count of the bytes up to the matching "}", which fills
// the byte too; "@emdf" and the like are pieces that come again and again. Names are for the reader and for
// change_field.
std::vector<uint8_t> write_fields(const std::string& text);

// `text`, on one line, with the first `from` replaced by `to`; a test failure when there is none.
std::string change_field(const std::string& text, const std::string& from, const std::string& to);

}  // namespace quorlin
