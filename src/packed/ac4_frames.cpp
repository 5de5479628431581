#include "packed/ac4_frames.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <vector>

#include "ac4/ac4_sync_frame.h"
#include "ac4/ac4_toc.h"
#include "bits/byte_order.h"
#include "bits/report.h"
#include "playlist/codecs.h"

namespace {

constexpr uint32_t AC4_SHORT_SIZE_BYTES = 2;
constexpr uint32_t AC4_LONG_SIZE_BYTES = 3;  // behind the escape
constexpr uint32_t AC4_MAX_FRAME_SIZE = 10485760;
constexpr uint32_t READ_PIECE_SIZE = 65536;

// ETSI TS 103 190-2, annex C: sync word, frame size and raw frame, as far as the file holds them.
struct SyncFrame {
    std::vector<uint8_t> bytes;
    size_t header_size = 0;
    uint32_t frame_size = 0;  // of the raw frame, as the header says
};

// Appends up to `count` bytes; memory grows with what is there, not with what the header claims.
void append_bytes(FileReader& reader, uint32_t count, std::vector<uint8_t>& bytes) {
    while (count > 0) {
        const uint32_t piece = std::min(count, READ_PIECE_SIZE);
        const size_t size = bytes.size();
        bytes.resize(size + piece);
        const uint32_t delivered = reader_read(bytes.data() + size, piece, reader);
        bytes.resize(size + delivered);
        if (delivered < piece) return;
        count -= piece;
    }
}

// False at the end of the file and where the frames end.
bool read_frame_header(FileReader& reader, SyncFrame& frame) {
    frame.bytes.clear();
    append_bytes(reader, AC4_SYNC_WORD_BYTES, frame.bytes);
    if (frame.bytes.empty()) return false;
    if (frame.bytes.size() < 2 || load_be16(frame.bytes, 0) != AC4_SYNC_WORD) {
        report_reason(reader.path, "no AC-4 sync word 0xAC40 at byte %llu: the rest is not looked at",
                      static_cast<unsigned long long>(reader.position - frame.bytes.size()));
        return false;
    }
    append_bytes(reader, AC4_SHORT_SIZE_BYTES, frame.bytes);
    frame.header_size = AC4_SYNC_WORD_BYTES;
    frame.frame_size = read_ac4_frame_size(frame.bytes, frame.header_size);
    if (frame.header_size == AC4_SYNC_WORD_BYTES + AC4_SHORT_SIZE_BYTES) return true;
    // The escape: the size is read again with the bytes that it announces.
    append_bytes(reader, AC4_LONG_SIZE_BYTES, frame.bytes);
    frame.header_size = AC4_SYNC_WORD_BYTES;
    frame.frame_size = read_ac4_frame_size(frame.bytes, frame.header_size);
    return true;
}

int report_unreadable_toc() {
    std::printf("ERROR: Error occurs when parsing the payload data.\n");
    return -1;
}

int check_frame(const SyncFrame& frame, bool is_first, const PlaylistAttributes* attrs, ac4_toc& toc) {
    const size_t header_size = std::min(frame.header_size, frame.bytes.size());
    const std::span<const uint8_t> raw_frame = std::span(frame.bytes).subspan(header_size);
    uint32_t position = 0;
    if (raw_frame.empty() || ac4_toc_parse(raw_frame, position, toc) != 0) return report_unreadable_toc();
    int status = 0;
    if (attrs == nullptr || !codecs_contain(attrs->codecs, ac4_toc_codec_string(toc))) {
        std::printf(
            "ERROR: Mismatch in the codecs attribute value between the Representation 0 element in the toc and the CODECS string in the master manifest.\n");
        status = -1;
    }
    if (is_first && toc.b_iframe_global == 0) {
        std::printf("ERROR: The first AC-4 sample in each segment must be an I-frame.\n");
        status = -1;
    }
    return status;
}

}  // namespace

int check_ac4_frames(OutputFile& output, FileReader& reader, const PlaylistAttributes* attrs) {
    SyncFrame frame;
    ac4_toc toc;
    int status = 0;
    for (bool is_first = true; read_frame_header(reader, frame); is_first = false) {
        if (frame.frame_size > AC4_MAX_FRAME_SIZE) return report_unreadable_toc();
        append_bytes(reader, frame.frame_size, frame.bytes);
        status |= check_frame(frame, is_first, attrs, toc);
        status |= elementary_stream_write(output, frame.bytes);
    }
    return status;
}
