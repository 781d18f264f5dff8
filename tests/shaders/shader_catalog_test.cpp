#include "shaders/shader_catalog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantor {
namespace {

std::string fileText(const std::string& name) {
    std::ifstream file(VANTOR_SHADER_SOURCES "/" + name + ".metal", std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The prelude with the fields of the whole uniform block in its structure.
std::string lengthenedPrelude() {
    std::string fields;
    for (const char* name :
         {"color1", "color2", "color3", "background", "params", "custom0", "custom1", "custom2",
          "custom3", "custom4", "custom5", "custom6", "custom7"}) {
        fields += std::string("    float4 ") + name + ";\n";
    }
    std::string text(BuiltIn::prelude);
    const std::string lastField = "a = unused\n";
    return text.insert(text.find(lastField) + lastField.size(), fields);
}

struct Source {
    std::string file;
    std::string_view text;
};

/// Every complete source of the library with the file that it is kept in.
std::vector<Source> completeSources() {
    std::vector<Source> sources = {
        {"matrix_rain", BuiltIn::matrixRain},
        {"rings", BuiltIn::rings},
        {"interference", BuiltIn::interference},
        {"spiral", BuiltIn::spiral},
        {"tunnel", BuiltIn::tunnel},
        {"cells", BuiltIn::cells},
    };
    const std::vector<std::string> files = {"elec_pcb",
                                            "elec_oscilloscope",
                                            "smoke",
                                            "nebula_orion",
                                            "nebula_milky_way",
                                            "planet_jupiter",
                                            "topo_contours",
                                            "topo_contours_dark",
                                            "topo_isometric",
                                            "aurora",
                                            "plasma"};
    for (std::size_t i = 0; i < ShaderCatalog::all.size(); ++i) {
        sources.push_back({files.at(i), ShaderCatalog::all[i].source.value_or("")});
    }
    return sources;
}

std::size_t count(std::string_view text, std::string_view what) {
    std::size_t found = 0;
    for (std::size_t at = text.find(what); at != std::string_view::npos;
         at = text.find(what, at + 1)) {
        ++found;
    }
    return found;
}

TEST(ShaderCatalog, OffersItsElevenEntriesInOrder) {
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"builtin.elec-pcb", "Electronic \xC2\xB7 PCB"},
        {"builtin.elec-oscilloscope", "Electronic \xC2\xB7 Scope"},
        {"builtin.smoke", "Smoke"},
        {"builtin.nebula-orion", "Nebula \xC2\xB7 Orion"},
        {"builtin.nebula-milky-way", "Nebula \xC2\xB7 Milky Way"},
        {"builtin.planet-jupiter", "Planet \xC2\xB7 Jupiter"},
        {"builtin.topo-contours", "Topo \xC2\xB7 Contours"},
        {"builtin.topo-contours-dark", "Topo \xC2\xB7 Contours Dark"},
        {"builtin.topo-isometric", "Topo \xC2\xB7 Relief"},
        {"aurora", "Aurora"},
        {"plasma", "Plasma"},
    };
    std::vector<std::pair<std::string, std::string>> offered;
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        offered.emplace_back(entry.id, entry.title);
    }
    EXPECT_EQ(offered, expected);
}

TEST(ShaderCatalog, IdentifiersAreUnique) {
    std::set<std::string_view> ids;
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        EXPECT_TRUE(ids.insert(entry.id).second) << entry.id;
    }
}

TEST(ShaderCatalog, NamedConstantsAreTheEntriesOfTheList) {
    const std::vector<const ShaderCatalog::Entry*> named = {
        &ShaderCatalog::elecPCB,        &ShaderCatalog::elecOscilloscope,
        &ShaderCatalog::smoke,          &ShaderCatalog::nebulaOrion,
        &ShaderCatalog::nebulaMilkyWay, &ShaderCatalog::planetJupiter,
        &ShaderCatalog::topoContours,   &ShaderCatalog::topoContoursDark,
        &ShaderCatalog::topoIsometric,  &ShaderCatalog::aurora,
        &ShaderCatalog::plasma,
    };
    std::vector<const ShaderCatalog::Entry*> listed;
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        listed.push_back(&entry);
    }
    EXPECT_EQ(named, listed);
}

TEST(ShaderCatalog, EntryIsFoundByItsExactIdentifier) {
    EXPECT_EQ(ShaderCatalog::entry("builtin.elec-pcb"), &ShaderCatalog::all.front());
    EXPECT_EQ(ShaderCatalog::entry("aurora"), &ShaderCatalog::aurora);
    EXPECT_EQ(ShaderCatalog::entry("plasma"), &ShaderCatalog::plasma);
}

TEST(ShaderCatalog, NearMissesOfAnIdentifierFindNothing) {
    for (const char* id : {"builtin.aurora", "Aurora", "builtin.plasma", "elec-pcb", "aurora ", "",
                           "BUILTIN.SMOKE", "Electronic \xC2\xB7 PCB"}) {
        EXPECT_EQ(ShaderCatalog::entry(id), nullptr) << id;
    }
}

TEST(ShaderCatalog, EveryEntryHasASource) {
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        EXPECT_TRUE(entry.source.has_value()) << entry.id;
    }
}

TEST(ShaderCatalog, ElectronicEntriesUseTheTextsOfMore) {
    EXPECT_EQ(ShaderCatalog::elecPCB.source, More::elecPCB);
    EXPECT_EQ(ShaderCatalog::elecOscilloscope.source, More::elecOscilloscope);
}

TEST(ShaderCatalog, SamplesAreNotInTheCatalog) {
    for (const std::string_view sample :
         {BuiltIn::matrixRain, BuiltIn::rings, BuiltIn::interference, BuiltIn::spiral,
          BuiltIn::tunnel, BuiltIn::cells}) {
        EXPECT_TRUE(std::none_of(ShaderCatalog::all.begin(), ShaderCatalog::all.end(),
                                 [&](const auto& entry) { return entry.source == sample; }));
    }
}

TEST(ShaderSources, AreEmbeddedByteForByte) {
    EXPECT_EQ(BuiltIn::prelude, fileText("prelude"));
    for (const Source& source : completeSources()) {
        EXPECT_EQ(source.text, fileText(source.file)) << source.file;
    }
}

TEST(ShaderSources, PreludeIs449BytesAndHoldsItsFourStepsInOrder) {
    EXPECT_EQ(BuiltIn::prelude.size(), 449U);
    std::size_t from = 0;
    for (const char* step :
         {"#include <metal_stdlib>\nusing namespace metal;", "struct Uniforms {",
          "float2 resolution;", "float  time;", "float  speed;",
          "float4 tint; // rgb used; a = unused", "struct VOut {", "float4 position [[position]];",
          "vertex VOut v_main(uint vid [[vertex_id]])",
          "// Oversized triangle covering the whole clip space.", "(vid << 1) & 2, vid & 2",
          "p * 2.0 - 1.0, 0.0, 1.0"}) {
        const std::size_t at = BuiltIn::prelude.find(step, from);
        ASSERT_NE(at, std::string_view::npos) << step;
        from = at;
    }
    EXPECT_EQ(BuiltIn::prelude.find("f_main"), std::string_view::npos);
}

TEST(ShaderSources, BeginWithThePreludeOrItsLengthenedForm) {
    const std::string lengthened = lengthenedPrelude();
    for (const Source& source : completeSources()) {
        EXPECT_TRUE(source.text.starts_with(BuiltIn::prelude) ||
                    source.text.starts_with(lengthened))
            << source.file;
    }
}

TEST(ShaderSources, HaveOneEntryPointOfEachStage) {
    for (const Source& source : completeSources()) {
        EXPECT_EQ(count(source.text, "v_main("), 1U) << source.file;
        EXPECT_EQ(count(source.text, "fragment float4 f_main("), 1U) << source.file;
        EXPECT_EQ(count(source.text, "constant Uniforms& u [[buffer(0)]]"), 1U) << source.file;
    }
}

TEST(ShaderSources, ReadTheTintsColourAndNeverItsAlpha) {
    for (const Source& source : completeSources()) {
        const std::size_t reads = count(source.text, "u.tint");
        EXPECT_GE(reads, 1U) << source.file;
        EXPECT_EQ(count(source.text, "u.tint.rgb"), reads) << source.file;
    }
}

TEST(ShaderSources, AreAsciiWithUnixLineEnds) {
    for (const Source& source : completeSources()) {
        EXPECT_TRUE(std::all_of(source.text.begin(), source.text.end(), [](char c) {
            return c == '\n' || (c >= ' ' && c <= '~');
        })) << source.file;
        EXPECT_EQ(source.text.back(), '\n') << source.file;
    }
}

} // namespace
} // namespace vantor
