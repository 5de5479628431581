#pragma once

#include <cstdint>
#include <span>

#include "playlist/playlist_attributes.h"
#include "ts/psi.h"
#include "ts/stream_table.h"

namespace quorlin {

// A completed PES packet of an audio stream; `payload` is what follows its header.
struct PesCheckInput {
    TsAudioStream& stream;
    std::span<const uint8_t> payload;
};

// Whether the descriptors of a stream ask for its audio PES packets to be checked.
bool has_audio_check(const ListedStream& listed);

// Checks a completed audio PES packet of private_stream_1 by the descriptors of its elementary stream: E-AC-3 against
// descriptor and analyzer, AC-4 against the playlist's CODECS. The frame counts go to the stream.
// Returns 0, or the ORed results of the checks that failed (findings are printed).
[[nodiscard]] int check_audio_pes(const PesCheckInput& pes, const ListedStream& listed, const TsStreamTable& table,
                                  const PlaylistAttributes* attrs);

// E-AC-3: analyses the payload and compares what it carries with the descriptor. Returns 0,
// TS_ANALYSIS_FAILED, or TS_CHECK_FAILED when the descriptor does not match.
[[nodiscard]] int check_eac3_pes(const Eac3DescriptorFields& descriptor, const PesCheckInput& pes);

// What the analyzer found in the payload against the descriptor: programs, channels, object audio. Returns 0, or
// TS_CHECK_FAILED at the first finding (printed).
[[nodiscard]] int compare_eac3_descriptor(const Eac3DescriptorFields& descriptor, const ZtpStreamSummary& summary);

// AC-4: walks the sync frames of the payload (ETSI TS 103 190-2, annex C) and compares their tables of contents with
// the playlist. Returns 0, TS_UNREADABLE_FRAME (the reason goes to standard error), or TS_CHECK_FAILED after a finding.
[[nodiscard]] int check_ac4_pes(const PesCheckInput& pes, const TsStreamTable& table, const PlaylistAttributes* attrs);

}  // namespace quorlin
