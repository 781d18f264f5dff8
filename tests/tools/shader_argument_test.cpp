#include "tools/shader_argument.h"

#include "shaders/shader_catalog.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vantor {
namespace {

class ShaderArgumentTest : public FakePlatformTest {};

TEST_F(ShaderArgumentTest, ACatalogIdentifierWinsOverAFile) {
    auto shader = findShader("plasma");
    ASSERT_TRUE(shader);
    EXPECT_EQ(shader->id, "plasma");
    EXPECT_EQ(shader->source, *ShaderCatalog::plasma.source);
}

TEST_F(ShaderArgumentTest, AFileIsNamedAfterItselfInTheState) {
    const auto file = platform.bundle().homeDirectory() / "waves.metal";
    std::ofstream(file) << "text";
    auto shader = findShader(file.string());
    ASSERT_TRUE(shader) << shader.error();
    EXPECT_EQ(shader->id, "file.waves");
    EXPECT_EQ(shader->source, "text");
    EXPECT_EQ(shader->name, file.string());
}

TEST_F(ShaderArgumentTest, AnUnknownNameSaysWhatWasLookedFor) {
    auto shader = findShader("builtin.aurora");
    ASSERT_FALSE(shader);
    EXPECT_EQ(shader.error(), "\"builtin.aurora\" is neither a catalog entry (see vantorctl list) "
                              "nor a readable file: No such file or directory");
}

} // namespace
} // namespace vantor
