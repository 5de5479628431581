#pragma once

#include <cstdint>

// The 16 bits that each frame of a packed audio format begins with; those of AC-4 are in ac4/ac4_sync_frame.h.
constexpr uint16_t SYNCFRAME_SYNC_WORD = 0x0B77;  // AC-3 and E-AC-3, ETSI TS 102 366
constexpr uint16_t ADTS_SYNC_WORD = 0xFFF1;       // ISO/IEC 14496-3, ADTS: MPEG-4, layer 0, no CRC
