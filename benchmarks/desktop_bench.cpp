// What the agent and its extension cost on the desktop of a real compositor, both processes
// together: the CPU that a running wallpaper takes beside a program that draws the same shader
// straight onto the desktop, wake-ups while everything is paused, and how long a lock and a crash
// keep the picture waiting.

#include "agent/control/control_client.h"
#include "tests/e2e/process.h"
#include "tests/e2e/sway.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

namespace vantor {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{60};
constexpr std::chrono::seconds kRun{8};
constexpr std::chrono::seconds kRest{10};

/// Draws one colour and reads nothing.
constexpr const char* kTrivialShader =
    "#include <metal_stdlib>\nusing namespace metal;\n"
    "struct VOut { float4 position [[position]]; };\n"
    "vertex VOut v_main(uint vid [[vertex_id]]) {\n"
    "    float2 p = float2((vid << 1) & 2, vid & 2);\n"
    "    VOut out;\n    out.position = float4(p * 2.0 - 1.0, 0.0, 1.0);\n    return out;\n}\n"
    "fragment float4 f_main(VOut in [[stage_in]]) { return float4(1.0, 0.5, 0.25, 1.0); }\n";

[[noreturn]] void fail(const std::string& sentence) {
    std::fprintf(stderr, "desktop_bench: %s\n", sentence.c_str());
    std::_Exit(1);
}

void await(const std::function<bool()>& holds, const char* what) {
    if (!e2e::eventually(holds, kPatience)) {
        fail(what);
    }
}

/// Seconds of CPU that the process has taken, all threads (proc_pid_stat(5), fields 14 and 15).
double cpuSeconds(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream rest(line.substr(line.rfind(')') + 2));
    std::string field;
    for (int i = 3; i < 14; ++i) {
        rest >> field;
    }
    double user = 0;
    double system = 0;
    rest >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

class Desktop {
  public:
    Desktop() {
        std::filesystem::create_directories(home());
        std::ofstream(shader()) << kTrivialShader;
        const auto set =
            e2e::run({VANTOR_BIN "/vantorctl", "set", "--display", "1", shader()}, environment());
        if (set.status != 0) {
            fail(set.errors);
        }
    }

    std::string home() const { return folder_.path() / "home"; }
    std::string shader() const { return folder_.path() / "trivial.metal"; }
    std::map<std::string, std::string> environment() const {
        return {{"VANTOR_USER_HOME", home()},
                {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"},
                {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent"},
                {"WAYLAND_DISPLAY", sway_.socket().string()}};
    }

  private:
    e2e::TemporaryFolder folder_;
    e2e::Sway sway_{1, "output * mode 1280x720@60Hz"};
};

/// The agent on a desktop of its own, moving.
class Agent {
  public:
    explicit Agent(const std::vector<std::string>& words = {}) {
        std::vector<std::string> command{VANTOR_BIN "/vantor-agent", "run", "--output",
                                         "background"};
        command.insert(command.end(), words.begin(), words.end());
        process_ = std::make_unique<e2e::Process>(command, desktop_.environment());
        const std::filesystem::path socket =
            std::filesystem::path(desktop_.home()) / ".local/state/vantor/agent.sock";
        setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
        await(
            [&] {
                client_ = agent::ControlClient::connect(socket);
                return client_ && frames() > 0;
            },
            "the agent shows nothing");
    }
    ~Agent() {
        process_->signal(SIGTERM);
        static_cast<void>(process_->wait(kPatience));
    }
    Agent(const Agent&) = delete;
    Agent& operator=(const Agent&) = delete;

    void call(const char* method) {
        if (auto called = client_->call(method); !called) {
            fail(called.error());
        }
    }
    nlohmann::json status() {
        auto told = client_->call("GetStatus");
        return told ? nlohmann::json::parse(told.value()) : nlohmann::json();
    }
    std::uint64_t frames() {
        const auto now = status();
        return now.is_null() || now.at("outputs").empty()
                   ? 0
                   : now.at("outputs").at(0).at("frames").get<std::uint64_t>();
    }
    pid_t pid() const { return process_->pid(); }
    pid_t extension() {
        const auto pid = status().at("extension").at("pid");
        return pid.is_null() ? 0 : pid.get<pid_t>();
    }

  private:
    Desktop desktop_;
    std::unique_ptr<e2e::Process> process_;
    std::optional<agent::ControlClient> client_;
};

void report(benchmark::State& state, double cpu, double seconds) {
    state.SetIterationTime(cpu);
    state.counters["percent_of_a_core"] = 100.0 * cpu / seconds;
}

void runningOurs(benchmark::State& state) {
    Agent agent;
    const pid_t other = agent.extension();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    for (auto _ : state) {
        const auto began = steady_clock::now();
        const std::uint64_t frames = agent.frames();
        const double before = cpuSeconds(agent.pid()) + cpuSeconds(other);
        std::this_thread::sleep_for(kRun);
        const double seconds = std::chrono::duration<double>(steady_clock::now() - began).count();
        report(state, cpuSeconds(agent.pid()) + cpuSeconds(other) - before, seconds);
        state.counters["frames_a_second"] = static_cast<double>(agent.frames() - frames) / seconds;
    }
}

/// Of the program that draws straight onto the desktop.
std::uint64_t frames(const e2e::Process& straight) {
    const std::string before = straight.output();
    straight.signal(SIGUSR1);
    await([&] { return straight.output().size() > before.size(); }, "no frames are told");
    return std::stoull(straight.output().substr(before.size()));
}

void runningStraight(benchmark::State& state, const char* first) {
    const Desktop desktop;
    e2e::Process program({VANTOR_STRAIGHT, first, desktop.shader()}, desktop.environment());
    std::this_thread::sleep_for(std::chrono::seconds(2));
    if (!e2e::isRunning(program.pid())) {
        fail(program.errors());
    }
    for (auto _ : state) {
        const auto began = steady_clock::now();
        const std::uint64_t shown = frames(program);
        const double before = cpuSeconds(program.pid());
        std::this_thread::sleep_for(kRun);
        const double seconds = std::chrono::duration<double>(steady_clock::now() - began).count();
        report(state, cpuSeconds(program.pid()) - before, seconds);
        state.counters["frames_a_second"] = static_cast<double>(frames(program) - shown) / seconds;
    }
    program.signal(SIGTERM);
}

void paused(benchmark::State& state) {
    Agent agent;
    const pid_t other = agent.extension();
    agent.call("Pause");
    // What was on its way arrives first.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    for (auto _ : state) {
        const std::uint64_t before = e2e::wakeUps(agent.pid()) + e2e::wakeUps(other);
        std::this_thread::sleep_for(kRest);
        state.SetIterationTime(std::chrono::duration<double>(kRest).count());
        state.counters["wakeups"] =
            static_cast<double>(e2e::wakeUps(agent.pid()) + e2e::wakeUps(other) - before);
    }
}

/// From a word to the agent, or a crash, to the next frame that is shown.
template <typename Action>
void untilNextFrame(benchmark::State& state, Agent& agent, Action act) {
    const std::uint64_t before = agent.frames();
    const auto began = steady_clock::now();
    act();
    while (agent.frames() <= before) {
        if (steady_clock::now() - began > kPatience) {
            fail("no frame comes");
        }
    }
    state.SetIterationTime(std::chrono::duration<double>(steady_clock::now() - began).count());
}

void lock(benchmark::State& state) {
    Agent agent({"--mode", "default"});
    for (auto _ : state) {
        agent.call("Unlock");
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        untilNextFrame(state, agent, [&agent] { agent.call("Lock"); });
    }
}

void crash(benchmark::State& state) {
    // The first death of an agent's life, whose restart waits least.
    for (auto _ : state) {
        Agent agent;
        const pid_t other = agent.extension();
        // Frames that were on their way when it died are the old one's.
        untilNextFrame(state, agent, [&] {
            kill(other, SIGKILL);
            await([&] { return !e2e::isRunning(other) && agent.extension() != other; },
                  "the extension does not die");
        });
    }
}

BENCHMARK(runningOurs)
    ->Name("desktop/running/ours")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
// The wallpaper's own pass, which clears before it draws.
BENCHMARK_CAPTURE(runningStraight, clear, "clear")
    ->Name("desktop/running/straight")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runningStraight, keep, "keep")
    ->Name("desktop/running/straight_without_clear")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(paused)
    ->Name("desktop/paused")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(lock)
    ->Name("desktop/lock")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(crash)
    ->Name("desktop/crash")
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vantor

BENCHMARK_MAIN();
