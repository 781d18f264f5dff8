#include "shaders/audio_uniforms.h"

namespace vantor {

constinit const std::string_view AudioUniforms::msl =
    "struct AudioUniforms {\n"
    "    float  bands[32];\n"
    "    float4 levels;      // x bass, y mid, z treble, w level\n"
    "    float  beat;\n"
    "    float  bassTime;\n"
    "    float  levelTime;\n"
    "    float  midTime;\n"
    "    float4 beatAges;\n"
    "    float  active;\n"
    "};";

} // namespace vantor
