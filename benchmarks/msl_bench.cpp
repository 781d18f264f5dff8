// Compile time of the circuit-board shader: ours from the language itself, glslang from the GLSL
// that SPIRV-Cross makes of our module. "First" is a process's first compile, measured in fresh
// children.
#include <benchmark/benchmark.h>

#include <glslang/Public/ShaderLang.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "msl/msl.h"
#include "tests/support/foreign_compiler.h"

namespace {

std::string source;
std::string glsl;

size_t compileOurs() {
    const auto result = msl::compile(source);
    return result.module ? result.module->words.size() : 0;
}

// The whole road that glslang's users take, without the process-wide initialisation.
size_t compileGlslang() { return vantor::foreign::compileGLSL(glsl).size(); }

void runWarm(benchmark::State& state, size_t (*compile)()) {
    size_t words = compile();
    for (auto _ : state) {
        words = compile();
        benchmark::DoNotOptimize(words);
    }
    if (words == 0) {
        state.SkipWithError("the source does not compile");
    }
    state.counters["words"] = static_cast<double>(words);
}

// Seconds that one call takes in a child process; negative where it fails.
double inChild(void (*work)()) {
    int ends[2];
    if (pipe(ends) != 0) {
        return -1;
    }
    const pid_t child = fork();
    if (child == 0) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        const double seconds = taken.count();
        const bool written = write(ends[1], &seconds, sizeof(seconds)) == sizeof(seconds);
        _exit(written ? 0 : 1);
    }
    close(ends[1]);
    double seconds = -1;
    if (read(ends[0], &seconds, sizeof(seconds)) != sizeof(seconds)) {
        seconds = -1;
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? seconds : -1;
}

void runFirst(benchmark::State& state, void (*work)()) {
    for (auto _ : state) {
        const double seconds = inChild(work);
        if (seconds < 0) {
            state.SkipWithError("the child process fails");
            return;
        }
        state.SetIterationTime(seconds);
    }
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::ifstream stream(VANTOR_PCB_SOURCE);
    std::ostringstream text;
    text << stream.rdbuf();
    source = std::move(text).str();
    // First compiles are measured before this process has compiled anything, so the GLSL is made in
    // a child too.
    int ends[2];
    if (pipe(ends) != 0) {
        return 1;
    }
    const pid_t child = fork();
    if (child == 0) {
        const auto result = msl::compile(source);
        const std::string made =
            result.module ? vantor::foreign::toGLSL(*result.module) : std::string();
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
    char buffer[4096];
    for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof(buffer))) > 0;) {
        glsl.append(buffer, static_cast<size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        std::cerr << "msl_bench: " << VANTOR_PCB_SOURCE << " does not compile\n";
        return 1;
    }
    constexpr int kFirstRuns = 15;
    benchmark::RegisterBenchmark("msl/compile_pcb/ours_first",
                                 [](benchmark::State& state) {
                                     runFirst(state, [] {
                                         if (compileOurs() == 0) {
                                             _exit(1);
                                         }
                                     });
                                 })
        ->UseManualTime()
        ->Iterations(kFirstRuns)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("msl/compile_pcb/glslang_first",
                                 [](benchmark::State& state) {
                                     runFirst(state, [] {
                                         glslang::InitializeProcess();
                                         if (compileGlslang() == 0) {
                                             _exit(1);
                                         }
                                     });
                                 })
        ->UseManualTime()
        ->Iterations(kFirstRuns)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("msl/compile_pcb/ours_warm", [](benchmark::State& state) {
        runWarm(state, compileOurs);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("msl/compile_pcb/glslang_warm", [](benchmark::State& state) {
        glslang::InitializeProcess();
        runWarm(state, compileGlslang);
        glslang::FinalizeProcess();
    })->Unit(benchmark::kMillisecond);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
