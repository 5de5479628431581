#include "playlist/unreadable_address.h"

#include <charconv>
#include <string_view>

#include "bits/file_reader.h"
#include "bits/report.h"

namespace quorlin {

namespace {

// RFC 3986, 2.1: "%" and two hexadecimal digits stand for a byte.
std::string percent_decoded(std::string_view text) {
    std::string decoded;
    for (size_t at = 0; at < text.size(); ++at) {
        unsigned char byte = 0;
        const char* digits = text.data() + at + 1;
        const bool escaped =
            text[at] == '%' && text.size() - at > 2 && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        decoded += escaped ? static_cast<char>(byte) : text[at];
        if (escaped) at += 2;
    }
    return decoded;
}

// The file that a URI with a query (RFC 3986, 3.4) or escaped bytes stands for, if it is there; else empty.
std::string file_of_uri(const std::string& uri) {
    const std::string plain = uri.substr(0, uri.find('?'));
    for (const std::string& name : {plain, percent_decoded(uri), percent_decoded(plain)})
        if (name != uri && is_regular_file(name)) return name;
    return "";
}

}  // namespace

void report_unreadable(const std::string& path, const char* cause) {
    using enum ReasonEffect;
    const auto contains = [&](const char* text) { return path.find(text) != std::string::npos; };
    if (contains("http://") || contains("https://")) {
        report_reason(UNVALIDATED, "reason-not-local", path, "not a local file; it is not validated");
        return;
    }
    const std::string meant = file_of_uri(path);
    if (meant.empty())
        report_reason(UNVALIDATED, "reason-cannot-be-opened", path, "cannot be opened: %s", cause);
    else
        report_reason(
            UNVALIDATED, "reason-address-as-it-stands", path,
            "cannot be opened: %s; \"%s\" exists, but an address is taken as a file name as it stands: nothing in "
            "it is decoded or cut off",
            cause, meant.c_str());
}

}  // namespace quorlin
