#include "agent/print.h"

#include "agent/complaint.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace vantor::agent {

RunStatus print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
        return RunStatus::done;
    }
    complain(std::string("standard output: ") + std::strerror(errno));
    return RunStatus::failed;
}

} // namespace vantor::agent
