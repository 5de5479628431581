#include "ac4_samples.h"

#include <cstdlib>

#include "support/named_texts.h"

namespace quorlin {

// "[name toc]" and "[name dsi]" take turns in the file.
const std::vector<Ac4Sample>& ac4_samples() {
    static const std::vector<Ac4Sample> samples = [] {
        const NamedTexts texts = read_texts("data/samples.txt");
        std::vector<Ac4Sample> pairs;
        for (size_t i = 0; i + 1 < texts.size(); i += 2) {
            const std::string& name = texts[i].first;
            pairs.push_back({name.substr(0, name.find(' ')), texts[i].second, texts[i + 1].second});
        }
        return pairs;
    }();
    return samples;
}

const Ac4Sample& ac4_sample(const std::string& name) {
    for (const Ac4Sample& sample : ac4_samples())
        if (sample.name == name) return sample;
    std::abort();
}

}  // namespace quorlin
