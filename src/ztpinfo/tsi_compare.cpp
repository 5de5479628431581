#include "ztpinfo/tsi_compare.h"

#include <cstring>

namespace quorlin {

namespace {

// The records have no padding, so that equal bytes are equal fields.
template <typename Bsi>
bool same_bytes(const Bsi& a, const Bsi& b) {
    static_assert(std::has_unique_object_representations_v<Bsi>);
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Everything else of a frame derives from its BSI and its CRC status, the frame length included.
bool same_substream(const ZtpSubstreamRecord& a, const ZtpSubstreamRecord& b) {
    if (a.present != b.present) return false;
    if (!a.present) return true;
    if (a.convsync_counter != b.convsync_counter || a.frame.crc_status != b.frame.crc_status) return false;
    if (a.frame.bsid != b.frame.bsid) return false;
    return is_ac3_bsid(a.frame.bsid) ? same_bytes(a.frame.ac3, b.frame.ac3) : same_bytes(a.frame.eac3, b.frame.eac3);
}

bool within_one(uint32_t a, uint32_t b) {
    return a == b || a + 1 == b || b + 1 == a;
}

bool same_layout_bsi(Ac3Bsi a, Ac3Bsi b) {
    for (Ac3Bsi* bsi : {&a, &b}) {
        bsi->syncword = 0;
        bsi->crc1 = 0;
        bsi->frmsizecod = 0;
        bsi->compr = 0;
        bsi->compr2 = 0;
    }
    return same_bytes(a, b);
}

bool same_layout_bsi(Eac3Bsi a, Eac3Bsi b) {
    for (Eac3Bsi* bsi : {&a, &b}) {
        bsi->syncword = 0;
        bsi->frmsiz = 0;
        bsi->frmsizecod = 0;
        bsi->convsync = 0;
        bsi->blkid = 0;
        bsi->compr = 0;
        bsi->compr2 = 0;
    }
    return same_bytes(a, b);
}

bool same_layout_substream(const ZtpSubstreamRecord& a, const ZtpSubstreamRecord& b) {
    if (a.present != b.present) return false;
    if (!a.present) return true;
    if (a.frame.bsid != b.frame.bsid || !within_one(a.frame.frame_words, b.frame.frame_words)) return false;
    return is_ac3_bsid(a.frame.bsid) ? same_layout_bsi(a.frame.ac3, b.frame.ac3)
                                     : same_layout_bsi(a.frame.eac3, b.frame.eac3);
}

using SubstreamComparison = bool(const ZtpSubstreamRecord& a, const ZtpSubstreamRecord& b);

bool same_substreams(const ZtpProgramRecord& a, const ZtpProgramRecord& b, SubstreamComparison& same) {
    if (a.num_dep_substreams != b.num_dep_substreams || !same(a.independent, b.independent)) return false;
    if (a.num_dep_substreams == 0) return true;
    for (uint32_t i = 0; i < ZTP_MAX_DEPENDENT_SUBSTREAMS; ++i)
        if (!same(a.dependent[i], b.dependent[i])) return false;
    return true;
}

bool same_layout_program(const ZtpProgramRecord& a, const ZtpProgramRecord& b) {
    return a.full_band_channels == b.full_band_channels && a.lfe_channels == b.lfe_channels &&
           a.crc_status == b.crc_status && within_one(a.words_between_syncs, b.words_between_syncs) &&
           same_substreams(a, b, same_layout_substream);
}

bool same_program(const ZtpProgramRecord& a, const ZtpProgramRecord& b) {
    return same_substreams(a, b, same_substream);
}

using ProgramComparison = bool(const ZtpProgramRecord& a, const ZtpProgramRecord& b);

bool same_programs(const TimesliceRecord& a, const TimesliceRecord& b, ProgramComparison& same) {
    if (a.num_programs != b.num_programs) return false;
    uint32_t left = a.num_programs;
    for (uint32_t i = 0; i < ZTP_MAX_PROGRAMS && left > 0; ++i) {
        if (a.programs[i].independent.present != b.programs[i].independent.present) return false;
        if (!a.programs[i].independent.present) continue;
        if (!same(a.programs[i], b.programs[i])) return false;
        --left;
    }
    return true;
}

}  // namespace

bool same_timeslice(const TimesliceRecord& a, const TimesliceRecord& b) {
    return same_programs(a, b, same_program);
}

bool same_layout(const TimesliceRecord& a, const TimesliceRecord& b) {
    return same_programs(a, b, same_layout_program);
}

}  // namespace quorlin
