#pragma once
// A program's manual page, completions and place in the README, held against its own description of
// its commands.

#include <CLI/CLI.hpp>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace vantor {

class ProgramDocumentation : public testing::Test {
  protected:
    using Words = std::set<std::string>;

    /// The manual page is docs/NAME.1; the completions are in `completions`. The description
    /// outlives this.
    ProgramDocumentation(std::string name, std::string completions, const CLI::App& description);

    // Each expects that exactly the program's commands and options are there.
    void checkManual() const;
    void checkBash() const;
    void checkFish() const;
    void checkZsh() const;
    /// That it has a line for every command.
    void checkReadme() const;

    /// The source of the manual page.
    std::string manual() const;

    /// A page in docs as mandoc sees it: its complaints.
    static std::string complaintsAboutManual(const std::string& page);

  private:
    std::vector<const CLI::App*> commands() const;
    Words commandNames() const;
    /// The lines of the manual's synopsis for one command.
    std::string synopsisOf(const std::string& manual, const std::string& command) const;

    std::string name_;
    std::string completions_;
    const CLI::App& description_;
};

} // namespace vantor
