#include "ztpinfo/info_printer_names.h"

namespace {

constexpr const char* BSMOD_NAMES[] = {"complete main", "music and effects", "visually impaired", "hearing impaired",
                                       "dialogue",      "commentary",        "emergency"};
constexpr const char* CRC_STATUS_NAMES[] = {"No CRC errors",
                                            "Full frame CRC error exists (information may be corrupt!)",
                                            "Partial frame CRC error exists (information may be corrupt!)"};

}  // namespace

const char* bsmod_name(uint32_t bsmod, uint32_t acmod) {
    if (bsmod == 7) return acmod == 1 ? "voice over" : "karaoke";
    return value_name(BSMOD_NAMES, bsmod);
}

const char* crc_status_name(uint32_t crc_status) {
    return crc_status < std::size(CRC_STATUS_NAMES) ? CRC_STATUS_NAMES[crc_status] : "Unknown";
}
