#include "ztpinfo/info_printer_substream.h"

#include <cinttypes>
#include <cstdio>
#include <optional>

#include "ztpinfo/info_printer_lines.h"

namespace quorlin {

namespace {

const char* yes_no(bool yes) {
    return yes ? "Yes" : "No";
}

const char* format_of_bsid(uint32_t bsid) {
    if (is_eac3_bsid(bsid)) return " (Zentra Plus)";
    return is_ac3_bsid(bsid) ? " (Zentra)" : "";
}

void print_identity(const ZtpFrameInfo& frame, const char* end) {
    std::printf("            BSID: %d%s%s", frame.bsid, format_of_bsid(frame.bsid), end);
    if (frame.strmtyp == STRMTYP_TRANSCODED) std::printf("            Stream type: Transcoded%s", end);
    if (frame.strmtyp == STRMTYP_RESERVED) std::printf("            Stream type: Reserved%s", end);
    std::printf("            Substream ID: %d%s", frame.substreamid, end);
    // A frame without the flag holds whole framesets, so a converter can begin at it.
    if (frame.strmtyp == STRMTYP_INDEPENDENT || frame.strmtyp == STRMTYP_TRANSCODED)
        std::printf("            Converter sync flag: %s%s", yes_no(frame.convsync != 0), end);
}

void print_channels(const ZtpFrameInfo& frame, const char* end) {
    std::printf("            Number of coded channels: %d.%d%s", frame.full_band_channels, frame.lfeon, end);
    std::printf("            Audio coding mode: %s%s", value_name(ACMOD_NAMES, frame.acmod), end);
    std::printf("            LFE on: %s%s", yes_no(frame.lfeon != 0), end);
    std::printf("            Coded channels: ");
    print_locations(frame.locations, CODED_CHANNEL_NAMES);
    std::fputs(end, stdout);
}

// E-AC-3 frames have a bit of their own at the end; AC-3 has one in the second group of Annex D.
std::optional<uint16_t> find_encinfo(const ZtpFrameInfo& frame, const FrameTail* tail) {
    if (is_ac3_bsid(frame.bsid) && frame.ac3.xbsi2e != 0) return frame.ac3.encinfo;
    if (tail != nullptr && tail->has_encinfo) return tail->encinfo;
    return std::nullopt;
}

}  // namespace

void print_substream_summary(const ZtpFrameInfo& frame) {
    const char* end = line_end(frame.crc_status);
    print_identity(frame, end);
    std::printf("            Number of blocks per frame: %d%s", frame.blocks_per_frame, end);
    print_channels(frame, end);
    std::printf("            Source sample rate: %" PRIu32 " Hz%s", frame.sample_rate, end);
    if (is_eac3_bsid(frame.bsid))
        std::printf("            Double source sample rate: %s%s", yes_no(frame.double_rate != 0), end);
    if (frame.strmtyp == STRMTYP_DEPENDENT) std::printf("            Channel map: 0x%04hX%s", frame.chanmap, end);
    std::printf("            Number of 16b words in frame (+/-1): %d%s", frame.frame_words, end);
    std::printf("            Data rate: %2.1f kbps%s", frame.data_rate_kbps, end);
    std::printf("            Frame status: %s%s\n", crc_status_name(frame.crc_status), end);
}

void print_auxdata(const ZtpFrameInfo& frame, const FrameTail* tail) {
    if (tail == nullptr || !tail->auxdatae) {
        std::printf("No Auxdata information exists\n");
        return;
    }
    std::printf("Number of Auxdata bits: %d\n", tail->auxdatal);
    std::printf("Auxdata:");
    for (uint16_t word : tail->auxdata) std::printf(" %04hX", word);
    std::fputs(line_end(frame.crc_status), stdout);
}

void print_encoder_info(const ZtpFrameInfo& frame, const FrameTail* tail) {
    const std::optional<uint16_t> encinfo = find_encinfo(frame, tail);
    if (!encinfo) {
        std::printf("No Encinfo information exists\n");
        return;
    }
    std::printf("Encinfo: %04hX%s", *encinfo, line_end(frame.crc_status));
}

}  // namespace quorlin
