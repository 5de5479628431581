#include "playlist/codecs.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace quorlin {

namespace {

// The entries of a CODECS value that contain one of `names`, joined with commas in their order.
std::string join_entries(std::string_view codecs, std::initializer_list<std::string_view> names) {
    std::string joined;
    bool first = true;
    for (size_t start = 0, end = 0; start < codecs.size(); start = end + 1) {
        end = std::min(codecs.find(',', start), codecs.size());
        const std::string_view entry = codecs.substr(start, end - start);
        const auto is_named = [&](std::string_view name) { return entry.find(name) != std::string_view::npos; };
        if (!std::any_of(names.begin(), names.end(), is_named)) continue;
        if (!first) joined += ',';
        joined += entry;
        first = false;
    }
    return joined;
}

}  // namespace

bool codecs_contain(std::string_view codecs, std::string_view name) {
    return codecs.find(name) != std::string_view::npos;
}

std::string filter_codecs(const std::string& codecs, CodecsFilter filter) {
    const std::string kept = filter == CodecsFilter::AUDIO ? join_entries(codecs, {"mp4a", "ac-3", "ac-4", "ec-3"})
                                                           : join_entries(codecs, {"avc", "hev", "hvc", "lma", "lmh"});
    return kept.empty() ? codecs : kept;
}

int lumora_codecs_entry(const std::string& codecs, std::string& out) {
    constexpr size_t SINGLE_ENTRY_LENGTH = 10;
    out = join_entries(codecs, {"lma", "lmh"});
    return out.size() == SINGLE_ENTRY_LENGTH ? 1 : 0;
}

}  // namespace quorlin
