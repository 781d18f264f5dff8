// What it costs to refuse encoded lists that are made to be costly. Each is read once in a child
// process: its time, and how much its peak of memory grows.

#include "platform/linux/archive/property_list_codec.h"
#include "tests/platform/linux/archive/archive_bytes.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

namespace vantor {
namespace {

struct Cost {
    double seconds = -1;
    double mebibytes = 0;
    bool refused = false;
};

double peakMebibytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

Cost read(const Bytes& bytes) {
    const double before = peakMebibytes();
    const auto begin = std::chrono::steady_clock::now();
    const auto list = PropertyListCodec().read(bytes);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    return {.seconds = taken.count(),
            .mebibytes = peakMebibytes() - before,
            .refused = !list && !list.error().message.empty()};
}

Cost readInChild(const Bytes& bytes) {
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        const Cost cost = read(bytes);
        _exit(write(ends[1], &cost, sizeof(cost)) == sizeof(cost) ? 0 : 1);
    }
    close(ends[1]);
    Cost cost;
    if (::read(ends[0], &cost, sizeof(cost)) != sizeof(cost)) {
        cost = {};
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return cost;
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string out;
    out.reserve(text.size() * count);
    for (std::size_t index = 0; index < count; ++index) {
        out += text;
    }
    return out;
}

constexpr std::size_t kLevels = 500'000;

Bytes nestedBinary() {
    RawBinaryList list(4);
    for (std::uint32_t level = 1; level < kLevels; ++level) {
        list.object({0xa1, static_cast<std::uint8_t>(level >> 24),
                     static_cast<std::uint8_t>(level >> 16), static_cast<std::uint8_t>(level >> 8),
                     static_cast<std::uint8_t>(level)});
    }
    return list.object({0x08}).finish();
}

Bytes nestedXML() { return bytesOf("<plist>" + repeated("<array>", kLevels)); }

Bytes nestedText() { return bytesOf(std::string(kLevels, '(')); }

/// Fewer levels than the limit, so that every one of them is read.
Bytes laughs() {
    RawBinaryList list;
    for (std::uint8_t level = 1; level < 40; ++level) {
        list.object({0xaa, level, level, level, level, level, level, level, level, level, level});
    }
    return list.object({0x52, 'h', 'a'}).finish();
}

Bytes laughingText() {
    RawBinaryList list;
    std::vector<std::uint8_t> text{0x5f, 0x12, 0x00, 0x10, 0x00, 0x00};
    text.resize(text.size() + (1U << 20), 'x');
    list.object({0xae, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
    list.object({0xae, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2});
    return list.object(std::move(text)).finish();
}

const std::vector<std::pair<const char*, Bytes>>& hostileLists() {
    static const std::vector<std::pair<const char*, Bytes>> kLists{
        {"nested_binary", nestedBinary()},
        {"nested_xml", nestedXML()},
        {"nested_text", nestedText()},
        {"cycle", RawBinaryList().object({0xa1, 1}).object({0xa1, 0}).finish()},
        {"shared_arrays", laughs()},
        {"shared_text", laughingText()},
        {"object_count", RawBinaryList().object({0x08}).finish(0, std::uint64_t{1} << 63)},
        {"offset_past_end", RawBinaryList().objectAt(1U << 20).finish()},
        {"two_gibibytes", RawBinaryList().object({0x4f, 0x12, 0x80, 0, 0, 0}).finish()},
    };
    return kLists;
}

void refuse(benchmark::State& state, const Bytes& bytes) {
    double mebibytes = 0;
    for (auto _ : state) {
        const Cost cost = readInChild(bytes);
        if (cost.seconds < 0 || !cost.refused) {
            state.SkipWithError("the list is not refused");
            return;
        }
        mebibytes = std::max(mebibytes, cost.mebibytes);
        state.SetIterationTime(cost.seconds);
    }
    state.counters["mebibytes"] = mebibytes;
}

} // namespace
} // namespace vantor

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (const auto& [name, bytes] : vantor::hostileLists()) {
        benchmark::RegisterBenchmark(("hostile_list/" + std::string(name)).c_str(), vantor::refuse,
                                     bytes)
            ->UseManualTime()
            ->Iterations(3)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
