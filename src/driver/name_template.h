#pragma once

#include <cstdint>
#include <string>

namespace quorlin {

enum class TemplateKind {
    NUMBERED,  // one integer conversion: a name per index
    FIXED,     // no conversion: the same name for every index
    NO_MATCH,  // two conversions, or a width or precision that no file name can have: names no file
};

// Expands a file-name template for `index` (0 or more) into `name`. One conversion gives the index as C prints an int:
//     %[-+ 0#]*[width][.precision](d|i|u|o|x|X)
// "%%" gives "%", every other "%" stands for itself. The text is never a printf format.
TemplateKind expand_template(const char* text, int32_t index, std::string& name);

}  // namespace quorlin
