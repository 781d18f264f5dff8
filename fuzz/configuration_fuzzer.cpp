// Reads any bytes as an agent.toml.

#include "agent/configuration/configuration_file.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto parsed =
        vantor::agent::parseConfiguration({reinterpret_cast<const char*>(data), size}, "file");
    // A mistake has a place; a rate that was read is one that can be kept.
    if (!parsed ? !parsed.error().starts_with("file:") : parsed->maxFps && !(*parsed->maxFps > 0)) {
        std::abort();
    }
    return 0;
}
