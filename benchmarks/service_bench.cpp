// What the service around the wallpapers costs: a call's way to and fro against the library's own,
// a wallpaper from request to reply, a launch until the first answer, and many connections at once.

#include "agent/extension_session.h"
#include "agent/kit/kit_classes.h"
#include "platform/linux/archive/wire_object.h"
#include "platform/linux/system/xpc/bus_connection.h"
#include "platform/linux/system/xpc/bus_message.h"
#include "platform/linux/system/xpc/xpc_wire.h"
#include "platform/platform.h"
#include "render/shader_frame.h"
#include "render/shader_gpu.h"
#include "shaders/shader_catalog.h"
#include "tests/support/temporary_folder.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace vantor {
namespace {

constexpr Size kSize{640, 360};
constexpr std::uint64_t kPatienceMicroseconds = 30'000'000;
constexpr int kCallsOfOneConnection = 200;

std::pair<FileDescriptor, FileDescriptor> socketPair() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) {
        std::abort();
    }
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

const ClassRegistry& classes() {
    static const ClassRegistry& registry = *[] {
        auto* made = new ClassRegistry;
        agent::registerKitClasses(*made);
        return made;
    }();
    return registry;
}

/// The payload of a trivial call: an identifier's archive.
const Bytes& payload() {
    static const Bytes bytes = archiveObject(*agent::makeWallpaperID(UUID{})).value();
    return bytes;
}

/// A client that calls and waits, with nothing of ours between it and its library.
class BareClient {
  public:
    explicit BareClient(FileDescriptor socket)
        : bus_(xpc::openBus(socket.release(), xpc::Side::client)) {
        if (!bus_ || sd_bus_start(bus_.get()) < 0) {
            std::abort();
        }
    }

    void call() {
        sd_bus_message* made = nullptr;
        sd_bus_message* answered = nullptr;
        if (sd_bus_message_new_method_call(bus_.get(), &made, nullptr, xpc::kObjectPath,
                                           xpc::kWallpaperInterface,
                                           "isChoiceDownloadedWith_reply_") < 0) {
            std::abort();
        }
        const xpc::Message message(made);
        int flag = 0;
        if (!xpc::appendBytes(message.get(), payload()) ||
            sd_bus_call(bus_.get(), message.get(), kPatienceMicroseconds, nullptr, &answered) < 0 ||
            sd_bus_message_read(answered, "b", &flag) < 0 || flag == 0) {
            std::abort();
        }
        sd_bus_message_unref(answered);
    }

  private:
    xpc::Bus bus_;
};

/// The library's own server: a thread that reads the bytes and says yes.
class BareServer {
  public:
    explicit BareServer(FileDescriptor socket)
        : thread_([descriptor = socket.release()] {
              const xpc::Bus bus = xpc::openBus(descriptor, xpc::Side::server);
              sd_bus_add_filter(bus.get(), nullptr, answer, nullptr);
              sd_bus_start(bus.get());
              for (int status = 0; status >= 0;) {
                  status = sd_bus_process(bus.get(), nullptr);
                  if (status == 0) {
                      status = sd_bus_wait(bus.get(), UINT64_MAX);
                  }
              }
          }) {}
    ~BareServer() { thread_.join(); }
    BareServer(const BareServer&) = delete;
    BareServer& operator=(const BareServer&) = delete;

  private:
    static int answer(sd_bus_message* message, void*, sd_bus_error*) {
        if (!xpc::isMethodCall(message)) {
            return 0;
        }
        const void* data = nullptr;
        std::size_t size = 0;
        sd_bus_message_read_array(message, 'y', &data, &size);
        sd_bus_reply_method_return(message, "b", 1);
        return 1;
    }

    std::thread thread_;
};

class SayingYes : public ExportedObject {
  public:
    void invoke(WallpaperOperation, std::vector<ObjectRef>, Reply reply) override {
        std::move(reply).sendBoolean(true);
    }
};

void bareRoundTrip(benchmark::State& state) {
    auto [mine, theirs] = socketPair();
    const BareServer server(std::move(theirs));
    BareClient client(std::move(mine));
    client.call();
    for (auto _ : state) {
        client.call();
    }
}

void ownRoundTrip(benchmark::State& state) {
    auto [mine, theirs] = socketPair();
    std::atomic<bool> gone = false;
    {
        const auto connection = xpc::makeBusConnection(std::move(theirs), classes());
        XPCInterface exported(kWallpaperProtocolName);
        exported.setClasses({classes().classNamed("WallpaperIDXPC")},
                            {"isChoiceDownloadedWith:reply:", 0, false});
        connection->setExportedInterface(std::move(exported));
        connection->setExportedObject(std::make_shared<SayingYes>());
        connection->setInvalidationHandler([&gone] {
            gone = true;
            gone.notify_all();
        });
        connection->resume();
    }
    {
        BareClient client(std::move(mine));
        client.call();
        for (auto _ : state) {
            client.call();
        }
    }
    gone.wait(false);
}

/// The real extension with a home of its own, and this process in its agent's seat.
class Extension {
  public:
    Extension() : loop_(static_cast<MainLoop&>(platform().mainQueue())) {
        setenv("HOME", folder_.path().c_str(), 1);
        setenv("VANTOR_USER_HOME", folder_.path().c_str(), 1);
        setenv("VANTOR_SYSTEM_ROOT", VANTOR_BENCH_SYSTEM_ROOT, 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
        auto started = launch::LaunchHost::start(
            loop_,
            agent::extensionLaunch(platform(), std::filesystem::path(VANTOR_BENCH_SYSTEM_ROOT) /
                                                   "VantorLockScreen.appex"),
            {.attached = [](std::uint32_t, FileDescriptor) {}, .ended = [](const auto&) {}});
        host_ = std::move(started).value();
        client_ = xpc::XPCClient::create(
            loop_, host_->connect(), classes(), {classes().classNamed("WallpaperRemoteContextXPC")},
            {.called = [](auto, const auto&) { return std::nullopt; }, .disconnected = [] {}});
    }

    void call(WallpaperOperation operation, std::vector<ObjectRef> arguments = {}) {
        arguments.resize(static_cast<std::size_t>(info(operation).argumentCount));
        client_->call(operation, arguments,
                      [this](const xpc::CallResult& result) { loop_.stop(result.error ? 1 : 0); });
        if (loop_.run() != 0) {
            std::abort();
        }
    }

    FileDescriptor connect() { return host_->connect(); }

  private:
    TemporaryFolder folder_;
    MainLoop& loop_;
    std::unique_ptr<launch::LaunchHost> host_;
    std::unique_ptr<xpc::XPCClient> client_;
};

void launch(benchmark::State& state) {
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        Extension extension;
        extension.call(WallpaperOperation::isChoiceDownloaded);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
    }
}

UUID numbered(std::uint8_t number) {
    UUID identifier;
    identifier.bytes.back() = number;
    return identifier;
}

void acquire(benchmark::State& state) {
    Extension extension;
    const auto request = agent::makeCreationRequest(
        {.configuration = "plasma", .size = kSize, .directDisplayID = 1});
    std::uint8_t number = 0;
    // The first compiles the pipeline.
    extension.call(WallpaperOperation::acquire,
                   {agent::makeWallpaperID(numbered(number)), request});
    for (auto _ : state) {
        extension.call(WallpaperOperation::acquire,
                       {agent::makeWallpaperID(numbered(++number)), request});
    }
}

/// What an acquire cannot do without: one frame of its shader and one trivial call.
void frameAndCall(benchmark::State& state) {
    Extension extension;
    ShaderGPU& gpu = ShaderGPU::shared();
    const auto pipeline = gpu.pipeline("plasma", *ShaderCatalog::plasma.source);
    const auto texture =
        gpu.device()->newTexture({.pixelFormat = gpu::PixelFormat::bgra8Unorm,
                                  .width = static_cast<std::uint32_t>(kSize.width),
                                  .height = static_cast<std::uint32_t>(kSize.height),
                                  .usage = gpu::TextureUsage::renderTarget,
                                  .storageMode = gpu::StorageMode::shared});
    for (auto _ : state) {
        gpu::CommandBuffer* commands = gpu.queue()->commandBuffer();
        encodeShaderFrame(*commands, *gpu.device(), pipeline, *texture, ShaderUniforms(), 12);
        commands->commit();
        commands->waitUntilCompleted();
        extension.call(WallpaperOperation::isChoiceDownloaded);
    }
}

/// So many clients at once, each with its own thread and connection.
void requests(benchmark::State& state) {
    Extension extension;
    extension.call(WallpaperOperation::isChoiceDownloaded);
    std::vector<std::unique_ptr<BareClient>> clients;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        clients.push_back(std::make_unique<BareClient>(extension.connect()));
        clients.back()->call();
    }
    const int calls = kCallsOfOneConnection * 8 / static_cast<int>(state.range(0));
    for (auto _ : state) {
        std::vector<std::jthread> threads;
        for (const auto& client : clients) {
            threads.emplace_back([&client, calls] {
                for (int i = 0; i < calls; ++i) {
                    client->call();
                }
            });
        }
    }
    state.counters["requests_a_second"] =
        benchmark::Counter(static_cast<double>(calls) * static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(bareRoundTrip)->Name("service/round_trip/bare")->UseRealTime();
BENCHMARK(ownRoundTrip)->Name("service/round_trip/ours")->UseRealTime();
BENCHMARK(launch)
    ->Name("service/launch")
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(acquire)
    ->Name("service/acquire")
    ->UseRealTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(frameAndCall)
    ->Name("service/frame_and_call")
    ->UseRealTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(requests)
    ->Name("service/requests")
    ->Arg(1)
    ->Arg(8)
    ->Arg(64)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vantor
