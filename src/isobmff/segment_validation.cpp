#include "isobmff/segment_validation.h"

struct MediaContext {};

void MediaContextDeleter::operator()(MediaContext* context) const {
    std::default_delete<MediaContext>()(context);
}

MediaContextPtr create_init_context(const std::optional<std::string>&, const std::string&, const std::string&,
                                    const PlaylistAttributes*) {
    return MediaContextPtr(std::make_unique<MediaContext>().release());
}

int release_init_context(MediaContextPtr& context) {
    context.reset();
    return 0;
}

int validate_mp4_segment(FileReader&, const SegmentEntry&, MediaContext*) {
    return 0;
}
