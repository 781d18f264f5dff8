#pragma once
// What a command of vantorctl is: it names its arguments, and it runs.

#include <iosfwd>
#include <string_view>

namespace CLI {
class App;
}

namespace vantor {

class Platform;

enum class ExitStatus : int {
    done = 0,
    /// It could not be done; the reason was said.
    failed = 1,
    /// The words of the command line make no sense.
    usage = 2,
};

/// Where a command speaks: results go to `out`, everything else to `err`.
struct Console {
    std::ostream& out;
    std::ostream& err;
    /// Whether `err` is a terminal, on which long work shows how far it is.
    bool showsProgress = false;

    /// Says the sentence on `err`, ending the line if it does not; gives the status for the caller
    /// to return.
    ExitStatus fail(std::string_view sentence) const;
    ExitStatus refuseUsage(std::string_view sentence) const;
};

/// Lives as long as the command line that it describes itself to.
class Command {
  public:
    virtual ~Command() = default;

    /// Adds the command's arguments and options.
    virtual void describe(CLI::App& app) = 0;
    /// Runs with what the command line said.
    virtual ExitStatus run(Platform& platform, const Console& console) = 0;
};

} // namespace vantor
