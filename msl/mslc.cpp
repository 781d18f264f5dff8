// mslc: compiles one file of Metal Shading Language to SPIR-V.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include "msl/msl.h"

namespace {

constexpr int kCompileFailed = 1;
constexpr int kWrongUsage = 2;

bool readFile(const std::string& path, std::string& text) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    text = std::move(content).str();
    return static_cast<bool>(stream);
}

bool writeWords(const std::string& path, const std::vector<uint32_t>& words) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(words.data()),
                 static_cast<std::streamsize>(words.size() * sizeof(uint32_t)));
    stream.close();
    return static_cast<bool>(stream);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Compiles a Metal Shading Language source to one SPIR-V module for Vulkan 1.2."};
    std::string input;
    std::string output;
    std::vector<std::string> folders;
    app.add_option("FILE", input, "the source")->required();
    app.add_option("-o,--output", output, "the module to write")->required();
    app.add_option("-I,--include", folders, "a folder to search for quoted includes");
    app.set_version_flag("--version", "mslc 0.1.0");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? 0 : kWrongUsage;
    }
    std::string source;
    if (!readFile(input, source)) {
        std::cerr << "mslc: the file '" << input << "' cannot be read\n";
        return kCompileFailed;
    }
    msl::Options options;
    options.fileName = input;
    options.includeFolders = folders;
    const auto slash = input.rfind('/');
    options.includeFolders.insert(options.includeFolders.begin(),
                                  slash == std::string::npos ? "." : input.substr(0, slash));
    const auto result = msl::compile(source, options);
    for (const auto& diagnostic : result.diagnostics) {
        std::cerr << msl::toText(diagnostic);
    }
    if (!result.module) {
        return kCompileFailed;
    }
    if (!writeWords(output, result.module->words)) {
        std::cerr << "mslc: the file '" << output << "' cannot be written\n";
        return kCompileFailed;
    }
    return 0;
}
