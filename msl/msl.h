// The Metal Shading Language compiler: source text in, one SPIR-V module out.
//
// The module is SPIR-V 1.5 for Vulkan 1.2 and holds every vertex and fragment function of the
// source under its own name. Compilation never throws and keeps no state between calls; calls on
// different threads do not disturb each other.
//
// Where resources stand in the module:
//   descriptor set   0 for vertex functions, 1 for fragment functions
//   binding n        [[buffer(n)]], a storage buffer, laid out as Metal lays it out
//   binding 32 + n   [[texture(n)]], a sampled image without sampler
//   binding 64 + n   [[sampler(n)]]
//   binding 96 + k   the k-th constexpr sampler of the source; its options are in the entry point
//   binding 128 + k  the k-th resource that argument buffers hold; the entry point lists them
// Positions are written as the source computes them, with Metal's y axis upwards: the host draws
// with a viewport of negative height. [[position]] of a fragment function has its origin upper
// left. half is computed with the precision and range of float.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace msl {

inline constexpr uint32_t kVertexDescriptorSet = 0;
inline constexpr uint32_t kFragmentDescriptorSet = 1;
inline constexpr uint32_t kBufferBinding = 0;
inline constexpr uint32_t kTextureBinding = 32;
inline constexpr uint32_t kSamplerBinding = 64;
inline constexpr uint32_t kConstantSamplerBinding = 96;
inline constexpr uint32_t kMaxBuffers = 31;
inline constexpr uint32_t kMaxTextures = 32;
inline constexpr uint32_t kMaxSamplers = 16;
inline constexpr uint32_t kMaxConstantSamplers = 32;
inline constexpr uint32_t kArgumentBinding = 128;
inline constexpr uint32_t kMaxArguments = 256;

enum class Severity { note, warning, error };

struct Diagnostic {
    Severity severity = Severity::error;
    std::string file;
    uint32_t line = 0;   // from 1; 0 where there is no place in a file
    uint32_t column = 0; // from 1, in bytes
    std::string message;
    std::string sourceLine;
    uint32_t underlineLength = 1; // at least 1, never beyond the line's end
};

// "FILE:LINE:COLUMN: error: message", the source line, and a line with a caret and underline;
// each line ends with a line feed.
std::string toText(const Diagnostic& diagnostic);

enum class Stage { vertex, fragment };

struct BufferBinding {
    uint32_t index = 0; // the n of [[buffer(n)]]
    // Bytes of the referenced type; of one element where the parameter is a pointer.
    uint32_t size = 0;
    bool isArray = false; // declared as a pointer: any number of elements
    bool writable = false;
};

enum class TextureShape {
    texture1d,
    texture2d,
    texture3d,
    textureCube,
    texture2dArray,
    textureCubeArray,
    texture1dArray,
    texture2dMultisample,
    texture2dMultisampleArray,
    textureBuffer
};
enum class TextureComponent { floatComponent, intComponent, uintComponent };

struct TextureBinding {
    uint32_t index = 0; // the n of [[texture(n)]]
    TextureShape shape = TextureShape::texture2d;
    TextureComponent component = TextureComponent::floatComponent;
    bool depth = false;
    bool writable = false; // a storage image rather than a sampled one
};

struct SamplerBinding {
    uint32_t index = 0; // the n of [[sampler(n)]]
};

enum class SamplerAddress { clampToEdge, clampToZero, clampToBorder, repeat, mirroredRepeat };
enum class SamplerFilter { nearest, linear };
enum class SamplerMipFilter { none, nearest, linear };
enum class SamplerCompare {
    never,
    less,
    lessEqual,
    greater,
    greaterEqual,
    equal,
    notEqual,
    always
};
enum class SamplerBorder { transparentBlack, opaqueBlack, opaqueWhite };

// The options of a sampler written in the source, with Metal's defaults.
struct SamplerOptions {
    bool normalizedCoordinates = true;
    SamplerAddress sAddress = SamplerAddress::clampToEdge;
    SamplerAddress tAddress = SamplerAddress::clampToEdge;
    SamplerAddress rAddress = SamplerAddress::clampToEdge;
    SamplerFilter magFilter = SamplerFilter::nearest;
    SamplerFilter minFilter = SamplerFilter::nearest;
    SamplerMipFilter mipFilter = SamplerMipFilter::none;
    SamplerCompare compare = SamplerCompare::never;
    SamplerBorder border = SamplerBorder::transparentBlack;
    uint32_t maxAnisotropy = 1;
    float lodMin = 0.0F;
    float lodMax = 1000.0F;
    bool operator==(const SamplerOptions&) const = default;
};

struct ConstantSampler {
    uint32_t binding = 0; // the descriptor binding, kConstantSamplerBinding upwards
    SamplerOptions options;
};

enum class ArgumentKind { buffer, texture, sampler };

// A resource inside an argument buffer. It is bound like any other; the buffer itself holds the
// members that are no resources, at the places that Metal gives them.
struct ArgumentBinding {
    uint32_t buffer = 0;  // the n of the argument buffer's [[buffer(n)]]
    uint32_t id = 0;      // the n of its [[id(n)]]
    uint32_t binding = 0; // the descriptor binding, kArgumentBinding upwards
    ArgumentKind kind = ArgumentKind::buffer;
    uint32_t size = 0; // of one element, where it is a buffer
    bool writable = false;
    TextureBinding texture{}; // where it is a texture
};

struct EntryPoint {
    std::string name;
    Stage stage = Stage::fragment;
    std::vector<BufferBinding> buffers;
    std::vector<TextureBinding> textures;
    std::vector<SamplerBinding> samplers;
    std::vector<ConstantSampler> constantSamplers; // those the function uses
    std::vector<ArgumentBinding> arguments;        // what its argument buffers hold
};

enum class FunctionConstantType { boolean, signedInteger, unsignedInteger, number };

// A constant that is given when a pipeline is made: the specialisation constant of this number.
struct FunctionConstant {
    std::string name;
    uint32_t index = 0; // the n of [[function_constant(n)]]
    FunctionConstantType type = FunctionConstantType::boolean;
};

// The specialisation constant of this number plus n says whether function constant n is given.
inline constexpr uint32_t kFunctionConstantDefined = 65536;

struct Module {
    std::vector<uint32_t> words;
    std::vector<EntryPoint> entryPoints; // in the order of the source
    std::vector<FunctionConstant> constants{};
    bool usesInt64 = false; // needs the device feature shaderInt64
    // Needs subgroup operations in fragment functions: vote, arithmetic, ballot, shuffle, relative
    // shuffle and quad.
    bool usesSubgroups = false;
};

struct Options {
    std::string fileName = "source.metal";     // as diagnostics name it
    std::vector<std::string> includeFolders{}; // searched for quoted includes, in this order
};

struct CompileResult {
    std::optional<Module> module; // present exactly when no diagnostic is an error
    std::vector<Diagnostic> diagnostics;
};

CompileResult compile(std::string_view source, const Options& options = {});

} // namespace msl
