#include "shaders/shader_catalog.h"

#include "shaders/embedded_sources.h"

#include <algorithm>
#include <array>

namespace vantor {

namespace {

using ShaderCatalog::Entry;

struct StoredSource {
    std::string_view id;
    std::string_view text;
};

/// The texts of the entries that are not written out in `More`.
constexpr std::array kSourceStore = {
    StoredSource{"builtin.smoke", embedded::smoke},
    StoredSource{"builtin.nebula-orion", embedded::nebula_orion},
    StoredSource{"builtin.nebula-milky-way", embedded::nebula_milky_way},
    StoredSource{"builtin.planet-jupiter", embedded::planet_jupiter},
    StoredSource{"builtin.topo-contours", embedded::topo_contours},
    StoredSource{"builtin.topo-contours-dark", embedded::topo_contours_dark},
    StoredSource{"builtin.topo-isometric", embedded::topo_isometric},
    StoredSource{"aurora", embedded::aurora},
    StoredSource{"plasma", embedded::plasma},
};

constexpr Entry stored(std::string_view id, std::string_view title) {
    for (const StoredSource& source : kSourceStore) {
        if (source.id == id) {
            return {.id = id, .title = title, .source = source.text};
        }
    }
    return {.id = id, .title = title, .source = std::nullopt};
}

constexpr std::array kEntries = {
    Entry{.id = "builtin.elec-pcb", .title = "Electronic \u00B7 PCB", .source = embedded::elec_pcb},
    Entry{.id = "builtin.elec-oscilloscope",
          .title = "Electronic \u00B7 Scope",
          .source = embedded::elec_oscilloscope},
    stored("builtin.smoke", "Smoke"),
    stored("builtin.nebula-orion", "Nebula \u00B7 Orion"),
    stored("builtin.nebula-milky-way", "Nebula \u00B7 Milky Way"),
    stored("builtin.planet-jupiter", "Planet \u00B7 Jupiter"),
    stored("builtin.topo-contours", "Topo \u00B7 Contours"),
    stored("builtin.topo-contours-dark", "Topo \u00B7 Contours Dark"),
    stored("builtin.topo-isometric", "Topo \u00B7 Relief"),
    stored("aurora", "Aurora"),
    stored("plasma", "Plasma"),
};

} // namespace

// Constant initialisation throughout: other files' static objects may use the catalog.
namespace ShaderCatalog {

constinit const Entry& elecPCB = kEntries[0];
constinit const Entry& elecOscilloscope = kEntries[1];
constinit const Entry& smoke = kEntries[2];
constinit const Entry& nebulaOrion = kEntries[3];
constinit const Entry& nebulaMilkyWay = kEntries[4];
constinit const Entry& planetJupiter = kEntries[5];
constinit const Entry& topoContours = kEntries[6];
constinit const Entry& topoContoursDark = kEntries[7];
constinit const Entry& topoIsometric = kEntries[8];
constinit const Entry& aurora = kEntries[9];
constinit const Entry& plasma = kEntries[10];

constinit const std::span<const Entry> all = kEntries;

const Entry* entry(std::string_view id) {
    const auto it = std::find_if(kEntries.begin(), kEntries.end(),
                                 [id](const Entry& candidate) { return candidate.id == id; });
    return it == kEntries.end() ? nullptr : &*it;
}

} // namespace ShaderCatalog

namespace BuiltIn {

constinit const std::string_view prelude = embedded::prelude;
constinit const std::string_view matrixRain = embedded::matrix_rain;
constinit const std::string_view rings = embedded::rings;
constinit const std::string_view interference = embedded::interference;
constinit const std::string_view spiral = embedded::spiral;
constinit const std::string_view tunnel = embedded::tunnel;
constinit const std::string_view cells = embedded::cells;

} // namespace BuiltIn

namespace More {

constinit const std::string_view elecPCB = embedded::elec_pcb;
constinit const std::string_view elecOscilloscope = embedded::elec_oscilloscope;

} // namespace More

} // namespace vantor
