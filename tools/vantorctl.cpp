// The host application's seat: chooses what each display shows, writes it into the state file and
// tells the extension.

#include "platform/platform.h"
#include "tools/command_line.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <unistd.h>

int main(int argc, char** argv) {
    // A file that grows beyond the limit is a write that fails, and said as one.
    std::signal(SIGXFSZ, SIG_IGN);
    vantor::installPlatform(&vantor::systemPlatform());
    const vantor::Console console{
        .out = std::cout, .err = std::cerr, .showsProgress = ::isatty(STDERR_FILENO) == 1};
    vantor::CommandLine commandLine;
    auto status = commandLine.run({argv + 1, argv + argc}, vantor::platform(), console);
    if (!std::cout.flush()) {
        status = console.fail("standard output cannot be written");
    }
    // Nothing is torn down: the GPU's threads live as long as the process.
    std::_Exit(static_cast<int>(status));
}
