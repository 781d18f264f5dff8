#include "tests/support/program_documentation.h"

#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

namespace vantor {
namespace {

using Words = std::set<std::string>;

std::string pathOf(const std::string& file) { return VANTOR_SOURCE_FOLDER "/" + file; }

std::string contents(const std::string& file) {
    std::ifstream stream(pathOf(file));
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// What a command prints on both streams, and "status N" where it fails.
std::string output(const std::string& command) {
    std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    std::string text;
    std::array<char, 4096> chunk{};
    while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), pipe)) {
        text.append(chunk.data(), count);
    }
    const int status = pclose(pipe);
    return status == 0 ? text : text + "status " + std::to_string(status);
}

Words words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

Words matches(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    Words found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        found.insert((*match)[1]);
    }
    return found;
}

/// The long options, with their dashes.
Words optionsOf(const CLI::App& app, bool withLook = true) {
    Words names;
    for (const CLI::Option* option : app.get_options()) {
        if (withLook || option->get_group() != "Look") {
            for (const std::string& name : option->get_lnames()) {
                names.insert("--" + name);
            }
        }
    }
    return names;
}

/// The shell function that completes a program.
std::string functionOf(std::string program) {
    std::ranges::replace(program, '-', '_');
    return "_" + program;
}

} // namespace

ProgramDocumentation::ProgramDocumentation(std::string name, std::string completions,
                                           const CLI::App& description)
    : name_(std::move(name)), completions_(std::move(completions)), description_(description) {}

std::vector<const CLI::App*> ProgramDocumentation::commands() const {
    return description_.get_subcommands(std::function<bool(const CLI::App*)>());
}

Words ProgramDocumentation::commandNames() const {
    Words names;
    for (const CLI::App* command : commands()) {
        names.insert(command->get_name());
    }
    return names;
}

std::string ProgramDocumentation::complaintsAboutManual(const std::string& page) {
    std::istringstream lines(
        output("(mandoc -T lint -W style " + pathOf("docs/" + page) + "; true)"));
    const std::regex missing("referenced manual not found: Xr ([a-z.-]+) ([0-9])");
    std::string complaints;
    for (std::string line; std::getline(lines, line);) {
        std::smatch found;
        // Ours need not be installed yet.
        if (!std::regex_search(line, found, missing) ||
            !std::ifstream(pathOf("docs/" + found[1].str() + "." + found[2].str()))) {
            complaints += line + "\n";
        }
    }
    return complaints;
}

std::string ProgramDocumentation::synopsisOf(const std::string& manual,
                                             const std::string& command) const {
    const auto begin = manual.find("\n.Cm " + command + "\n", manual.find(".Sh SYNOPSIS"));
    const auto end = std::min(manual.find("\n.Nm " + name_, begin), manual.find("\n.Sh", begin));
    return begin == std::string::npos ? "" : manual.substr(begin, end - begin);
}

std::string ProgramDocumentation::manual() const { return contents("docs/" + name_ + ".1"); }

void ProgramDocumentation::checkManual() const {
    const std::string manual = this->manual();
    Words options{"--version"};
    for (const CLI::App* command : commands()) {
        options.merge(optionsOf(*command));
        const std::string synopsis = synopsisOf(manual, command->get_name());
        ASSERT_NE(synopsis, "") << command->get_name();
        Words written = matches(synopsis, R"(Fl \\-([a-z0-9-]+))");
        if (synopsis.find("Fl o ") != std::string::npos) {
            written.insert("out");
        }
        for (const std::string& option : optionsOf(*command, false)) {
            EXPECT_TRUE(option == "--help" || written.erase(option.substr(2)) == 1)
                << command->get_name() << ' ' << option;
        }
        EXPECT_THAT(written, testing::IsEmpty()) << command->get_name();
        EXPECT_EQ(synopsis.find("Ar look") != std::string::npos,
                  optionsOf(*command) != optionsOf(*command, false))
            << command->get_name();
    }
    Words documented;
    for (const std::string& name : matches(manual, R"(Fl \\-([a-z0-9-]+))")) {
        documented.insert("--" + name);
    }
    EXPECT_EQ(documented, options);
    EXPECT_EQ(matches(manual, R"(\n\.Cm ([a-z-]+))"), commandNames());
}

void ProgramDocumentation::checkBash() const {
    const auto complete = [this](const std::string& line, int word) {
        return words(output("bash -c 'source " + pathOf(completions_) + "/" + name_ +
                            ".bash; COMP_WORDS=(" + name_ + " " + line +
                            "); COMP_CWORD=" + std::to_string(word) + "; " + functionOf(name_) +
                            "; echo \"${COMPREPLY[@]}\"'"));
    };
    Words top = commandNames();
    top.merge(Words{"--help", "--version"});
    EXPECT_EQ(complete("\"\"", 1), top);
    for (const CLI::App* command : commands()) {
        EXPECT_EQ(complete(command->get_name() + " --", 2), optionsOf(*command))
            << command->get_name();
    }
}

void ProgramDocumentation::checkFish() const {
    const TemporaryFolder home;
    const auto complete = [&](const std::string& line) {
        const std::string candidates = output(
            "HOME=" + home.path().string() + " XDG_CONFIG_HOME=" + home.path().string() +
            " fish -c 'source " + pathOf(completions_) + "/" + name_ + ".fish; complete -C \"" +
            name_ + " " + line + "\" | string replace -r \"\\t.*\" \"\"'");
        return words(candidates);
    };
    EXPECT_EQ(complete(""), commandNames());
    for (const CLI::App* command : commands()) {
        EXPECT_EQ(complete(command->get_name() + " --"), optionsOf(*command))
            << command->get_name();
    }
}

void ProgramDocumentation::checkZsh() const {
    const std::string file = completions_ + "/_" + name_;
    const std::string script = contents(file);
    EXPECT_EQ(output("zsh -n " + pathOf(file)), "");
    EXPECT_EQ(matches(script, R"(\n        ['"]([a-z-]+):)"), commandNames());
    Words lookOptions;
    if (const auto look = script.find("look=("); look != std::string::npos) {
        lookOptions =
            matches(script.substr(look, script.find("\n    )", look) - look), R"((--[a-z0-9-]+))");
    }
    for (const CLI::App* command : commands()) {
        // "name)" or "name | other)", up to ";;".
        const std::regex branch("\n +(?:[a-z-]+ \\| )*" + command->get_name() +
                                "(?: \\| [a-z-]+)*\\)\n([^;]*);;");
        std::smatch found;
        ASSERT_TRUE(std::regex_search(script, found, branch)) << command->get_name();
        const std::string text = found[1];
        Words options = matches(text, R"((--[a-z0-9-]+))");
        if (text.find("$help") != std::string::npos) {
            options.insert("--help");
        }
        if (text.find("$look") != std::string::npos) {
            options.insert(lookOptions.begin(), lookOptions.end());
        }
        EXPECT_EQ(options, optionsOf(*command)) << command->get_name();
    }
}

void ProgramDocumentation::checkReadme() const {
    const std::string readme = contents("README.md");
    for (const std::string& name : commandNames()) {
        EXPECT_NE(readme.find("\n" + name_ + " " + name), std::string::npos) << name;
    }
}

} // namespace vantor
