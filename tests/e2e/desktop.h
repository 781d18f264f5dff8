#pragma once
// The agent on a real desktop: sway with virtual outputs, the agent as its background, and a test
// as the person in front of it.

#include "tests/e2e/installation.h"
#include "tests/e2e/sway.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantor::e2e {

/// A machine with everything at once takes its time.
inline constexpr std::chrono::seconds kPatience{60};

std::size_t openDescriptors(pid_t process);
/// KiB.
std::size_t residentMemory(pid_t process);

class Desktop : public Installation {
  protected:
    /// Small outputs, for what is drawn here is drawn by the CPU.
    void startSway(unsigned outputs = 2, const std::string& mode = "320x180");
    /// Starts the agent with those words beside `run --output background`, and waits until it can
    /// be asked; throws when it ends instead, which fails the test.
    void startAgent(std::vector<std::string> words = {});
    /// Asks the agent to end and waits for it.
    Outcome endAgent();

    std::map<std::string, std::string> environment() const override;

    /// What the agent says of itself; null while it cannot be asked.
    nlohmann::json status() const;
    /// What it says of the output; null when it is not there.
    nlohmann::json output(const std::string& connector) const;
    std::uint64_t frames(const std::string& connector) const;
    pid_t extension() const;
    Outcome agentctl(std::vector<std::string> words) const {
        return command("vantor-agent", std::move(words));
    }

    bool eventually(const std::function<bool()>& holds) const {
        return e2e::eventually(holds, kPatience);
    }
    /// Waits until every output that is named has shown so many more frames.
    bool moves(const std::vector<std::string>& connectors, std::uint64_t frames = 3) const;

    /// The folder's configuration file; the agent follows it.
    std::filesystem::path configuration() const { return home() / ".config/vantor/agent.toml"; }
    void configure(const std::string& text) const;

    std::unique_ptr<Sway> sway_;
    std::unique_ptr<Process> agent_;
};

} // namespace vantor::e2e
