#include "tests/msl/conformance/case_file.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace msl::tests {
namespace {

constexpr std::string_view kGives = "//=> ";

void readExpected(std::istringstream& words, ConformanceCase& item) {
    item.outcome = ConformanceCase::Outcome::gives;
    for (float& number : item.expected) {
        std::string word;
        words >> word;
        number = std::strtof(word.c_str(), nullptr);
    }
}

void readFile(const std::filesystem::path& path, std::vector<ConformanceCase>& cases) {
    std::ifstream stream(path);
    std::string line;
    std::string* text = nullptr;
    std::string family; // of the lines that are cases of their own
    int ordinal = 0;
    while (std::getline(stream, line)) {
        if (!line.starts_with("//! ")) {
            if (!family.empty() && !line.empty()) {
                auto& item = cases.emplace_back();
                item.file = path.stem().string();
                item.name = family + std::to_string(++ordinal);
                const auto arrow = line.find(kGives);
                item.body = line.substr(0, arrow) + "\n";
                item.hasBody = true;
                if (arrow != std::string::npos) {
                    std::istringstream words(line.substr(arrow + kGives.size()));
                    readExpected(words, item);
                }
            } else if (text != nullptr) {
                *text += line + "\n";
            }
            continue;
        }
        std::istringstream words(line.substr(4));
        std::string what;
        words >> what >> std::ws;
        if (what == "each") {
            words >> family;
            ordinal = 0;
            continue;
        }
        if (what == "case") {
            family.clear();
            auto& item = cases.emplace_back();
            item.file = path.stem().string();
            words >> item.name;
            text = &item.declarations;
            continue;
        }
        auto& item = cases.back();
        if (what == "parameters") {
            std::getline(words, item.parameters);
        } else if (what == "body") {
            item.hasBody = true;
            text = &item.body;
        } else if (what == "refused") {
            item.outcome = ConformanceCase::Outcome::refused;
            std::getline(words, item.refusal);
            text = nullptr;
        } else if (what == "gives") {
            readExpected(words, item);
            text = nullptr;
        } else if (what == "compiles") {
            text = nullptr;
        } else {
            item.name += "UnknownLine" + what;
        }
    }
}

} // namespace

void PrintTo(const ConformanceCase& item, std::ostream* stream) {
    *stream << item.file << " " << item.name;
}

std::vector<ConformanceCase> readCases(const std::string& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<ConformanceCase> cases;
    for (const auto& path : paths) {
        readFile(path, cases);
    }
    return cases;
}

} // namespace msl::tests
