#include "tests/e2e/desktop.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace vantor::e2e {

std::size_t openDescriptors(pid_t process) {
    const std::filesystem::directory_iterator all("/proc/" + std::to_string(process) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::size_t residentMemory(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

void Desktop::startSway(unsigned outputs, const std::string& mode) {
    sway_ = std::make_unique<Sway>(outputs, "output * mode " + mode + "@60Hz");
}

std::map<std::string, std::string> Desktop::environment() const {
    auto variables = Installation::environment();
    if (sway_) {
        variables["WAYLAND_DISPLAY"] = sway_->socket().string();
    }
    return variables;
}

void Desktop::startAgent(std::vector<std::string> words) {
    words.insert(words.begin(), {VANTOR_BIN "/vantor-agent", "run", "--output", "background"});
    agent_ = std::make_unique<Process>(words, environment());
    if (!eventually([this] { return !isRunning(agent_->pid()) || !status().is_null(); }) ||
        !isRunning(agent_->pid())) {
        throw std::runtime_error("the agent does not start: " + agent_->errors());
    }
}

Outcome Desktop::endAgent() {
    agent_->signal(SIGTERM);
    return agent_->wait(kPatience);
}

nlohmann::json Desktop::status() const {
    const Outcome told = agentctl({"status", "--json"});
    return told.status == 0 ? nlohmann::json::parse(told.output) : nlohmann::json();
}

nlohmann::json Desktop::output(const std::string& connector) const {
    const nlohmann::json now = status();
    if (now.is_null()) {
        return {};
    }
    const auto& outputs = now.at("outputs");
    const auto found = std::find_if(outputs.begin(), outputs.end(), [&](const auto& entry) {
        return entry.at("connector") == connector;
    });
    return found != outputs.end() ? *found : nlohmann::json();
}

std::uint64_t Desktop::frames(const std::string& connector) const {
    const nlohmann::json shown = output(connector);
    return shown.is_null() ? 0 : shown.at("frames").get<std::uint64_t>();
}

pid_t Desktop::extension() const {
    const nlohmann::json now = status();
    return now.is_null() || now.at("extension").at("pid").is_null()
               ? 0
               : now.at("extension").at("pid").get<pid_t>();
}

bool Desktop::moves(const std::vector<std::string>& connectors, std::uint64_t more) const {
    return std::all_of(connectors.begin(), connectors.end(), [&](const std::string& connector) {
        const std::uint64_t before = frames(connector);
        return eventually([&] { return frames(connector) >= before + more; });
    });
}

void Desktop::configure(const std::string& text) const {
    std::filesystem::create_directories(configuration().parent_path());
    std::ofstream(configuration()) << text;
}

} // namespace vantor::e2e
