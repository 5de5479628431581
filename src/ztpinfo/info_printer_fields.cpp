#include "ztpinfo/info_printer_fields.h"

#include <cmath>
#include <cstdio>

#include "ztpinfo/info_printer_lines.h"

namespace quorlin {

namespace {

constexpr uint32_t ADDBSI_BYTES_PER_ROW = 16;

// ETSI TS 102 366, 4.4.2.10: the upper four bits are a signed power of two, the lower ones the fraction after it.
double compr_db(uint16_t compr) {
    const int x = (compr >> 4) < 8 ? compr >> 4 : (compr >> 4) - 16;
    const int y = compr & 15;
    return 20 * std::log10(std::ldexp(16 + y, x + 1) / 32);
}

}  // namespace

void print_bsmod(uint16_t bsmod, uint16_t acmod, const char* end) {
    print_explained("bsmod", bsmod, "Bit stream mode: ", bsmod_name(bsmod, acmod), end);
}

void print_dialnorm(const char* name, uint16_t dialnorm, const char* words, const char* end) {
    print_number(name, dialnorm, words, dialnorm == 0 ? 31 : dialnorm, "dB", end);  // 0 is reserved and means 31
}

void print_compr(const char* name, uint16_t compr, const char* words, const char* end) {
    std::printf("            %s: 0x%04hX (%s%fdB)%s", name, compr, words, compr_db(compr), end);
}

void print_mixlevel(const char* name, uint16_t mixlevel, const char* words, const char* unit, const char* end) {
    print_number(name, mixlevel, words, 80 + mixlevel, unit, end);
}

void print_addbsi(uint16_t addbsie, uint16_t addbsil, const std::array<uint8_t, ZTP_MAX_ADDBSI_BYTES>& addbsi,
                  const char* end) {
    print_named("addbsie", addbsie, "Additional bit stream information ", PRESENCE_NAMES, end);
    if (addbsie == 0) return;
    const uint32_t byte_count = addbsil + 1U;  // addbsil is a field of 6 bits
    print_number("addbsil", addbsil, "Additional bit stream information length in bytes: ", addbsil + 1, "", end);
    std::printf("            addbsi: 0x");
    for (uint32_t i = 0; i < byte_count; ++i) {
        if (i > 0 && i % ADDBSI_BYTES_PER_ROW == 0) std::printf("\n                      ");
        std::printf("%02hX", static_cast<uint16_t>(addbsi[i]));
    }
    std::fputs(end, stdout);
}

}  // namespace quorlin
