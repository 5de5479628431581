#pragma once

namespace quorlin {

// What the reader of a transport stream returns when something failed; ORed over the packets of a segment. After that
// they cannot be told apart any more: only whether the result is 0 counts.
constexpr int TS_OUTPUT_FAILED = 3;
constexpr int TS_LOST_SYNC_OR_SECOND_VIDEO = 5;
constexpr int TS_UNREADABLE_FRAME = 5;
constexpr int TS_ANALYSIS_FAILED = 10;
constexpr int TS_CHECK_FAILED = 11;

}  // namespace quorlin
