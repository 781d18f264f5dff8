#pragma once
// `vantor-agent`'s command line: its commands, and which of them was asked for.

#include "agent/run_status.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <vector>

namespace vantor::agent {

class CommandLine {
  public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// The program's commands and options, as its help knows them.
    const CLI::App& description() const { return app_; }

    /// Carries out what the words ask for. Help goes to standard output, complaints to standard
    /// error.
    RunStatus run(int argc, const char* const* argv);

  private:
    CLI::App app_{"Shows the extension's wallpapers."};
    /// What carries each command out, in the commands' order.
    std::vector<std::function<RunStatus()>> commands_;
};

} // namespace vantor::agent
