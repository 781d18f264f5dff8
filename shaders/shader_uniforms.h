#pragma once
// The uniform block of every shader, and the look: the part of it that a user chooses.

#include "platform/property_list.h"
#include "shaders/float_vector.h"

#include <cstddef>
#include <type_traits>

namespace vantor {

/// Fragment buffer 0 of every shader, byte for byte: 240 bytes of 32-bit floats without gaps.
/// Colours are red, green, blue, alpha in 0 to 1, though nothing clamps them.
struct ShaderUniforms {
    /// Number of scalar custom slots. Slot i is component i mod 4 of vector custom(i / 4).
    static constexpr int customSlotCount = 32;

    Float2 resolution;  ///< Size of the drawable in pixels.
    float time = 0.0F;  ///< Seconds since the surface's clock started.
    float speed = 1.0F; ///< Animation rate; 0 stands still, negative runs backwards.
    Float4 tint{1.0F, 1.0F, 1.0F, 1.0F}; ///< Multiplies the picture's rgb; alpha is not used.
    Float4 color1{0.69F, 0.42F, 1.0F, 1.0F};
    Float4 color2{0.31F, 0.84F, 1.0F, 1.0F};
    Float4 color3{0.36F, 0.36F, 0.94F, 1.0F};
    Float4 background{0.02F, 0.024F, 0.04F, 1.0F};
    Float4 params{1.0F, 0.0F, 0.0F, 0.0F}; ///< What they mean is each shader's own.
    Float4 custom0;
    Float4 custom1;
    Float4 custom2;
    Float4 custom3;
    Float4 custom4;
    Float4 custom5;
    Float4 custom6;
    Float4 custom7;

    /// The defaults, with resolution (0, 0) and time 0.
    ShaderUniforms() = default;
    /// The defaults, for one frame of `resolution` pixels at `time` seconds.
    ShaderUniforms(Float2 resolution, float time);

    /// The block that a look dictionary describes, with resolution (0, 0) and time 0. Never fails:
    /// "speed" takes the first of at least one number; "tint", "color1", "color2", "color3",
    /// "background" and "params" take exactly four, "custom" exactly 32. A value of another shape,
    /// or holding a number that is not finite, leaves its field at the default. Numbers are
    /// narrowed from double: beyond the range of float a vector's component becomes infinite,
    /// while a custom slot keeps 0. Booleans count as 0 and 1. Other keys are ignored.
    static ShaderUniforms fromLookPlist(const PropertyListDictionary& look);

    /// The look of this block: exactly the eight keys that `fromLookPlist` reads, each an array of
    /// doubles. Resolution and time are no part of it.
    PropertyListDictionary lookPlist() const;

    /// The value of a custom slot; 0 outside 0 to 31.
    float custom(int slot) const;
    /// Changes a custom slot. Outside 0 to 31, or with a value that is not finite, changes nothing.
    void setCustom(int slot, float value);

    bool operator==(const ShaderUniforms&) const = default;

  private:
    static Float4 ShaderUniforms::*customPath(int vector);
};

static_assert(std::is_trivially_copyable_v<ShaderUniforms>);
static_assert(std::is_standard_layout_v<ShaderUniforms>);
static_assert(sizeof(ShaderUniforms) == 240);
static_assert(offsetof(ShaderUniforms, resolution) == 0);
static_assert(offsetof(ShaderUniforms, time) == 8);
static_assert(offsetof(ShaderUniforms, speed) == 12);
static_assert(offsetof(ShaderUniforms, tint) == 16);
static_assert(offsetof(ShaderUniforms, color1) == 32);
static_assert(offsetof(ShaderUniforms, color2) == 48);
static_assert(offsetof(ShaderUniforms, color3) == 64);
static_assert(offsetof(ShaderUniforms, background) == 80);
static_assert(offsetof(ShaderUniforms, params) == 96);
static_assert(offsetof(ShaderUniforms, custom0) == 112);
static_assert(offsetof(ShaderUniforms, custom1) == 128);
static_assert(offsetof(ShaderUniforms, custom2) == 144);
static_assert(offsetof(ShaderUniforms, custom3) == 160);
static_assert(offsetof(ShaderUniforms, custom4) == 176);
static_assert(offsetof(ShaderUniforms, custom5) == 192);
static_assert(offsetof(ShaderUniforms, custom6) == 208);
static_assert(offsetof(ShaderUniforms, custom7) == 224);

} // namespace vantor
