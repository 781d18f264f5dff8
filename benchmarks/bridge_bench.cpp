// The wire: the picker's view models as archive bytes, and a creation request read from them.
// Libplist writes and reads the tree of the very same archives. GNUstep's Foundation and Python's
// plistlib time themselves in processes of their own.

#include "agent/kit/kit_classes.h"
#include "agent/kit/requests.h"
#include "benchmarks/counted_allocations.h"
#include "bridge/carrier.h"
#include "bridge/request_decoding.h"
#include "bridge/settings_view_models.h"
#include "platform/linux/archive/archive_keyed_archiving.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/property_list_codec.h"
#include "platform/linux/archive/wire_object.h"
#include "tests/support/kit_payloads.h"
#include "tests/support/temporary_folder.h"

#include <benchmark/benchmark.h>
#include <plist/plist.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

namespace vantor {
namespace {

/// As large as the extension's own: twelve items, for desktop and screen saver.
const SettingsViewModels& picker() {
    static const SettingsViewModels kModels = [] {
        SettingsViewModel model;
        SettingsGroup group = fullGroup();
        group.items.assign(12, fullItem());
        for (std::size_t index = 0; index < group.items.size(); ++index) {
            SettingsItem& item = group.items[index];
            const std::string name = "wallpaper-" + std::to_string(index);
            const std::string file = "/home/user/Library/Caches/Thumbnails/" + name + ".png";
            item.id.id = name;
            item.localizedName = "Wallpaper " + std::to_string(index);
            item.thumbnail = item.choice.thumbnail = Thumbnail::image(file);
            item.choice.id.descriptor.configuration = Bytes(name.begin(), name.end());
            item.sortOrder = static_cast<std::int64_t>(index);
        }
        model.groups.push_back(std::move(group));
        return SettingsViewModels{.desktop = model, .screenSaver = model};
    }();
    return kModels;
}

Bytes encode() {
    const auto graph = encodeRecord(picker());
    return ArchiveKeyedArchiving()
        .archiveRootObject(PrivateBridge::Carrier::kClassName,
                           [&](KeyedEncoder& encoder) {
                               static_cast<void>(encoder.encodeEncodable(
                                   graph.value(), SettingsViewModels::kPayloadName));
                           })
        .value();
}

Bytes requestArchive() {
    const ObjectRef request = agent::makeCreationRequest({.configuration = "match-desktop",
                                                          .size = {2560, 1440},
                                                          .scaleFactor = 2,
                                                          .directDisplayID = 7,
                                                          .presentationMode = "locked",
                                                          .cacheDirectory = "file:///tmp/cache/"});
    return archiveObject(*request).value();
}

struct Tree {
    explicit Tree(const Bytes& bytes) {
        plist_from_bin(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::uint32_t>(bytes.size()), &root);
    }
    ~Tree() { plist_free(root); }
    plist_t root = nullptr;
};

void encodeOurs(benchmark::State& state) {
    Bytes bytes = encode();
    for (auto _ : state) {
        bytes = encode();
        benchmark::DoNotOptimize(bytes.data());
    }
    bench::startCounting();
    bytes = encode();
    state.counters["allocations"] = static_cast<double>(bench::stopCounting());
    state.counters["bytes"] = static_cast<double>(bytes.size());
}

void encodeLibplist(benchmark::State& state) {
    const Tree tree(encode());
    for (auto _ : state) {
        char* out = nullptr;
        std::uint32_t length = 0;
        plist_to_bin(tree.root, &out, &length);
        benchmark::DoNotOptimize(out);
        if (length == 0) {
            state.SkipWithError("libplist writes nothing");
        }
        plist_to_bin_free(out);
    }
}

void decodeOurs(benchmark::State& state) {
    const Bytes bytes = requestArchive();
    ClassRegistry registry;
    agent::registerKitClasses(registry);
    const std::array allowed{agent::kitClass("WallpaperCreationRequestXPC")};
    for (auto _ : state) {
        const auto object = unarchiveObject(bytes, allowed, registry);
        const auto creation = PrivateBridge::parseCreation(object.value()->reflect());
        if (creation.displayID != 7U) {
            state.SkipWithError("the request is misread");
        }
    }
}

void decodeLibplist(benchmark::State& state) {
    const Bytes bytes = requestArchive();
    for (auto _ : state) {
        const Tree tree(bytes);
        benchmark::DoNotOptimize(tree.root);
        if (tree.root == nullptr) {
            state.SkipWithError("libplist reads nothing");
        }
    }
}

/// The first line that a command prints, given these bytes; seconds or a size.
double answer(const std::string& command, const Bytes& input) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "input";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()),
               static_cast<std::streamsize>(input.size()));
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
        popen((command + " <" + file.native()).c_str(), "r"), pclose);
    double value = -1;
    return pipe && std::fscanf(pipe.get(), "%lf", &value) == 1 ? value : -1;
}

void elsewhere(benchmark::State& state, const std::string& command, const Bytes& input) {
    for (auto _ : state) {
        const double seconds = answer(command, input);
        if (seconds < 0) {
            state.SkipWithError("the other program fails");
            return;
        }
        state.SetIterationTime(seconds);
    }
}

const std::string kTimeGNUstep = std::string(GNUSTEP_ARCHIVER) + " time";
constexpr const char* kTimePlistlib =
    "python3 -c 'import plistlib, sys, timeit\n"
    "data = sys.stdin.buffer.read()\n"
    "tree = plistlib.loads(data)\n"
    "work = {\"write\": lambda: plistlib.dumps(tree, fmt=plistlib.FMT_BINARY, sort_keys=False),\n"
    "        \"read\": lambda: plistlib.loads(data)}[sys.argv[1]]\n"
    "print(min(timeit.repeat(work, number=20, repeat=3)) / 20)' ";

/// The graph of the picker as a plain list, which GNUstep turns into objects and archives.
Bytes pickerGraph() { return PropertyListCodec().writeBinary(encodeRecord(picker()).value()); }

void foreignBytes(benchmark::State& state) {
    double bytes = 0;
    for (auto _ : state) {
        bytes = answer("{ " + std::string(GNUSTEP_ARCHIVER) +
                           " write VantorXPCCarrier WallpaperSettingsViewModels | wc -c; }",
                       pickerGraph());
    }
    state.counters["bytes"] = bytes;
}

} // namespace
} // namespace vantor

int main(int argc, char** argv) {
    using namespace vantor;
    benchmark::Initialize(&argc, argv);
    const std::string picker = " VantorXPCCarrier WallpaperSettingsViewModels";
    const auto inProcess = [](const char* name, void (*work)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, work)->Unit(benchmark::kMicrosecond);
    };
    const auto inAnother = [](const char* name, const std::string& command, const Bytes& input) {
        benchmark::RegisterBenchmark(name, elsewhere, command, input)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMicrosecond);
    };
    inProcess("bridge/encode_picker/ours", encodeOurs);
    inProcess("bridge/encode_picker/libplist", encodeLibplist);
    inAnother("bridge/encode_picker/gnustep", kTimeGNUstep + "-write" + picker, pickerGraph());
    inAnother("bridge/encode_picker/plistlib", std::string(kTimePlistlib) + "write", encode());
    inProcess("bridge/decode_request/ours", decodeOurs);
    inProcess("bridge/decode_request/libplist", decodeLibplist);
    inAnother("bridge/decode_request/gnustep",
              kTimeGNUstep + "-read WallpaperCreationRequestXPC WallpaperCreationRequest",
              requestArchive());
    inAnother("bridge/decode_request/plistlib", std::string(kTimePlistlib) + "read",
              requestArchive());
    benchmark::RegisterBenchmark("bridge/picker_bytes/gnustep", foreignBytes)->Iterations(1);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
