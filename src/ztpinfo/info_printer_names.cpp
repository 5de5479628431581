#include "ztpinfo/info_printer_names.h"

namespace quorlin {

namespace {

constexpr const char* BSMOD_NAMES[] = {"complete main", "music and effects", "visually impaired", "hearing impaired",
                                       "dialogue",      "commentary",        "emergency"};

}  // namespace

const char* bsmod_name(uint32_t bsmod, uint32_t acmod) {
    if (bsmod == 7) return acmod == 1 ? "voice over" : "karaoke";
    return value_name(BSMOD_NAMES, bsmod);
}

const char* crc_status_name(CrcStatus crc_status) {
    switch (crc_status) {
        case CrcStatus::NO_ERROR:
            return "No CRC errors";
        case CrcStatus::FULL_FRAME_ERROR:
            return "Full frame CRC error exists (information may be corrupt!)";
        case CrcStatus::PARTIAL_FRAME_ERROR:
            return "Partial frame CRC error exists (information may be corrupt!)";
    }
    return "Unknown";
}

}  // namespace quorlin
