#include "packed/ec3_timeslices.h"

#include <array>
#include <cinttypes>
#include <cstring>
#include <memory>
#include <optional>
#include <span>

#include "bits/byte_order.h"
#include "bits/finding.h"
#include "bits/place.h"
#include "bits/recorder.h"
#include "bits/report.h"
#include "playlist/codecs.h"
#include "playlist/ztp_program.h"
#include "ztpinfo/channel_locations.h"
#include "ztpinfo/syncframe.h"
#include "ztpinfo/ztpinfo.h"

namespace quorlin {

namespace {

constexpr uint32_t FRAME_HEADER_SIZE = 4;
constexpr uint32_t TIMESLICE_CAPACITY = 32768;

struct FrameHeader {
    std::array<uint8_t, FRAME_HEADER_SIZE> bytes = {};
    uint64_t offset = 0;      // in the file
    uint32_t frame_size = 0;  // bytes, header included
    Eac3FrameStart start;
};

struct TimesliceLoop {
    OutputFile& output;
    FileReader& reader;
    const PlaylistAttributes* attrs;
    int64_t start_time;  // of the segment, 90 kHz
    ZtpInfoPtr info;
    std::unique_ptr<uint8_t[]> timeslice = std::make_unique_for_overwrite<uint8_t[]>(TIMESLICE_CAPACITY);
    uint32_t size = 0;                                   // bytes of it in use
    uint64_t timeslice_offset = 0;                       // in the file, of its first frame
    uint64_t timeslice_end = 0;                          // in the file, after its last frame
    std::optional<uint32_t> timeslice_substreamid = {};  // of the independent frames that begin a timeslice
    bool analysed = false;                               // the analyzer has been called
    StreamFacts facts = {};
};

// The time where the analysed timeslices end.
int64_t current_time(const TimesliceLoop& loop) {
    return loop.start_time + (loop.info ? ztpinfo_playing_time(loop.info.get()) : 0);
}

void locate(const TimesliceLoop& loop, uint64_t offset) {
    current_place.offset = static_cast<int64_t>(offset);
    current_place.time = current_time(loop);
}

// Looks for the next sync word in steps of two bytes, deliberately: one at an odd distance is not found. False when
// the file ends before a whole header.
bool next_frame_header(const TimesliceLoop& loop, FrameHeader& header) {
    FileReader& reader = loop.reader;
    const uint64_t start = reader.position;
    uint8_t* const bytes = header.bytes.data();
    do {
        if (reader_read(bytes, 2, reader) < 2) {
            if (reader.position == start) return false;
            locate(loop, start);
            report_reason(ReasonEffect::UNVALIDATED, "reason-packed-ec3-rest", reader.path,
                          "no sync word in the last bytes, from byte %" PRIu64 " on", start);
            return false;
        }
    } while (load_be16(header.bytes, 0) != FRAME_SYNCWORD);
    header.offset = reader.position - 2;
    if (header.offset > start) {
        locate(loop, start);
        report_reason(ReasonEffect::UNVALIDATED, "reason-packed-ec3-skipped", reader.path,
                      "bytes %" PRIu64 " to %" PRIu64 " skipped: no sync word", start, header.offset - 1);
    }
    if (reader_read(bytes + 2, 2, reader) < 2) {
        locate(loop, header.offset);
        report_reason(ReasonEffect::UNVALIDATED, "reason-packed-ec3-header", reader.path,
                      "incomplete frame header at byte %" PRIu64, header.offset);
        return false;
    }
    header.start = eac3_frame_start(load_be16(header.bytes, 2));
    header.frame_size = 2 * eac3_frame_words(header.start.frmsiz);
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

// The value that ZTP_PROGRAMn has to have for a program: the mark, service_type, number_of_channels.
uint32_t ztp_program_value(const ZtpProgramSummary& program) {
    return ZTP_PROGRAM_MARK | (program.independent.bsmod & 7) << ZTP_PROGRAM_SERVICE_TYPE_SHIFT |
           (channel_code(program) & 7);
}

// Streams of one program are deliberately never compared.
int check_ztp_programs(const ZtpStreamSummary& summary, const std::array<uint32_t, 4>& attributes) {
    const uint32_t count = summary.num_programs;
    const auto& programs = summary.programs;
    int status = 0;
    if (count >= 2) {
        const uint32_t full_service =
            is_full_service(programs[0].independent) ? 1u << ZTP_PROGRAM_FULL_SERVICE_SHIFT : 0u;
        if ((ztp_program_value(programs[0]) | full_service) != attributes[0])
            status |= fail(
                -1, "packed-ztp-program0",
                "ERROR: #EXT-X-MEDIA ZTP_PROGRAM0 attribute value does not match the BSI full_service_flag,service_type,and number_of_channels of the elementary stream.\n");
        if (ztp_program_value(programs[1]) != attributes[1])
            status |= fail(
                -1, "packed-ztp-program1",
                "ERROR: #EXT-X-MEDIA ZTP_PROGRAM1 attribute value does not match the BSI service_type,and number_of_channels of the elementary stream.\n");
    }
    if (count >= 3 && ztp_program_value(programs[2]) != attributes[2])
        status |= fail(
            -1, "packed-ztp-program2",
            "ERROR: #EXT-X-MEDIA ZTP_PROGRAM2 attribute value does not match the BSI service_type,and number_of_channels of the elementary stream.\n");
    // Deliberately against ZTP_PROGRAM2 again.
    if (count >= 4 && ztp_program_value(programs[3]) != attributes[2])
        status |= fail(
            -1, "packed-ztp-program3",
            "ERROR: #EXT-X-MEDIA ZTP_PROGRAM3 attribute value does not match the service_type,and number_of_channels of the elementary stream.\n");
    return status;
}

int check_against_playlist(const ZtpInfoContext& info, const PlaylistAttributes* attrs) {
    ZtpStreamSummary summary;
    ztpinfo_summarise(&info, summary);
    // After a fatal condition the summary is empty: there is nothing to compare.
    if (summary.num_programs == 0) return 0;
    int status = 0;
    if (attrs == nullptr || !codecs_contain(attrs->codecs, "ec-3"))
        status |=
            fail(-1, "packed-ec3-codecs", "ERROR: No 'ec-3' found in CODECS attribute of the #EXT-X-STREAM-INF.\n");
    if (attrs != nullptr && attrs->programs) status |= check_ztp_programs(summary, *attrs->programs);
    return status;
}

int report_analysis_failure(const Place& place) {
    const PlaceScope scope(place);
    return fail(-1, "ztp-errors", "ERROR: Zentra Plus info tool returns errors when parsing the payload data.\n");
}

int analyse_timeslice(TimesliceLoop& loop, std::span<const uint8_t> bytes) {
    if (!loop.info) return report_analysis_failure(current_place);
    // Bytes without a sync word may have been passed over between its frames.
    const bool contiguous = loop.timeslice_end - loop.timeslice_offset == loop.size;
    ztpinfo_configure(loop.info.get(), {.contiguous = contiguous});
    int status = 0;
    if (ztpinfo_analyse(bytes, loop.info.get()) != ZTP_CLEAN)
        status = report_analysis_failure(ztpinfo_failure_place(loop.info.get()));
    if (!loop.analysed) status |= check_against_playlist(*loop.info, loop.attrs);
    return status;
}

// Analyses and writes the timeslice that is buffered, if there is one, and empties the buffer.
int finish_timeslice(TimesliceLoop& loop) {
    if (loop.size == 0) return 0;
    const std::span<const uint8_t> bytes(loop.timeslice.get(), loop.size);
    locate(loop, loop.timeslice_offset);
    loop.facts.last_time = current_place.time;
    loop.facts.payload_bytes += loop.size;
    int status = analyse_timeslice(loop, bytes);
    loop.analysed = true;
    status |= elementary_stream_write(loop.output, bytes);
    loop.size = 0;
    return status;
}

// The channels are those of the last timeslice.
void record_facts(TimesliceLoop& loop) {
    if (current_recorder() == nullptr) return;
    loop.facts.codec = "ec-3";
    loop.facts.first_time = loop.start_time;
    if (loop.info) {
        ZtpStreamSummary summary;
        ztpinfo_summarise(loop.info.get(), summary);
        loop.facts.end_time = current_time(loop);
        if (summary.num_programs > 0) loop.facts.channels = ztpinfo_channel_count(summary.programs[0]);
        loop.facts.data_rate_kbps = summary.data_rate_kbps;
    }
    record_stream(loop.facts);
}

// Frames before the first independent one form a timeslice of their own.
bool starts_timeslice(TimesliceLoop& loop, const FrameHeader& header) {
    if (header.start.strmtyp != STRMTYP_INDEPENDENT) return false;
    if (!loop.timeslice_substreamid) loop.timeslice_substreamid = header.start.substreamid;
    return header.start.substreamid == *loop.timeslice_substreamid;
}

// Appends the frame whose header has been read, as far as the file holds it. False when the buffer is too small.
bool append_frame(TimesliceLoop& loop, const FrameHeader& header) {
    const uint32_t rest = header.frame_size > FRAME_HEADER_SIZE ? header.frame_size - FRAME_HEADER_SIZE : 0;
    if (FRAME_HEADER_SIZE + rest > TIMESLICE_CAPACITY - loop.size) return false;
    if (loop.size == 0) loop.timeslice_offset = header.offset;
    std::memcpy(loop.timeslice.get() + loop.size, header.bytes.data(), FRAME_HEADER_SIZE);
    loop.size += FRAME_HEADER_SIZE;
    loop.size += reader_read(loop.timeslice.get() + loop.size, rest, loop.reader);
    loop.timeslice_end = loop.reader.position;
    ++loop.facts.units;
    return true;
}

int refuse_timeslice(const TimesliceLoop& loop) {
    locate(loop, loop.timeslice_offset);
    const int status = report_analysis_failure(current_place);
    report_reason(ReasonEffect::UNVALIDATED, "reason-packed-ec3-timeslice", loop.reader.path,
                  "the timeslice from byte %" PRIu64 " on is larger than %" PRIu32
                  " bytes: it and the rest are not looked at",
                  loop.timeslice_offset, TIMESLICE_CAPACITY);
    return status;
}

int check_timeslices(TimesliceLoop& loop) {
    FrameHeader header;
    int status = 0;
    while (next_frame_header(loop, header)) {
        if (starts_timeslice(loop, header)) status |= finish_timeslice(loop);
        if (!append_frame(loop, header)) return status | refuse_timeslice(loop);
    }
    return status | finish_timeslice(loop);
}

}  // namespace

int check_ec3_timeslices(OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs) {
    TimesliceLoop loop{output, reader, attrs, current_place.time, ZtpInfoPtr(ztpinfo_open())};
    const int status = check_timeslices(loop);
    record_facts(loop);
    return status;
}

}  // namespace quorlin
