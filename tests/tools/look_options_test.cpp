#include "tools/look_options.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

namespace vantor {
namespace {

Result<ShaderUniforms, std::string> lookOf(const std::string& words) {
    CLI::App app;
    LookOptions options;
    options.addTo(app);
    app.parse(words, false);
    return options.look();
}

TEST(LookOptions, NoneGivenIsTheDefaultLook) {
    auto look = lookOf("");
    ASSERT_TRUE(look);
    EXPECT_EQ(*look, ShaderUniforms());
}

TEST(LookOptions, EveryOptionReachesItsField) {
    auto look = lookOf("--speed -0.5 --tint 1,0.5,0.25,1 --color1 0.1,0,0,1 --color2 0.2,0,0,1 "
                       "--color3 0.3,0,0,1 --background 0.4,0,0,1 --params 2,3,4,5 "
                       "--custom 0=0.5 --custom 31=-2");
    ASSERT_TRUE(look);
    EXPECT_EQ(look->speed, -0.5F);
    EXPECT_EQ(look->tint, (Float4{1, 0.5F, 0.25F, 1}));
    EXPECT_EQ(look->color1.x, 0.1F);
    EXPECT_EQ(look->color2.x, 0.2F);
    EXPECT_EQ(look->color3.x, 0.3F);
    EXPECT_EQ(look->background.x, 0.4F);
    EXPECT_EQ(look->params, (Float4{2, 3, 4, 5}));
    EXPECT_EQ(look->custom(0), 0.5F);
    EXPECT_EQ(look->custom(31), -2.0F);
}

TEST(LookOptions, AMalformedValueNamesItsOption) {
    EXPECT_EQ(lookOf("--tint 1,0,0").error(),
              "--tint \"1,0,0\" is not four finite numbers separated by commas");
    EXPECT_EQ(lookOf("--params 1,0,0,0,0").error(),
              "--params \"1,0,0,0,0\" is not four finite numbers separated by commas");
    EXPECT_EQ(lookOf("--color2 1,nan,0,0").error(),
              "--color2 \"1,nan,0,0\" is not four finite numbers separated by commas");
    EXPECT_EQ(lookOf("--custom 32=1").error(),
              "--custom \"32=1\" is not SLOT=VALUE with a slot from 0 to 31 and a finite value");
    EXPECT_EQ(lookOf("--custom 3").error(),
              "--custom \"3\" is not SLOT=VALUE with a slot from 0 to 31 and a finite value");
    EXPECT_FALSE(lookOf("--speed inf"));
}

} // namespace
} // namespace vantor
