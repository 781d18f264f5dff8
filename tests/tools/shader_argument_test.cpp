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

TEST_F(ShaderArgumentTest, AnUnknownNameSaysWhatWasLookedForAndWhatWasMeant) {
    EXPECT_EQ(findShader("builtin.aurora").error(),
              "\"builtin.aurora\" is neither a catalog entry (see vantorctl list) nor a readable "
              "file: No such file or directory; did you mean \"aurora\"?");
    EXPECT_EQ(findShader("/missing/waves").error(),
              "\"/missing/waves\" is neither a catalog entry (see vantorctl list) nor a readable "
              "file: No such file or directory");
}

TEST_F(ShaderArgumentTest, AFileThatIsNoSourceTextIsRefusedByName) {
    const auto file = platform.bundle().homeDirectory() / "picture.metal";
    const struct {
        std::string content;
        std::string why;
    } files[] = {
        {"", "the file is empty or cannot be read"},
        {"\x89PNG\r\n", "the file is not UTF-8 text"},
        {std::string((1U << 20U) + 1, ' '), "file of 1048577 bytes exceeds the limit of 1048576"},
    };
    for (const auto& [content, why] : files) {
        std::ofstream(file, std::ios::binary) << content;
        EXPECT_EQ(findShader(file.string()).error(), file.string() + ": " + why);
    }
}

} // namespace
} // namespace vantor
