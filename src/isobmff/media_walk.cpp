#include "isobmff/media_walk.h"

#include <memory>

#include "bits/place.h"
#include "isobmff/box_reader.h"
#include "isobmff/box_table.h"

namespace quorlin {

int parse_media(MediaContext& context, FileReader& reader) {
    const PlaceScope scope;
    const uint64_t number = context.walk.number + 1;
    context.walk = {};
    context.walk.box_types = box_table();
    context.walk.number = number;
    for (const std::unique_ptr<TrackRecord>& track : context.tracks) {
        clear_sample_tables(track->samples);
        track->seen = {};
    }
    const ReadLimits& limits = context.limits;
    Box whole;
    whole.payload_size = static_cast<int64_t>(limits.range_length != 0 ? limits.range_length : limits.file_size);
    const int status = walk_container(context, reader, whole);
    context.walk.current_track = nullptr;
    return status;
}

}  // namespace quorlin
