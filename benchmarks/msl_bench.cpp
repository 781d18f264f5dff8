// Compile time of the circuit-board shader: ours from the language itself, glslang from the GLSL
// that SPIRV-Cross makes of our module. "First" is a process's first compile, measured in fresh
// children.
#include <benchmark/benchmark.h>

#include <glslang/Public/ShaderLang.h>
#include <glslang/SPIRV/GlslangToSpv.h>
#include <spirv_cross_c.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "msl/msl.h"

namespace {

std::string source;
std::string glsl;

// Limits wide enough for any shader here; glslang only compares against them.
TBuiltInResource wideLimits() {
    TBuiltInResource limits{};
    auto* numbers = reinterpret_cast<int*>(&limits);
    for (size_t i = 0; i < offsetof(TBuiltInResource, limits) / sizeof(int); ++i) {
        numbers[i] = 4096;
    }
    limits.limits = {true, true, true, true, true, true, true, true, true};
    return limits;
}

size_t compileOurs() {
    const auto result = msl::compile(source);
    return result.module ? result.module->words.size() : 0;
}

// The whole road that glslang's users take, without the process-wide initialisation.
size_t compileGlslang() {
    static const TBuiltInResource limits = wideLimits();
    glslang::TShader shader(EShLangFragment);
    const char* text = glsl.c_str();
    shader.setStrings(&text, 1);
    shader.setEnvInput(glslang::EShSourceGlsl, EShLangFragment, glslang::EShClientVulkan, 100);
    shader.setEnvClient(glslang::EShClientVulkan, glslang::EShTargetVulkan_1_2);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_5);
    const auto messages = static_cast<EShMessages>(EShMsgSpvRules | EShMsgVulkanRules);
    if (!shader.parse(&limits, 450, false, messages)) {
        std::cerr << shader.getInfoLog();
        return 0;
    }
    glslang::TProgram program;
    program.addShader(&shader);
    if (!program.link(messages)) {
        return 0;
    }
    std::vector<unsigned int> words;
    glslang::GlslangToSpv(*program.getIntermediate(EShLangFragment), words);
    return words.size();
}

// Vulkan GLSL of the module's fragment function; empty where SPIRV-Cross fails.
std::string toGlsl(const msl::Module& module) {
    spvc_context context = nullptr;
    spvc_parsed_ir parsed = nullptr;
    spvc_compiler compiler = nullptr;
    spvc_compiler_options options = nullptr;
    const char* text = nullptr;
    std::string result;
    if (spvc_context_create(&context) != SPVC_SUCCESS) {
        return result;
    }
    if (spvc_context_parse_spirv(context, module.words.data(), module.words.size(), &parsed) ==
            SPVC_SUCCESS &&
        spvc_context_create_compiler(context, SPVC_BACKEND_GLSL, parsed,
                                     SPVC_CAPTURE_MODE_TAKE_OWNERSHIP, &compiler) == SPVC_SUCCESS &&
        spvc_compiler_set_entry_point(compiler, "f_main", SpvExecutionModelFragment) ==
            SPVC_SUCCESS &&
        spvc_compiler_create_compiler_options(compiler, &options) == SPVC_SUCCESS) {
        spvc_compiler_options_set_uint(options, SPVC_COMPILER_OPTION_GLSL_VERSION, 450);
        spvc_compiler_options_set_bool(options, SPVC_COMPILER_OPTION_GLSL_VULKAN_SEMANTICS, 1);
        spvc_compiler_install_compiler_options(compiler, options);
        if (spvc_compiler_compile(compiler, &text) == SPVC_SUCCESS) {
            result = text;
        }
    }
    spvc_context_destroy(context);
    return result;
}

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
        const std::string made = result.module ? toGlsl(*result.module) : std::string();
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
