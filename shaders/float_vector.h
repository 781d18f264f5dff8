#pragma once
// Vectors of 32-bit floats as they stand in the GPU's uniform blocks, packed without padding.

namespace vantor {

struct Float2 {
    float x = 0;
    float y = 0;
    bool operator==(const Float2&) const = default;
};

struct Float4 {
    float x = 0;
    float y = 0;
    float z = 0;
    float w = 0;
    bool operator==(const Float4&) const = default;
};

} // namespace vantor
