#pragma once

namespace quorlin {

// The statuses of a segment, beside 0.

// It has findings.
constexpr int MP4_FINDING = 11;

// It cannot be read: a malformed box, or no init section.
constexpr int MP4_REFUSED = 1;

}  // namespace quorlin
