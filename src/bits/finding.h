#pragma once

namespace quorlin {

// What the programs print on standard output beside listings. The whole text stands at the site of the check; its id is
// a promise: the anchor of its explanation in docs/findings.md and what users filter by. While a recorder is set (see
// recorder.h), the texts go there, with the current place, and not to standard output.

// A finding that fails the verdict. Returns `status`: `return fail(TS_CHECK_FAILED, "ts-...", "ERROR: ...\n");`
[[nodiscard]] __attribute__((format(printf, 3, 4))) int fail(int status, const char* id, const char* format, ...);

// A finding that leaves the verdict alone.
__attribute__((format(printf, 2, 3))) void note(const char* id, const char* format, ...);

// A line that only frames the findings: headers, help, what a descriptor holds.
__attribute__((format(printf, 1, 2))) void announce(const char* format, ...);

// The last line of a run that reached a verdict.
void announce_verdict(bool passed);

// While one lives, what fails is recorded as leaving the verdict alone: its caller drops the status.
struct VerdictUntouched {
    VerdictUntouched();
    VerdictUntouched(const VerdictUntouched&) = delete;
    VerdictUntouched& operator=(const VerdictUntouched&) = delete;
    ~VerdictUntouched();

 private:
    bool saved;
};

}  // namespace quorlin
