#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "bits/place.h"

namespace quorlin {

// The E-AC-3 / AC-3 analyzer: walks elementary-stream bytes syncframe by syncframe, checks the programs that they form
// and reports what it finds on standard output; fatal conditions go to standard error.

// Most programs of a stream, and most dependent substreams of a program (ETSI TS 102 366, E.1.3.1.2).
constexpr uint32_t ZTP_MAX_PROGRAMS = 8;
constexpr uint32_t ZTP_MAX_DEPENDENT_SUBSTREAMS = 8;
constexpr uint32_t ZTP_MAX_ADDBSI_BYTES = 64;

// Values of strmtyp (ETSI TS 102 366, E.1.3.1.1).
constexpr uint16_t STRMTYP_INDEPENDENT = 0;
constexpr uint16_t STRMTYP_DEPENDENT = 1;
constexpr uint16_t STRMTYP_TRANSCODED = 2;
constexpr uint16_t STRMTYP_RESERVED = 3;

// What ztpinfo_process returns.
enum ZtpResult : int {
    ZTP_CLEAN = 0,
    ZTP_FAILURES = 1,  // a compliance failure is on record
    ZTP_FATAL = 2,
};

// Bits of the options word: what is printed while a buffer is walked.
enum ZtpOption : uint16_t {
    ZTP_OPTION_PROGRAMS = 0x0002,        // program summary of a timeslice whose layout changed
    ZTP_OPTION_INDEPENDENT = 0x0004,     // its independent substreams
    ZTP_OPTION_DEPENDENT = 0x0008,       // its dependent substreams
    ZTP_OPTION_COMPLIANCE = 0x0010,      // its compliance list
    ZTP_OPTION_TOTALS = 0x0020,          // totals at the end of a call
    ZTP_OPTION_ALL_COMPLIANCE = 0x0040,  // the accumulated compliance list at the end of a call
    ZTP_OPTION_BSI = 0x0100,             // full BSI listing of each reported substream
    ZTP_OPTION_AUXDATA = 0x0200,         // auxiliary data of each reported substream
    ZTP_OPTION_ENCODER_INFO = 0x0400,    // encoder information of each reported substream
    ZTP_OPTION_WARNINGS = 0x0800,        // both compliance lists show warnings too
};
constexpr uint16_t ZTP_DEFAULT_OPTIONS = 0x0051;

// Compliance rule sets.
enum class ZtpRuleSet : uint16_t {
    NONE = 0,               // clears all flags, checks nothing
    GENERIC = 1,            // generic Zentra Plus programs
    BLU_RAY_PRIMARY = 2,    // Blu-ray primary audio
    HD_DVD_SECONDARY = 3,   // HD-DVD secondary audio
    BLU_RAY_SECONDARY = 4,  // Blu-ray secondary audio
};

// What ztpinfo_configure changes; the defaults are those of ztpinfo_open.
struct ZtpSettings {
    uint16_t options = ZTP_DEFAULT_OPTIONS;
    ZtpRuleSet rule_set = ZtpRuleSet::GENERIC;
    bool stop_on_failure = false;    // end the walk of a buffer as soon as a failure is on record
    bool contiguous = false;         // buffers lie in the file as they are handed over, see ztpinfo_analyse
    bool timeslices_listed = false;  // lists of rules tell the timeslice that broke each, and its time
};

struct ZtpSubstreamSummary {
    uint32_t bsid = 0;
    uint32_t bsmod = 0;
    uint32_t fscod = 0;
    uint32_t acmod = 0;
    uint32_t lfeon = 0;
    uint32_t chanmap = 0;  // as carried, first location in the most significant of the 16 bits; 0 without one
    uint32_t strmtyp = 0;
    uint32_t substreamid = 0;
    uint32_t addbsie = 0;
    uint32_t addbsi_bytes = 0;  // addbsil + 1, or 0 without addbsie
    std::array<uint8_t, ZTP_MAX_ADDBSI_BYTES> addbsi{};
};

struct ZtpProgramSummary {
    uint32_t num_dep_substreams = 0;
    ZtpSubstreamSummary independent;
    std::array<ZtpSubstreamSummary, ZTP_MAX_DEPENDENT_SUBSTREAMS> dependent;  // by substreamid
};

struct ZtpStreamSummary {
    uint32_t byte_order_swapped = 0;                           // 1: every 16-bit word came low byte first
    uint32_t data_rate_kbps = 0;                               // of the stream so far, truncated
    uint32_t frameset_count = 0;                               // whole framesets of six blocks completed in this call
    uint32_t num_programs = 0;                                 // of the last completed timeslice
    std::array<ZtpProgramSummary, ZTP_MAX_PROGRAMS> programs;  // by program number
};

// One per analysed stream, for the life of that stream.
struct ZtpInfoContext;

// Opens a handle with the default settings; null, after a fatal-error block, when memory is short.
[[nodiscard]] ZtpInfoContext* ztpinfo_open();

// Releases the handle and all that it owns; null is harmless.
void ztpinfo_close(ZtpInfoContext* handle);

struct ZtpInfoCloser {
    void operator()(ZtpInfoContext* handle) const { ztpinfo_close(handle); }
};

// Owner of a handle: `ZtpInfoPtr info(ztpinfo_open());`
using ZtpInfoPtr = std::unique_ptr<ZtpInfoContext, ZtpInfoCloser>;

// Replaces the settings from the next call on.
void ztpinfo_configure(ZtpInfoContext* handle, const ZtpSettings& settings);

// Analyses a buffer of consecutive syncframes (one PES payload, the samples of a run, a whole file). Returns a
// ZtpResult: failures on record may come from an earlier call with this handle. `bytes` is not kept.
//
// The current place is to be that of the buffer's first frame. What is found in a later one is recorded with its own
// time, and with its own offset if the setting `contiguous` says that the file holds the bytes of the buffer in one
// piece. A listed rule has the place of the frame that broke it, repeated when it was not broken since the last list.
[[nodiscard]] int ztpinfo_analyse(std::span<const uint8_t> bytes, ZtpInfoContext* handle);

// Fills `summary` from the last completed timeslice; after a fatal condition in the last call it is cleared.
void ztpinfo_summarise(const ZtpInfoContext* handle, ZtpStreamSummary& summary);

// ztpinfo_analyse, then ztpinfo_summarise.
[[nodiscard]] int ztpinfo_process(std::span<const uint8_t> bytes, ZtpStreamSummary& summary, ZtpInfoContext* handle);

// For the finding of a container after a call that did not return ZTP_CLEAN: where it went wrong. After ZTP_FATAL the
// frame that could not be analysed, else the first frame of that call that broke a rule; when none did, the first one
// of the calls before, as repeated. The current place when no recorder is set. `handle` may be null.
Place ztpinfo_failure_place(const ZtpInfoContext* handle);

// Playing time of the timeslices that were completed on this handle, in 90 kHz ticks.
int64_t ztpinfo_playing_time(const ZtpInfoContext* handle);

}  // namespace quorlin
