#pragma once

#include <string>
#include <vector>

namespace quorlin {

// A table of contents and the decoder-specific information that belongs to it, as texts for write_fields.
struct Ac4Sample {
    std::string name;
    std::string toc;
    std::string dsi;
};
const std::vector<Ac4Sample>& ac4_samples();
const Ac4Sample& ac4_sample(const std::string& name);

}  // namespace quorlin
