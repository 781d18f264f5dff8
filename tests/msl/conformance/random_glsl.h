// Random GLSL fragment shaders, well typed and free of undefined behaviour.
#pragma once

#include <cstdint>
#include <string>

namespace msl::tests {

struct RandomGlsl {
    std::string functions;
    std::string body; // assigns `color`; sees what the differential test declares
};

// The same for the same seed.
RandomGlsl randomGlsl(uint32_t seed);

} // namespace msl::tests
