#pragma once
// Child processes for end-to-end tests: started with an environment of their own, watched with a
// deadline, never left behind.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace vantor::e2e {

/// How a process ended and what it said.
struct Outcome {
    /// The exit status; nothing when a signal ended it or the deadline passed.
    std::optional<int> status;
    std::string output;
    std::string errors;
};

class Process {
  public:
    /// Starts `arguments[0]` with the test's environment changed by `environment`.
    Process(const std::vector<std::string>& arguments,
            const std::map<std::string, std::string>& environment);
    /// Kills what still runs.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return pid_; }
    void signal(int number) const;
    /// What it has said until now.
    std::string output() const;
    std::string errors() const;
    /// Waits for the end; past the deadline the process is killed and has no status.
    Outcome wait(std::chrono::milliseconds deadline);

  private:
    pid_t pid_ = -1;
    std::filesystem::path outputFile_;
    std::filesystem::path errorFile_;
    bool reaped_ = false;
};

/// Starts and waits.
Outcome run(const std::vector<std::string>& arguments,
            const std::map<std::string, std::string>& environment,
            std::chrono::milliseconds deadline = std::chrono::seconds(60));

/// Waits until `condition` holds; false when the deadline passes first.
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

/// Whether the process runs; one that has ended and waits for somebody to ask how does not.
bool isRunning(pid_t process);

/// How often the process's threads have gone to sleep, all together: as often as they are woken.
std::uint64_t wakeUps(pid_t process);

/// The children that a process has now.
std::vector<pid_t> childrenOf(pid_t parent);

/// A folder of its own, removed with everything in it.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// The whole file as text; empty when it cannot be read.
std::string contents(const std::filesystem::path& file);

} // namespace vantor::e2e
