#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "support/bit_writer.h"
#include "ztpinfo/bsi.h"

namespace quorlin {

// AC-3 and E-AC-3 syncframes (ETSI TS 102 366) with any BSI, right or wrong check words, in either byte order.

// Appends the BSI as the syntax has it, from the sync word on. Fields that the syntax leaves out are not looked at.
void put_bsi(BitWriter& writer, const Ac3Bsi& bsi);
void put_bsi(BitWriter& writer, const Eac3Bsi& bsi);

// Frame length in words that an AC-3 frame announces.
uint32_t announced_words(uint32_t fscod, uint32_t frmsizecod);

// A frame of the announced length: its BSI, zeros, and the right check word.
std::vector<uint8_t> write_frame(const Eac3Bsi& bsi);

// Gives a whole frame the right check words, as AC-3 or E-AC-3 by its bsid.
void store_check_words(std::vector<uint8_t>& frame);

// The check word register after `bytes`, bit by bit.
uint16_t plain_crc16(std::span<const uint8_t> bytes);

// Exchanges the bytes of every word.
void swap_words(std::span<uint8_t> bytes);

// The bytes as words, high byte first; a last odd byte is filled up.
std::vector<uint16_t> to_words(std::span<const uint8_t> bytes);

// Frames from a description: items parted by blanks, each [COUNT*]KIND[ID][:NAME=VALUE,...]. KIND is I (independent
// E-AC-3: 5.1, 256 words, 6 blocks), T (the same, transcoded), S (mono with mixing metadata, as secondary audio has
// it), D (dependent: a stereo pair on chanmap 0x0200, 128 words, 6 blocks) or A (AC-3 5.1, 448 kbps); ID is the
// substreamid. A NAME is a BSI field, or
//   words, blocks        of an E-AC-3 frame
//   auxdatal, lastbit    of the end of the frame; the auxiliary data ends with the bits 0x12345
//   crc=1, crc=2         a bit of the frame, of its last part, is wrong
//   swap=1               every word low byte first
//   cut=N                only the first N bytes
// "x:HEX" stands for bytes as they are, "b:HEX" for a frame that begins with this BSI.
std::vector<uint8_t> syncframes(std::string_view description);

}  // namespace quorlin
