#pragma once

#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace quorlin {

using NamedTexts = std::vector<std::pair<std::string, std::string>>;

// The texts of a file by their names: "[name]" on a line begins one, "#" a comment.
inline NamedTexts read_texts(const std::string& path) {
    NamedTexts texts;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("["))
            texts.emplace_back(line.substr(1, line.size() - 2), "");
        else if (!line.starts_with("#") && !line.empty())
            texts.back().second += line + "\n";
    }
    return texts;
}

}  // namespace quorlin
