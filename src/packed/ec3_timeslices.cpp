#include "packed/ec3_timeslices.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <span>

#include "bits/byte_order.h"
#include "bits/report.h"
#include "packed/sync_words.h"
#include "playlist/codecs.h"
#include "ztpinfo/ztpinfo.h"

namespace {

constexpr uint32_t FRAME_HEADER_SIZE = 4;
constexpr uint32_t TIMESLICE_CAPACITY = 32768;

// The start of an E-AC-3 syncframe, ETSI TS 102 366, E.1.2.1 and E.1.2.2.
struct FrameHeader {
    std::array<uint8_t, FRAME_HEADER_SIZE> bytes = {};
    uint32_t frame_size = 0;  // bytes, header included
    uint32_t strmtyp = 0;
    uint32_t substreamid = 0;
};

struct TimesliceLoop {
    OutputFile& output;
    FileReader& reader;
    const PlaylistAttributes* attrs;
    ZtpInfoPtr info;
    std::unique_ptr<uint8_t[]> timeslice = std::make_unique_for_overwrite<uint8_t[]>(TIMESLICE_CAPACITY);
    uint32_t size = 0;                                   // bytes of it in use
    std::optional<uint32_t> timeslice_substreamid = {};  // of the independent frames that begin a timeslice
    bool analysed = false;                               // the analyzer has been called
};

// Looks for the next sync word in steps of two bytes, deliberately: one at an odd distance is not found. False when
// the file ends before a whole header.
bool next_frame_header(FileReader& reader, FrameHeader& header) {
    const uint64_t start = reader.position;
    uint8_t* const bytes = header.bytes.data();
    do {
        if (reader_read(bytes, 2, reader) < 2) {
            if (reader.position > start)
                report_reason(reader.path, "no sync word in the last bytes, from byte %llu on",
                              static_cast<unsigned long long>(start));
            return false;
        }
    } while (load_be16(header.bytes, 0) != SYNCFRAME_SYNC_WORD);
    const uint64_t found = reader.position - 2;
    if (found > start)
        report_reason(reader.path, "bytes %llu to %llu skipped: no sync word", static_cast<unsigned long long>(start),
                      static_cast<unsigned long long>(found - 1));
    if (reader_read(bytes + 2, 2, reader) < 2) {
        report_reason(reader.path, "incomplete frame header at byte %llu", static_cast<unsigned long long>(found));
        return false;
    }
    header.frame_size = (bytes[2] & 7u) * 512 + bytes[3] * 2u + 2;
    header.strmtyp = bytes[2] >> 6;
    header.substreamid = (bytes[2] >> 3) & 7;
    return true;
}

// The number_of_channels code of an E-AC-3 descriptor, as ZTP_PROGRAMn carries it; all ones where acmod has none.
uint32_t channel_code(const ZtpProgramSummary& program) {
    switch (program.independent.bsmod) {
        case 5:
        case 6:
            return 0;  // commentary, emergency: a single channel
        default:
            break;
    }
    switch (program.independent.acmod) {
        case 1:
            return 0;
        case 2:
            return 2;
        case 3:
        case 4:
        case 5:
        case 6:
            return 4;
        case 7:
            return program.num_dep_substreams != 0 ? 5 : 4;
        default:
            return ~0u;
    }
}

bool is_full_service(const ZtpSubstreamSummary& independent) {
    return independent.bsmod == 0 || independent.bsmod == 6 || (independent.bsmod == 7 && independent.acmod != 1);
}

// The value that ZTP_PROGRAMn has to have for a program: bit 7 set, service_type, number_of_channels.
uint32_t ztp_program_value(const ZtpProgramSummary& program) {
    return ((program.independent.bsmod & 7) | 16) << 3 | (channel_code(program) & 7);
}

// Streams of one program are deliberately never compared.
int check_ztp_programs(const ZtpStreamSummary& summary, const std::array<uint32_t, 4>& attributes) {
    const uint32_t count = summary.num_programs;
    const auto& programs = summary.programs;
    int status = 0;
    if (count >= 2) {
        const uint32_t full_service = is_full_service(programs[0].independent) ? 64 : 0;
        if ((ztp_program_value(programs[0]) | full_service) != attributes[0]) {
            std::printf(
                "ERROR: #EXT-X-MEDIA ZTP_PROGRAM0 attribute value does not match the BSI full_service_flag,service_type,and number_of_channels of the elementary stream.\n");
            status = -1;
        }
        if (ztp_program_value(programs[1]) != attributes[1]) {
            std::printf(
                "ERROR: #EXT-X-MEDIA ZTP_PROGRAM1 attribute value does not match the BSI service_type,and number_of_channels of the elementary stream.\n");
            status = -1;
        }
    }
    if (count >= 3 && ztp_program_value(programs[2]) != attributes[2]) {
        std::printf(
            "ERROR: #EXT-X-MEDIA ZTP_PROGRAM2 attribute value does not match the BSI service_type,and number_of_channels of the elementary stream.\n");
        status = -1;
    }
    // Deliberately against ZTP_PROGRAM2 again.
    if (count >= 4 && ztp_program_value(programs[3]) != attributes[2]) {
        std::printf(
            "ERROR: #EXT-X-MEDIA ZTP_PROGRAM3 attribute value does not match the service_type,and number_of_channels of the elementary stream.\n");
        status = -1;
    }
    return status;
}

int check_against_playlist(const ZtpInfoContext& info, const PlaylistAttributes* attrs) {
    ZtpStreamSummary summary;
    ztpinfo_summarise(&info, summary);
    // After a fatal condition the summary is empty: there is nothing to compare.
    if (summary.num_programs == 0) return 0;
    int status = 0;
    if (attrs == nullptr || !codecs_contain(attrs->codecs, "ec-3")) {
        std::printf("ERROR: No 'ec-3' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
        status = -1;
    }
    if (attrs != nullptr && attrs->programs) status |= check_ztp_programs(summary, *attrs->programs);
    return status;
}

int report_analysis_failure() {
    std::printf("ERROR: Zentra Plus info tool returns errors when parsing the payload data.\n");
    return -1;
}

// Analyses and writes the timeslice that is buffered, if there is one, and empties the buffer.
int finish_timeslice(TimesliceLoop& loop) {
    if (loop.size == 0) return 0;
    const std::span<const uint8_t> bytes(loop.timeslice.get(), loop.size);
    int status = 0;
    if (!loop.info || ztpinfo_analyse(bytes, loop.info.get()) != 0) status = report_analysis_failure();
    if (loop.info && !loop.analysed) status |= check_against_playlist(*loop.info, loop.attrs);
    loop.analysed = true;
    status |= elementary_stream_write(loop.output, bytes);
    loop.size = 0;
    return status;
}

// Frames in front of the first independent one form a timeslice of their own.
bool starts_timeslice(TimesliceLoop& loop, const FrameHeader& header) {
    if (header.strmtyp != 0) return false;
    if (!loop.timeslice_substreamid) loop.timeslice_substreamid = header.substreamid;
    return header.substreamid == *loop.timeslice_substreamid;
}

// Appends the frame whose header has been read, as far as the file holds it. False when the buffer is too small.
bool append_frame(TimesliceLoop& loop, const FrameHeader& header) {
    const uint32_t rest = header.frame_size > FRAME_HEADER_SIZE ? header.frame_size - FRAME_HEADER_SIZE : 0;
    if (FRAME_HEADER_SIZE + rest > TIMESLICE_CAPACITY - loop.size) return false;
    std::memcpy(loop.timeslice.get() + loop.size, header.bytes.data(), FRAME_HEADER_SIZE);
    loop.size += FRAME_HEADER_SIZE;
    loop.size += reader_read(loop.timeslice.get() + loop.size, rest, loop.reader);
    return true;
}

}  // namespace

int check_ec3_timeslices(OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs) {
    TimesliceLoop loop{output, reader, attrs, ZtpInfoPtr(ztpinfo_open())};
    FrameHeader header;
    int status = 0;
    while (next_frame_header(reader, header)) {
        if (starts_timeslice(loop, header)) status |= finish_timeslice(loop);
        if (!append_frame(loop, header)) return report_analysis_failure();
    }
    return status | finish_timeslice(loop);
}
