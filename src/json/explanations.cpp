#include "json/explanations.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "json/findings_page.h"

namespace quorlin {

namespace {

// On the page, each entry is a heading that holds its id, a line with marks and the text in backquotes, and paragraphs
// that explain it. An entry without paragraphs shares those of the next one.
constexpr std::string_view ENTRY_HEADING = "### ";
constexpr std::string_view SECTION_HEADING = "## ";
constexpr size_t LINE_WIDTH = 78;
constexpr std::string_view INDENT = "    ";

struct EffectMark {
    std::string_view mark;
    const char* words;
};

constexpr EffectMark EFFECT_MARKS[] = {
    {"✗", "fails the verdict"},
    {"◌", "something is left unvalidated"},
    {"○", "leaves the verdict alone"},
    {"⊘", "ends the run without a verdict"},
};

void print_text(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void print_line(std::string_view text) {
    print_text(text);
    std::fputc('\n', stdout);
}

std::string_view next_line(std::string_view& text) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    return line;
}

// What follows the heading of `id`, to the end of the page; empty when there is none.
std::string_view find_entry(std::string_view id) {
    std::string_view page = FINDINGS_PAGE;
    while (!page.empty()) {
        const std::string_view line = next_line(page);
        if (line.starts_with(ENTRY_HEADING) && line.substr(ENTRY_HEADING.size()) == id) return page;
    }
    return {};
}

// The text of a paragraph without its marks of emphasis, code and links.
std::string plain_text(std::string_view markdown) {
    std::string plain;
    size_t link_end = markdown.npos;
    for (size_t i = 0; i < markdown.size(); ++i) {
        const char c = markdown[i];
        if (c == '`' || c == '*' || (c == '\\' && i + 1 == markdown.size())) continue;
        if (c == '[' && markdown.find("](", i) != markdown.npos) {
            link_end = markdown.find("](", i);
            continue;
        }
        if (i == link_end) {
            i = markdown.find(')', i);
            link_end = markdown.npos;
            if (i == markdown.npos) break;
            continue;
        }
        plain += c;
    }
    return plain;
}

// Fills the lines of an indented paragraph.
struct Filler {
    size_t column = 0;
};

void print_word(Filler& filler, std::string_view word) {
    if (filler.column != 0 && filler.column + 1 + word.size() > LINE_WIDTH) {
        std::fputc('\n', stdout);
        filler.column = 0;
    }
    if (filler.column == 0) {
        print_text(INDENT);
        filler.column = INDENT.size();
    } else {
        std::fputc(' ', stdout);
        ++filler.column;
    }
    print_text(word);
    filler.column += word.size();
}

void end_paragraph(Filler& filler) {
    if (filler.column != 0) std::fputc('\n', stdout);
    filler.column = 0;
}

void print_words(Filler& filler, std::string_view line) {
    const std::string text = plain_text(line);
    std::string_view rest = text;
    while (!rest.empty()) {
        const size_t end = rest.find(' ');
        if (end != 0) print_word(filler, rest.substr(0, end));
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    }
}

bool is_heading(std::string_view line) {
    return line.starts_with(ENTRY_HEADING) || line.starts_with(SECTION_HEADING);
}

// The first line of an entry: its marks, then its text in backquotes.
void print_effect_and_text(std::string_view line) {
    const size_t quote = line.find('`');
    const std::string_view marks = line.substr(0, quote);
    const char* separator = ": ";
    for (const EffectMark& effect : EFFECT_MARKS) {
        if (marks.find(effect.mark) == marks.npos) continue;
        std::printf("%s%s", separator, effect.words);
        separator = ", ";
    }
    const std::string_view text = quote == line.npos ? std::string_view() : line.substr(quote + 1);
    const std::string_view shown = text.substr(0, text.rfind('`'));
    print_line("");
    print_text(INDENT);
    print_line(shown);
}

// The paragraphs that explain an entry, or the next one that has any in its section.
void print_explanation(std::string_view rest) {
    Filler filler;
    bool printed = false;
    while (!rest.empty()) {
        const std::string_view line = next_line(rest);
        if (line.empty()) {
            end_paragraph(filler);
        } else if (is_heading(line)) {
            if (printed || line.starts_with(SECTION_HEADING)) break;
            next_line(rest);  // marks and text of the entry that shares its explanation
        } else {
            if (filler.column == 0) std::fputc('\n', stdout);
            print_words(filler, line);
            printed = true;
        }
    }
    end_paragraph(filler);
}

}  // namespace

int explain(int count, const char* const* ids) {
    int status = 0;
    for (int i = 0; i < count; ++i) {
        std::string_view entry = find_entry(ids[i]);
        if (entry.empty()) {
            std::fflush(stdout);
            std::fprintf(stderr, "quorlin-json: %s is no id; --ids lists them\n", ids[i]);
            status = -1;
            continue;
        }
        if (i > 0) std::fputc('\n', stdout);
        std::fputs(ids[i], stdout);
        print_effect_and_text(next_line(entry));
        print_explanation(entry);
    }
    return status;
}

void print_ids() {
    std::string_view page = FINDINGS_PAGE;
    while (!page.empty()) {
        const std::string_view line = next_line(page);
        if (line.starts_with(ENTRY_HEADING)) print_line(line.substr(ENTRY_HEADING.size()));
    }
}

}  // namespace quorlin
