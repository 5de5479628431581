#pragma once

namespace quorlin {

// The statuses of a segment, beside 0.

// It has findings.
constexpr int SEGMENT_FINDING = 11;

// It cannot be read: a malformed box, or no init section.
constexpr int SEGMENT_REFUSED = 1;

}  // namespace quorlin
