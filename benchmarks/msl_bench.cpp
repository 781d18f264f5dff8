// Compile time, allocations and size of wallpapers of about 1, 4 and 21 KB: ours from the language
// itself, glslang from the GLSL that SPIRV-Cross makes of our module. "First" is a process's first
// compile, measured in fresh children. How time grows with a source is measured on two of ten times
// the other's length.
#include <benchmark/benchmark.h>

#include <glslang/Public/ShaderLang.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>

#include "benchmarks/counted_allocations.h"
#include "msl/msl.h"
#include "tests/support/foreign_compiler.h"

namespace {

struct Subject {
    const char* name;
    const char* file;
    std::string source{};
    std::string glsl{}; // of the fragment function
};

std::array<Subject, 3> subjects{
    {{"1k", "tunnel"}, {"4k", "elec_oscilloscope"}, {"21k", "elec_pcb"}}};

size_t compileOurs(const Subject& subject) {
    const auto result = msl::compile(subject.source);
    return result.module ? result.module->words.size() : 0;
}

// The whole road that glslang's users take, without the process-wide initialisation.
size_t compileGlslang(const Subject& subject) {
    return vantor::foreign::compileGLSL(subject.glsl).size();
}

using Compile = size_t (*)(const Subject& subject);

// glslang's tables live as long as a benchmark that uses them: children of a process that has them
// would find them made.
class Tables {
  public:
    explicit Tables(Compile compile) : wanted_(compile == compileGlslang) {
        if (wanted_) {
            glslang::InitializeProcess();
        }
    }
    ~Tables() {
        if (wanted_) {
            glslang::FinalizeProcess();
        }
    }
    Tables(const Tables&) = delete;
    Tables& operator=(const Tables&) = delete;

  private:
    bool wanted_;
};

void runWarm(benchmark::State& state, Compile compile, const Subject& subject) {
    const Tables tables(compile);
    size_t words = compile(subject);
    vantor::bench::startCounting();
    compile(subject);
    const auto allocations = vantor::bench::stopCounting();
    for (auto _ : state) {
        words = compile(subject);
        benchmark::DoNotOptimize(words);
    }
    if (words == 0) {
        state.SkipWithError("the source does not compile");
    }
    state.counters["words"] = static_cast<double>(words);
    state.counters["allocations"] = static_cast<double>(allocations);
}

// What a child process writes; nothing where it fails.
std::string fromChild(const std::function<std::string()>& work) {
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        const std::string made = work();
        size_t written = 0;
        while (written < made.size()) {
            const auto count = write(ends[1], made.data() + written, made.size() - written);
            if (count <= 0) {
                _exit(1);
            }
            written += static_cast<size_t>(count);
        }
        _exit(made.empty() ? 1 : 0);
    }
    close(ends[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof(buffer))) > 0;) {
        text.append(buffer, static_cast<size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? text : std::string();
}

void runFirst(benchmark::State& state, Compile compile, const Subject& subject) {
    for (auto _ : state) {
        const std::string seconds = fromChild([&] {
            const auto begin = std::chrono::steady_clock::now();
            const Tables tables(compile);
            const size_t words = compile(subject);
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
            return words == 0 ? std::string() : std::to_string(taken.count());
        });
        if (seconds.empty()) {
            state.SkipWithError("the child process fails");
            return;
        }
        state.SetIterationTime(std::stod(seconds));
    }
}

// A source of so many functions, each called once.
std::string longSource(size_t bytes) {
    std::string functions = "#include <metal_stdlib>\nusing namespace metal;\n";
    std::string calls;
    for (int i = 0; functions.size() + calls.size() < bytes; ++i) {
        const std::string name = "wave" + std::to_string(i);
        functions +=
            "float2 " + name +
            "(float2 p, float t) {\n    float2 q = p * 1.5 + float2(t, 0.25);\n    if (q.x "
            "> q.y) { q = sin(q.yx) * 0.5; }\n    for (int i = 0; i < 3; ++i) { q += "
            "fract(q * p) - 0.5; }\n    return mix(p, q, saturate(t));\n}\n";
        calls += "    p = " + name + "(p, p.y);\n";
    }
    return functions + "fragment float4 f_main(float4 at [[position]]) {\n    float2 p = at.xy;\n" +
           calls + "    return float4(p, 0, 1);\n}\n";
}

void runLong(benchmark::State& state, size_t bytes) {
    const Subject subject{"long", "", longSource(bytes)};
    runWarm(state, compileOurs, subject);
    state.counters["us_per_kb"] = benchmark::Counter(
        static_cast<double>(subject.source.size()) / 1000.0 * 1e-6,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void registerSubject(const Subject& subject) {
    struct Road {
        const char* name;
        Compile compile;
    };
    for (const Road& road : {Road{"ours", compileOurs}, Road{"glslang", compileGlslang}}) {
        const std::string name =
            std::string("msl/compile_") + subject.name + "/" + std::string(road.name);
        constexpr int kFirstRuns = 15;
        const Compile compile = road.compile;
        benchmark::RegisterBenchmark(
            (name + "_first").c_str(),
            [&subject, compile](benchmark::State& state) { runFirst(state, compile, subject); })
            ->UseManualTime()
            ->Iterations(kFirstRuns)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "_warm").c_str(), [&subject,
                                                                compile](benchmark::State& state) {
            runWarm(state, compile, subject);
        })->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (Subject& subject : subjects) {
        std::ifstream stream(std::string(VANTOR_SHADER_FOLDER "/") + subject.file + ".metal");
        std::ostringstream text;
        text << stream.rdbuf();
        subject.source = std::move(text).str();
        // First compiles are measured before this process has compiled anything, so the GLSL is
        // made in a child too.
        subject.glsl = fromChild([&subject] {
            const auto result = msl::compile(subject.source);
            return result.module ? vantor::foreign::toGLSL(*result.module) : std::string();
        });
        if (subject.glsl.empty()) {
            std::cerr << "msl_bench: " << subject.file << " does not compile\n";
            return 1;
        }
        registerSubject(subject);
    }
    for (const auto& [name, bytes] : {std::pair{"20k", 20'000}, std::pair{"200k", 200'000}}) {
        benchmark::RegisterBenchmark((std::string("msl/long_") + name).c_str(),
                                     [bytes = bytes](benchmark::State& state) {
                                         runLong(state, static_cast<size_t>(bytes));
                                     })
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
