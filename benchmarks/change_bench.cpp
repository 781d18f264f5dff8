// How soon a running wallpaper shows what the host application chose: from the change notification
// to the agent's first composited picture of the new look, with the real extension in its process,
// a session bus of its own and 60 refreshes a second. It stands against one frame of that shader.

#include "agent/display.h"
#include "agent/extension_session.h"
#include "agent/output/headless/headless_backend.h"
#include "platform/linux/gpu/vulkan_context.h"
#include "platform/notifications.h"
#include "platform/platform.h"
#include "render/shader_frame.h"
#include "render/shader_gpu.h"
#include "shaders/shader_catalog.h"
#include "tests/support/temporary_folder.h"

#include <benchmark/benchmark.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace vantor {
namespace {

constexpr std::uint32_t kRefreshRate = 60;
const agent::OutputDescription kOutput{
    .connector = "headless-1", .width = 640, .height = 360, .refreshRate = kRefreshRate};
constexpr double kPatience = 30;
constexpr const char* kChanged = "com.nimbara.lockscreen.changed";

/// A session bus with a user's home, for as long as it lives.
class Session {
  public:
    Session() {
        const std::string socket = (folder_.path() / "bus").native();
        const std::string address = "unix:path=" + socket;
        setenv("HOME", folder_.path().c_str(), 1);
        setenv("VANTOR_USER_HOME", folder_.path().c_str(), 1);
        setenv("VANTOR_SYSTEM_ROOT", VANTOR_BENCH_SYSTEM_ROOT, 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
        std::string option = "--address=" + address;
        std::array<char*, 6> words{const_cast<char*>("dbus-daemon"),
                                   const_cast<char*>("--session"),
                                   const_cast<char*>("--nofork"),
                                   const_cast<char*>("--nopidfile"),
                                   option.data(),
                                   nullptr};
        posix_spawnp(&bus_, words[0], nullptr, nullptr, words.data(), environ);
        while (access(socket.c_str(), F_OK) != 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    ~Session() {
        kill(bus_, SIGTERM);
        waitpid(bus_, nullptr, 0);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// The host application's choice: plasma in one colour.
    void show(double red, double green) const {
        const std::filesystem::path file =
            folder_.path() / "Library/Containers/com.nimbara.app/Data/Library/Application Support/"
                             "VantorEngine/LockScreen.plist";
        std::filesystem::create_directories(file.parent_path());
        const PropertyListDictionary display{
            {"id", "plasma"},
            {"source", *ShaderCatalog::plasma.source},
            {"look", PropertyListDictionary{{"tint", PropertyList::Array{red, green, 0.0, 1.0}}}}};
        const Bytes bytes = platform().propertyLists().writeBinary(PropertyListDictionary{
            {"desktop",
             PropertyListDictionary{{"displays", PropertyListDictionary{{"1", display}}}}}});
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }

  private:
    TemporaryFolder folder_;
    pid_t bus_ = -1;
};

/// An agent with one display, as far as this needs one.
class Agent {
  public:
    Agent()
        : loop_(static_cast<MainLoop&>(platform().mainQueue())),
          outputs_(agent::makeHeadless(loop_, std::array{kOutput},
                                       {.added = [this](agent::Output& output) { show(output); },
                                        .changed = [](agent::Output&) {},
                                        .removed = [](agent::Output&) {},
                                        .refresh = [this](agent::Output&) { display_->refresh(); },
                                        .command = {},
                                        .ended = [](const std::string&) {}})) {
        while (!display_) {
            loop_.turn();
        }
        const launch::ScreenRecord screen{.displayID = 1,
                                          .width = kOutput.width,
                                          .height = kOutput.height,
                                          .refreshRate = kRefreshRate};
        auto session = agent::ExtensionSession::start(
            loop_,
            agent::extensionLaunch(platform(), std::filesystem::path(VANTOR_BENCH_SYSTEM_ROOT) /
                                                   "VantorLockScreen.appex"),
            std::array{screen},
            {.attached = [this](std::uint32_t,
                                FileDescriptor socket) { display_->host(std::move(socket)); },
             .ended = [](const std::string&) {},
             .links = [this](std::uint32_t,
                             std::uint32_t frameRate) { display_->setLinkRate(frameRate); }});
        session_ = std::move(session).value();
        session_->acquire(UUID::random(),
                          {.configuration = "match-desktop",
                           .size = {.width = kOutput.width * 1.0, .height = kOutput.height * 1.0},
                           .directDisplayID = 1,
                           .presentationMode = "locked"},
                          [this](const Result<std::uint32_t, std::string>& context) {
                              static_cast<void>(session_->attach(context.value()));
                          });
    }

    /// Seconds until the display shows that colour and not the other; negative when it does not.
    double untilShown(bool isGreen) {
        const auto begin = std::chrono::steady_clock::now();
        std::uint64_t looked = 0;
        for (;;) {
            loop_.turn();
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
            if (display_->framesShown() != looked) {
                looked = display_->framesShown();
                const auto pixels = display_->pixels();
                const std::size_t centre = 4 * (180 * 640 + 320);
                const int green = pixels ? (*pixels)[centre + 1] : 0;
                const int red = pixels ? (*pixels)[centre + 2] : 0;
                if (isGreen ? green > 0 && red == 0 : red > 0 && green == 0) {
                    return taken.count();
                }
            }
            if (taken.count() > kPatience) {
                return -1;
            }
        }
    }

  private:
    void show(agent::Output& output) {
        auto gpu = vulkan::Context::create();
        auto display =
            agent::Display::create(loop_, gpu.value(), output, [this] { session_->tick(1); });
        display_ = std::move(display).value();
    }

    MainLoop& loop_;
    std::unique_ptr<agent::OutputBackend> outputs_;
    std::unique_ptr<agent::Display> display_;
    std::unique_ptr<agent::ExtensionSession> session_;
};

void change(benchmark::State& state) {
    const Session session;
    session.show(1, 0);
    Agent agent;
    // Until the thumbnails are there, which the first change renders.
    bool green = false;
    for (int warmUp = 0; warmUp < 2; ++warmUp) {
        if (agent.untilShown(green) < 0) {
            state.SkipWithError("the wallpaper is not shown");
            return;
        }
        green = !green;
        session.show(green ? 0 : 1, green ? 1 : 0);
        platform().notifications().postDarwin(kChanged);
    }
    agent.untilShown(green);
    for (auto _ : state) {
        green = !green;
        session.show(green ? 0 : 1, green ? 1 : 0);
        if (!platform().notifications().postDarwin(kChanged)) {
            state.SkipWithError("nobody can be told");
            return;
        }
        const double seconds = agent.untilShown(green);
        if (seconds < 0) {
            state.SkipWithError("the change is not shown");
            return;
        }
        state.SetIterationTime(seconds);
    }
}

void frame(benchmark::State& state) {
    ShaderGPU& gpu = ShaderGPU::shared();
    const auto pipeline = gpu.pipeline("plasma", *ShaderCatalog::plasma.source);
    const auto texture = gpu.device()->newTexture({.pixelFormat = gpu::PixelFormat::bgra8Unorm,
                                                   .width = kOutput.width,
                                                   .height = kOutput.height,
                                                   .usage = gpu::TextureUsage::renderTarget,
                                                   .storageMode = gpu::StorageMode::shared});
    float time = 0;
    for (auto _ : state) {
        gpu::CommandBuffer* commands = gpu.queue()->commandBuffer();
        encodeShaderFrame(*commands, *gpu.device(), pipeline, *texture, ShaderUniforms(),
                          time += 0.1F);
        commands->commit();
        commands->waitUntilCompleted();
    }
}

BENCHMARK(change)
    ->Name("change/plasma/shown")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(frame)->Name("change/plasma/frame")->Iterations(50)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vantor
