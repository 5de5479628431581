// Explanations from a page of the test's own.
#include "json/explanations.h"

#include <gtest/gtest.h>

#include <string_view>

#include "json/findings_page.h"
#include "support/golden.h"

namespace quorlin {

const std::string_view FINDINGS_PAGE = R"(# Findings

The ids are `### no-entry` and so on.

## Marks and texts

### marks-two
✗ ◌ `ERROR: a `quoted` text`

A *stressed* and a **strong** word, `code`, a [link](other.md#part) and [another one](x), [brackets] end
a paragraph whose lines are filled: this one is a good deal longer than eighty columns when it is printed in one line.

*Rule:* none. An-unbreakable-word-of-more-than-seventy-eight-columns-goes-on-a-line-of-its-own-without-a-break here.
A backslash ends a line\
like this.

### shares-first
○ `first text`

### shares-second
⊘ `second text`

What both mean.

## The next part

### without-marks
`text`

An [open link

### last
✗ `text` and more)";

namespace {

TEST(Explanations, OfEveryKindOfEntry) {
    const char* const ids[] = {"marks-two", "shares-first", "shares-second", "without-marks", "last"};
    testing::internal::CaptureStderr();
    const std::string printed = transcript_entry("all", [&] { return explain(5, ids); }) +
                                transcript_entry("an id twice, a heading that is none",
                                                 [&] {
                                                     const char* const some[] = {"last", "no-entry", "last"};
                                                     return explain(3, some);
                                                 }) +
                                transcript_entry("ids", [] {
                                    print_ids();
                                    return 0;
                                });
    expect_golden("golden/explanations.txt", printed + testing::internal::GetCapturedStderr());
}

}  // namespace

}  // namespace quorlin
