#pragma once

#include <array>
#include <cstdint>

#include "ztpinfo/ztpinfo.h"

namespace quorlin {

// Fields with one layout in both formats (ETSI TS 102 366, 4.4.2 and E.1.3.1).
void print_bsmod(uint16_t bsmod, uint16_t acmod, const char* end);
void print_dialnorm(const char* name, uint16_t dialnorm, const char* words, const char* end);
void print_compr(const char* name, uint16_t compr, const char* words, const char* end);
void print_mixlevel(const char* name, uint16_t mixlevel, const char* words, const char* unit, const char* end);
void print_addbsi(uint16_t addbsie, uint16_t addbsil, const std::array<uint8_t, ZTP_MAX_ADDBSI_BYTES>& addbsi,
                  const char* end);

}  // namespace quorlin
