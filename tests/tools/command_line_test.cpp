#include "tools/command_line.h"

#include "shaders/shader_catalog.h"
#include "tests/tools/command_line_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST_F(CommandLineTest, EveryCommandOfTheTableHasItsHelp) {
    for (const CommandRow& row : commandTable()) {
        const Outcome outcome = run({row.name, "--help"});
        EXPECT_EQ(outcome.status, ExitStatus::done) << row.name;
        EXPECT_THAT(outcome.out, StartsWith(row.summary));
        EXPECT_THAT(outcome.out, HasSubstr("Exit status: 0 done"));
        EXPECT_EQ(outcome.err, "");
    }
}

TEST_F(CommandLineTest, WrongUsageHasItsOwnStatusAndChangesNothing) {
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"--unknown"},
        {"lst"},
        {"set"},
        {"set", "plasma"},
        {"set", "--display", "1"},
        {"set", "--display", "one", "plasma"},
        {"set", "--display", "-1", "plasma"},
        {"set", "--display", "4294967296", "plasma"},
        {"set", "--display", "1", "plasma", "aurora"},
        {"set", "--display", "1", "plasma", "--speed", "fast"},
        {"set", "--display", "1", "plasma", "--tint", "1,2"},
        {"unset"},
        {"main"},
        {"main", "1", "--none"},
        {"main", "1.5"},
        {"non-shader"},
        {"render", "plasma"},
        {"render", "plasma", "-o", "p.png", "--size", "10"},
        {"render", "plasma", "-o", "p.png", "--size", "0x10"},
        {"render", "plasma", "-o", "p.png", "--size", "10x16385"},
        {"render", "plasma", "-o", "p.png", "--time", "1e39"},
        {"gallery"},
        {"gallery", "-o", "g.html", "--size", "10x"},
        {"check"},
        {"watch", "file.metal"},
    };
    for (const auto& words : wrong) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, ExitStatus::usage) << testing::PrintToString(words);
        EXPECT_NE(outcome.err, "") << testing::PrintToString(words);
        EXPECT_EQ(outcome.out, "") << testing::PrintToString(words);
    }
    EXPECT_FALSE(exists(appStateURL(platform)));
    EXPECT_THAT(platform.notifications().posted, IsEmpty());
}

TEST_F(CommandLineTest, AMisspeltCommandGetsAdvice) {
    EXPECT_EQ(run({"lst"}).err,
              "\"lst\" is no command; did you mean \"list\"? (see vantorctl --help)\n");
    EXPECT_EQ(run({"frobnicate"}).err, "\"frobnicate\" is no command (see vantorctl --help)\n");
}

TEST_F(CommandLineTest, ListPrintsTheCatalogInItsOrder) {
    const std::string table = run({"list"}).out;
    const auto json = nlohmann::json::parse(run({"list", "--json"}).out);
    ASSERT_EQ(json.size(), ShaderCatalog::all.size());
    std::size_t at = 0;
    for (std::size_t i = 0; i < ShaderCatalog::all.size(); ++i) {
        const ShaderCatalog::Entry& entry = ShaderCatalog::all[i];
        at = table.find(std::string(entry.id) + "  ", at);
        ASSERT_NE(at, std::string::npos) << entry.id;
        at = table.find(std::string(entry.title) + "\n", at);
        ASSERT_NE(at, std::string::npos) << entry.id;
        EXPECT_EQ(json[i]["id"], entry.id);
        EXPECT_EQ(json[i]["title"], entry.title);
    }
}

TEST_F(CommandLineTest, SetWritesTheStateAndTellsTheExtension) {
    const Outcome outcome = run({"set", "--display", "2", "plasma", "--speed", "0.5"});
    EXPECT_EQ(outcome.status, ExitStatus::done);
    EXPECT_EQ(outcome.out, "display 2 shows plasma\n");
    EXPECT_EQ(outcome.err, "");
    const Resolved shown = desktop().displays().at("2");
    EXPECT_EQ(shown.source, *ShaderCatalog::plasma.source);
    EXPECT_EQ(shown.uniforms.speed, 0.5F);
    EXPECT_THAT(platform.notifications().posted, ElementsAre(kChanged));
}

TEST_F(CommandLineTest, SetRefusesAShaderThatDoesNotCompileUnlessToldNotToCheck) {
    const auto broken = write("broken.metal", "#error v_main f_main").string();
    const Outcome refused = run({"set", "--display", "1", broken});
    EXPECT_EQ(refused.status, ExitStatus::failed);
    EXPECT_THAT(refused.err, StartsWith(broken + ":1:2: error: "));
    EXPECT_FALSE(exists(appStateURL(platform)));
    EXPECT_EQ(run({"set", "--display", "1", broken, "--no-check", "--quiet"}).out, "");
    EXPECT_EQ(desktop().displays().at("1").source, "#error v_main f_main");
}

TEST_F(CommandLineTest, NobodyToTellIsSaidAndIsNoFailureOfAChange) {
    platform.notifications().reachable = false;
    const Outcome set = run({"set", "--display", "1", "plasma"});
    EXPECT_EQ(set.status, ExitStatus::done);
    EXPECT_THAT(set.err, StartsWith("nobody could be told: there is no session bus"));
    EXPECT_EQ(desktop().displays().size(), 1U);
    EXPECT_EQ(run({"notify"}).status, ExitStatus::failed);
}

TEST_F(CommandLineTest, NotifyTellsTheExtensionAndWritesNothing) {
    EXPECT_EQ(run({"notify"}).status, ExitStatus::done);
    EXPECT_THAT(platform.notifications().posted, ElementsAre(kChanged));
    EXPECT_FALSE(exists(appStateURL(platform)));
}

TEST_F(CommandLineTest, UnsetMainAndNonShaderChangeTheState) {
    run({"set", "--display", "1", "plasma"});
    run({"set", "--display", "2", "aurora"});
    EXPECT_EQ(run({"main", "2"}).out, "display 2 is the main one\n");
    EXPECT_EQ(desktop().main(), "2");
    EXPECT_EQ(run({"non-shader", "1"}).out, "display 1 shows no shader\n");
    EXPECT_TRUE(desktop().isNonShader(1));
    EXPECT_EQ(run({"non-shader", "1", "--off"}).out, "display 1 may show a shader\n");
    EXPECT_FALSE(desktop().isNonShader(1));
    EXPECT_EQ(run({"unset", "1"}).out, "display 1 has no shader of its own\n");
    EXPECT_EQ(desktop().displays().size(), 1U);
    EXPECT_EQ(run({"main", "--none"}).out, "no display is the main one\n");
    EXPECT_EQ(desktop().main(), std::nullopt);
    EXPECT_EQ(platform.notifications().posted.size(), 7U);
}

TEST_F(CommandLineTest, AChangeThatChangesNothingIsAFailureAndTellsNobody) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"unset", "1"}, {"non-shader", "1", "--off"}}) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, ExitStatus::failed);
        EXPECT_THAT(outcome.err, testing::EndsWith("; nothing changes\n"));
    }
    EXPECT_THAT(platform.notifications().posted, IsEmpty());
    EXPECT_FALSE(exists(appStateURL(platform)));
}

TEST_F(CommandLineTest, ShowPrintsWhatTheExtensionWouldShow) {
    EXPECT_EQ(run({"show"}).out, appStateURL(platform).string() + "\nno display has a shader\n");
    run({"set", "--display", "10", "plasma", "--tint", "1,0.5,0.25,1", "--custom", "3=1.5"});
    run({"set", "--display", "9", "aurora"});
    run({"main", "9"});
    run({"non-shader", "12"});
    const auto bytesOf = [](const ShaderCatalog::Entry& entry) {
        return std::to_string(entry.source->size()) + " bytes of source\n";
    };
    EXPECT_EQ(run({"show"}).out, appStateURL(platform).string() +
                                     "\nmain display 9\ndisplays without a shader 12\n"
                                     "display 9  aurora  " +
                                     bytesOf(ShaderCatalog::aurora) + "display 10  plasma  " +
                                     bytesOf(ShaderCatalog::plasma) +
                                     "    tint 1,0.5,0.25,1\n    custom 3=1.5\n");
    const auto json = nlohmann::json::parse(run({"show", "--json"}).out);
    EXPECT_EQ(json["file"], appStateURL(platform).string());
    EXPECT_EQ(json["main"], "9");
    EXPECT_EQ(json["nonShader"], nlohmann::json::array({"12"}));
    EXPECT_EQ(json["displays"].size(), 2U);
    EXPECT_EQ(json["displays"]["9"]["id"], "aurora");
    EXPECT_EQ(json["displays"]["10"]["source"], *ShaderCatalog::plasma.source);
    EXPECT_EQ(json["displays"]["10"]["look"]["tint"], nlohmann::json::array({1, 0.5, 0.25, 1}));
    EXPECT_EQ(json["displays"]["10"]["look"]["custom"][3], 1.5);
}

TEST_F(CommandLineTest, ShowSaysWhyAStateFileCannotBeRead) {
    create_directories(appStateURL(platform).parent_path());
    std::ofstream(appStateURL(platform)) << "( a )";
    const Outcome outcome = run({"show", "--json"});
    EXPECT_EQ(outcome.status, ExitStatus::failed);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("the property list is not a dictionary"));
}

TEST_F(CommandLineTest, RenderDrawsTheSizeTimeAndLookThatWereAskedFor) {
    const auto picture = file("picture.png").string();
    const Outcome outcome = run(
        {"render", "plasma", "--size", "32x18", "--time", "2.5", "--speed", "3", "-o", picture});
    ASSERT_EQ(outcome.status, ExitStatus::done) << outcome.err;
    const auto& written = platform.images().written;
    ASSERT_EQ(written.size(), 1U);
    EXPECT_EQ(written[0].file, picture);
    EXPECT_EQ(written[0].width, 32U);
    EXPECT_EQ(written[0].height, 18U);
    const FakePass& pass = platform.gpu().device->lastPass();
    EXPECT_EQ(pass.floatAt(0, 8), 2.5F) << "time";
    EXPECT_EQ(pass.floatAt(0, 12), 3.0F) << "speed";
}

TEST_F(CommandLineTest, RenderSaysWhatIsInItsWay) {
    EXPECT_EQ(run({"render", "plasma", "-o", file("missing/p.png").string()}).err,
              file("missing/p.png").string() + ": No such file or directory\n");
    EXPECT_THAT(run({"render", "plasmo", "-o", "p.png"}).err,
                HasSubstr("did you mean \"plasma\"?"));
    platform.images().refusesWriting = true;
    EXPECT_THAT(run({"render", "plasma", "-o", file("p.png").string()}).err,
                HasSubstr("a picture of 1280x720 pixels cannot be drawn or written"));
    platform.gpu().device = nullptr;
    EXPECT_EQ(run({"render", "plasma", "-o", file("p.png").string()}).err,
              "there is no GPU to draw with\n");
}

TEST_F(CommandLineTest, ProgressIsShownOnATerminalOnlyAndGoneBeforeTheEnd) {
    const auto page = file("gallery.html").string();
    EXPECT_EQ(run({"gallery", "-o", page}).err, "");
    const std::string progress = run({"gallery", "-o", page}, true).err;
    EXPECT_THAT(progress, HasSubstr("\r\x1b[Kdrawing 1 of 11: Electronic · PCB …"));
    EXPECT_THAT(progress, HasSubstr("drawing 11 of 11: Plasma …"));
    EXPECT_THAT(progress, testing::EndsWith("\r\x1b[K"));
    platform.images().refusesWriting = true;
    EXPECT_THAT(run({"render", "plasma", "-o", file("p.png").string()}, true).err,
                HasSubstr("\r\x1b[K" + file("p.png").string() + ": a picture"));
}

TEST_F(CommandLineTest, GalleryHoldsEveryWallpaper) {
    const auto page = file("gallery.html");
    ASSERT_EQ(run({"gallery", "-o", page.string()}).status, ExitStatus::done);
    const std::string text = textOf(page);
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        EXPECT_THAT(text, HasSubstr("<code>" + std::string(entry.id) + "</code>"));
        EXPECT_THAT(text, HasSubstr(">" + std::string(entry.title) + "<"));
    }
    EXPECT_EQ(platform.images().written.size(), ShaderCatalog::all.size());
    EXPECT_FALSE(exists(platform.images().written[0].file)) << "nothing is left behind";
}

TEST_F(CommandLineTest, CheckSaysEachShadersFindingsAndFailsIfOneHasAny) {
    const auto good = write("good.metal", kGoodSource).string();
    const auto broken = write("broken.metal", "#error").string();
    const auto half = write("half.metal", "v_main only").string();
    EXPECT_EQ(run({"check", good, "plasma"}).out, good + ": compiles\nplasma: compiles\n");
    const Outcome outcome = run({"check", broken, half, file("none.metal").string(), good});
    EXPECT_EQ(outcome.status, ExitStatus::failed);
    EXPECT_EQ(outcome.out, good + ": compiles\n");
    EXPECT_THAT(outcome.err, HasSubstr(broken + ":1:2: error: "));
    EXPECT_THAT(outcome.err,
                HasSubstr(half + ": error: the source has no entry point \"fragment f_main\"\n"));
    EXPECT_THAT(outcome.err, HasSubstr("none.metal\" is neither a catalog entry"));
    EXPECT_THAT(platform.notifications().posted, IsEmpty());
}

TEST_F(CommandLineTest, CheckWithoutAGPUHasCheckedNothingAndSaysSo) {
    platform.gpu().device = nullptr;
    const Outcome outcome = run({"check", "plasma"});
    EXPECT_EQ(outcome.status, ExitStatus::failed);
    EXPECT_THAT(outcome.out, Not(HasSubstr("compiles")));
}

TEST_F(CommandLineTest, WatchRefusesAFileThatIsNotThere) {
    const Outcome outcome = run({"watch", file("none.metal").string(), "--display", "1"});
    EXPECT_EQ(outcome.status, ExitStatus::failed);
    EXPECT_EQ(outcome.err, file("none.metal").string() + ": No such file or directory\n");
}

} // namespace
} // namespace vantor
