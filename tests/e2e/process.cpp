#include "tests/e2e/process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace vantor::e2e {
namespace {

std::filesystem::path temporaryFile() {
    std::string name = (std::filesystem::temp_directory_path() / "vantor-e2e-XXXXXX").string();
    const int descriptor = ::mkstemp(name.data());
    if (descriptor < 0) {
        throw std::runtime_error("no temporary file can be made");
    }
    ::close(descriptor);
    return name;
}

void redirect(const std::filesystem::path& file, int target) {
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (descriptor < 0 || ::dup2(descriptor, target) < 0) {
        ::_exit(127);
    }
}

} // namespace

Process::Process(const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment)
    : outputFile_(temporaryFile()), errorFile_(temporaryFile()) {
    std::vector<char*> words;
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
        for (const auto& [name, value] : environment) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        redirect("/dev/null", STDIN_FILENO);
        redirect(outputFile_, STDOUT_FILENO);
        redirect(errorFile_, STDERR_FILENO);
        ::execv(words[0], words.data());
        ::_exit(127);
    }
    if (pid_ < 0) {
        throw std::runtime_error("no process can be started");
    }
}

Process::~Process() {
    if (!reaped_) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove(outputFile_, ignored);
    std::filesystem::remove(errorFile_, ignored);
}

void Process::signal(int number) const { ::kill(pid_, number); }

std::string Process::output() const { return contents(outputFile_); }

std::string Process::errors() const { return contents(errorFile_); }

Outcome Process::wait(std::chrono::milliseconds deadline) {
    int status = 0;
    Outcome outcome;
    const bool ended =
        eventually([&] { return ::waitpid(pid_, &status, WNOHANG) == pid_; }, deadline);
    if (!ended) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, &status, 0);
    } else if (WIFEXITED(status)) {
        outcome.status = WEXITSTATUS(status);
    }
    reaped_ = true;
    outcome.output = contents(outputFile_);
    outcome.errors = contents(errorFile_);
    return outcome;
}

Outcome run(const std::vector<std::string>& arguments,
            const std::map<std::string, std::string>& environment,
            std::chrono::milliseconds deadline) {
    return Process(arguments, environment).wait(deadline);
}

bool isRunning(pid_t process) {
    // "PID (NAME) STATE …", where the name may hold anything.
    const std::string status = contents("/proc/" + std::to_string(process) + "/stat");
    const auto nameEnd = status.rfind(") ");
    return nameEnd != std::string::npos && status[nameEnd + 2] != 'Z';
}

std::uint64_t wakeUps(pid_t process) {
    std::uint64_t count = 0;
    const auto tasks = "/proc/" + std::to_string(process) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
        std::ifstream file(task.path() / "status");
        for (std::string word; file >> word;) {
            if (word == "voluntary_ctxt_switches:") {
                std::uint64_t own = 0;
                file >> own;
                count += own;
            }
        }
    }
    return count;
}

std::vector<pid_t> childrenOf(pid_t parent) {
    std::ifstream file("/proc/" + std::to_string(parent) + "/task/" + std::to_string(parent) +
                       "/children");
    return {std::istream_iterator<pid_t>(file), std::istream_iterator<pid_t>()};
}

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "vantor-e2e-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder can be made");
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace vantor::e2e
