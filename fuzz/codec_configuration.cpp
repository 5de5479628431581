// The payload of a codec configuration box, which the first byte chooses and whose size stands in the next two, and
// what the validation makes of it and of the sample after it.
#include "isobmff/codec_boxes.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "isobmff/audio_sample_checks.h"
#include "isobmff/lumora_checks.h"
#include "isobmff/media_context.h"
#include "isobmff/sample_entry_checks.h"

namespace quorlin {

namespace {

const bool QUIET = std::freopen("/dev/null", "w", stdout) != nullptr;

struct Choice {
    TrackBoxHandler handler;
    CodecKind codec_kind;
};

constexpr Choice CHOICES[] = {
    {read_esds, CodecKind::AAC},  {read_dec3, CodecKind::EC3},           {read_avcC, CodecKind::AVC1},
    {read_hvcC, CodecKind::HVC1}, {store_configuration, CodecKind::AC4}, {read_lumora_configuration, CodecKind::HEV1},
    {read_avcE, CodecKind::AVC3}, {read_hvcE, CodecKind::HEV1},
};

void check_parameter_sets(const VideoConfiguration& video) {
    for (const std::vector<ParameterSet>* sets : {&video.vps, &video.sps, &video.pps})
        for (const ParameterSet& set : *sets)
            if (set.offset > video.payload.size() || set.size > video.payload.size() - set.offset) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4 || !QUIET) return 0;
    const size_t payload_size = std::min<size_t>(data[1] * 256u + data[2], size - 3);
    if (payload_size == 0) return 0;
    // Blocks of their own, so that a read after them is seen.
    std::vector<uint8_t> payload(data + 3, data + 3 + payload_size);
    const std::vector<uint8_t> sample(data + 3 + payload_size, data + size);
    const Choice& choice = CHOICES[data[0] % std::size(CHOICES)];
    MediaContext context;
    context.attrs.codecs = "ac-4.02.01.03,lmhe.05.06";
    context.attrs.channels = "6";
    context.limits.file_size = payload_size;
    TrackRecord track;
    track.codec_kind = choice.codec_kind;
    FileReader reader;
    reader.file.reset(fmemopen(payload.data(), payload_size, "rb"));
    reader.chunk_size = 4096;
    reader_start(reader);
    Box box;
    box.payload_size = static_cast<int64_t>(payload_size);
    if (choice.handler(context, reader, box, track) != 0) std::abort();
    check_parameter_sets(track.video);
    if (track.enhancement_layer) check_parameter_sets(*track.enhancement_layer);
    int status = check_sample_entry(track, context.attrs, "track") |
                 check_lumora_configuration(track, context.attrs.codecs, "track");
    if (is_analysed_audio(track)) status |= check_audio_sample(track, sample, true);
    return status < 0 ? 1 : 0;
}

}  // namespace quorlin
