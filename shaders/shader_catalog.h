#pragma once
// The wallpapers that can be shown, and the shader library's plain samples. The texts stand in
// shaders/sources and are embedded byte for byte when the program is built.

#include <optional>
#include <span>
#include <string_view>

namespace vantor {

/// The fixed list of wallpapers. Everything here is constant and lives as long as the process.
namespace ShaderCatalog {

struct Entry {
    /// Key in the state file, in settings choices and in thumbnail file names. Unique.
    std::string_view id;
    /// Shown to the user, UTF-8.
    std::string_view title;
    /// The complete Metal Shading Language text, or nothing when none is at hand.
    std::optional<std::string_view> source;
};

extern const Entry& elecPCB;
extern const Entry& elecOscilloscope;
extern const Entry& smoke;
extern const Entry& nebulaOrion;
extern const Entry& nebulaMilkyWay;
extern const Entry& planetJupiter;
extern const Entry& topoContours;
extern const Entry& topoContoursDark;
extern const Entry& topoIsometric;
extern const Entry& aurora;
extern const Entry& plasma;

/// All entries, in the order in which they are offered.
extern const std::span<const Entry> all;

/// The entry whose identifier equals `id`, letter case included, or null.
const Entry* entry(std::string_view id);

} // namespace ShaderCatalog

/// Plain sample sources, complete units each; none is in the catalog.
namespace BuiltIn {

/// What every source begins with; a source that reads the whole uniform block lengthens the
/// structure. Not a complete unit: it has no fragment entry point.
extern const std::string_view prelude;
extern const std::string_view matrixRain;
extern const std::string_view rings;
extern const std::string_view interference;
extern const std::string_view spiral;
extern const std::string_view tunnel;
extern const std::string_view cells;

} // namespace BuiltIn

/// The electronics sources that the catalog uses.
namespace More {

extern const std::string_view elecPCB;
extern const std::string_view elecOscilloscope;

} // namespace More

} // namespace vantor
