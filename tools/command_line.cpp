#include "tools/command_line.h"

#include "platform/suggestion.h"
#include "tools/commands.h"

#include <algorithm>
#include <ostream>

namespace vantor {
namespace {

constexpr CommandRow kTable[] = {
    {"list", "Prints the catalog", makeListCommand},
    {"set", "Chooses a display's shader and look", makeSetCommand},
    {"show", "Prints what the state file holds", makeShowCommand},
    {"unset", "Forgets a display's shader and look", makeUnsetCommand},
    {"main", "Says which display is the main one", makeMainCommand},
    {"non-shader", "Marks a display as one that shows no shader", makeNonShaderCommand},
    {"notify", "Tells a running extension to read the state file again", makeNotifyCommand},
    {"render", "Draws one frame into a PNG file", makeRenderCommand},
    {"gallery", "Writes a page with a picture of every wallpaper", makeGalleryCommand},
    {"check", "Compiles shaders as the extension would", makeCheckCommand},
    {"watch", "Shows a source file on a display, anew at every save", makeWatchCommand},
};

/// A word that stands where a command's name should and is none.
const std::string* misspeltCommand(const std::vector<std::string>& words) {
    if (words.empty() || words.front().starts_with('-') ||
        std::ranges::find(kTable, words.front(), &CommandRow::name) != std::end(kTable)) {
        return nullptr;
    }
    return &words.front();
}

ExitStatus refuseCommand(const std::string& word, const Console& console) {
    std::vector<std::string_view> names;
    for (const CommandRow& row : kTable) {
        names.emplace_back(row.name);
    }
    return console.refuseUsage("\"" + word + "\" is no command" + didYouMean(word, names) +
                               " (see vantorctl --help)");
}

} // namespace

ExitStatus Console::fail(std::string_view sentence) const {
    err << sentence << (sentence.ends_with('\n') ? "" : "\n");
    return ExitStatus::failed;
}

ExitStatus Console::refuseUsage(std::string_view sentence) const {
    fail(sentence);
    return ExitStatus::usage;
}

std::span<const CommandRow> commandTable() { return kTable; }

CommandLine::CommandLine() : app_("Chooses what each display's wallpaper shows.", "vantorctl") {
    app_.set_version_flag("--version", "vantorctl " VANTOR_VERSION);
    app_.require_subcommand(1);
    app_.footer("Exit status: 0 done, 1 it could not be done (the reason is on standard error), "
                "2 wrong usage.");
    for (const CommandRow& row : kTable) {
        commands_.push_back(row.make());
        commands_.back()->describe(*app_.add_subcommand(row.name, row.summary));
    }
}

ExitStatus CommandLine::run(std::vector<std::string> words, Platform& platform,
                            const Console& console) {
    if (const std::string* word = misspeltCommand(words)) {
        return refuseCommand(*word, console);
    }
    // The parser takes them from the end.
    std::ranges::reverse(words);
    try {
        app_.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        return app_.exit(error, console.out, console.err) == 0 ? ExitStatus::done
                                                               : ExitStatus::usage;
    }
    const auto row = std::ranges::find_if(
        kTable, [this](const CommandRow& each) { return app_.got_subcommand(each.name); });
    return commands_.at(static_cast<std::size_t>(row - std::begin(kTable)))->run(platform, console);
}

} // namespace vantor
