#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "playlist/playlist_attributes.h"
#include "ts/program.h"
#include "ts/stream_table.h"

// A completed audio PES packet; `payload` is what follows its header.
struct PesCheckInput {
    uint16_t pid = 0;
    uint8_t stream_id = 0;
    std::span<const uint8_t> payload;
};

// Checks a completed audio PES packet of private_stream_1 by the descriptors of its elementary stream: E-AC-3 against
// descriptor and analyzer, AC-4 against the playlist's CODECS. The frame counts go to the stream's entry of `table`.
// Returns 0, or the ORed results of the checks that failed (5, 10 and 11; findings are printed).
[[nodiscard]] int check_audio_pes(const PesCheckInput& pes, const std::vector<ProgramRecord>& programs,
                                  TsStreamTable& table, const PlaylistAttributes* attrs);
