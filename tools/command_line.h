#pragma once
// The command line of vantorctl: the table of its commands, and the way from words to a command.

#include "tools/command.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

struct CommandRow {
    const char* name;
    /// One line of the help.
    const char* summary;
    std::unique_ptr<Command> (*make)();
};

/// Every command, in the order in which the help lists them.
std::span<const CommandRow> commandTable();

class CommandLine {
  public:
    CommandLine();

    /// Runs the command that the words (without the program's name) ask for.
    ExitStatus run(std::vector<std::string> words, Platform& platform, const Console& console);

    /// What the help is made of.
    const CLI::App& description() const { return app_; }

  private:
    CLI::App app_;
    /// In the table's order.
    std::vector<std::unique_ptr<Command>> commands_;
};

} // namespace vantor
