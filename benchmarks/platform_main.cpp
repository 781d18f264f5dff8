// The main function of benchmarks that run on the installed platform.

#include "platform/platform.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    vantor::installPlatform(&vantor::systemPlatform());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    // Nothing is torn down: the GPU's threads live as long as the process.
    std::fflush(nullptr);
    std::_Exit(0);
}
