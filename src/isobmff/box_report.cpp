#include "isobmff/box_report.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "bits/report.h"
#include "isobmff/fourcc.h"
#include "isobmff/segment_status.h"

namespace quorlin {

namespace {

// In quotes, or as a number when it cannot be printed.
std::array<char, 11> box_name(uint32_t type) {
    std::array<char, 11> name{};
    const std::array<char, 5> text = printable_fourcc(type);
    if (std::strchr(text.data(), '?') != nullptr)
        std::snprintf(name.data(), name.size(), "0x%08" PRIX32, type);
    else
        std::snprintf(name.data(), name.size(), "'%s'", text.data());
    return name;
}

void report_box_reason(ReasonEffect effect, const FileReader& reader, const Box& box, const char* id,
                       const char* rule) {
    report_reason(effect, id, reader.path, "box %s at byte %" PRIu64 ": %s", box_name(box.type).data(), box.offset,
                  rule);
}

}  // namespace

void report_box(const FileReader& reader, const Box& box, const char* id, const char* rule) {
    report_box_reason(ReasonEffect::UNVALIDATED, reader, box, id, rule);
}

int refuse_box(const FileReader& reader, const Box& box, const char* id, const char* rule) {
    report_box_reason(ReasonEffect::FAILS_UNVALIDATED, reader, box, id, rule);
    return MP4_REFUSED;
}

int end_work_at_box(const FileReader& reader, const Box& box, const char* id, const char* rule) {
    report_box_reason(ReasonEffect::FAILS_UNVALIDATED, reader, box, id, rule);
    return MP4_FINDING;
}

}  // namespace quorlin
