// Runs the real vantorctl with homes of its own.

#include "tests/e2e/installation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <list>

namespace vantor::e2e {
namespace {

using std::chrono::seconds;
using testing::HasSubstr;
using testing::StartsWith;

class Vantorctl : public Installation {
  protected:
    std::filesystem::path path(const std::string& name) const { return folder() / name; }
    /// As many editors save: a new file takes the old one's name.
    void replace(const std::string& name, const std::string& text) const {
        rename(write(name + ".new", text), path(name));
    }
    static std::vector<std::string> command(std::vector<std::string> words) {
        words.insert(words.begin(), VANTOR_BIN "/vantorctl");
        return words;
    }
    std::string shown() const { return vantorctl({"show", "--json"}).output; }
};

TEST_F(Vantorctl, WatchShowsEverySaveAndKeepsTheLastGoodOne) {
    const auto file = write("live.metal", flatShader("float3(1.0, 0.0, 0.0)")).string();
    Process watch(command({"watch", file, "--display", "3", "--speed", "0.25"}), environment());
    const auto says = [&watch](const std::string& text, int times) {
        return eventually(
            [&] {
                const std::string output = watch.output();
                int found = 0;
                for (auto at = output.find(text); at != std::string::npos;
                     at = output.find(text, at + 1)) {
                    ++found;
                }
                return found == times;
            },
            seconds(20));
    };
    ASSERT_TRUE(says("display 3 shows file.live\n", 1)) << watch.errors();
    EXPECT_THAT(shown(), HasSubstr("1.0, 0.0, 0.0"));

    write("live.metal", flatShader("float3(0.0, 1.0, 0.0)"));
    ASSERT_TRUE(says("display 3 shows file.live\n", 2)) << watch.errors();
    EXPECT_THAT(shown(), HasSubstr("0.0, 1.0, 0.0"));

    replace("live.metal", flatShader("float3(0.0, 0.0, nothing)"));
    ASSERT_TRUE(eventually(
        [&] { return watch.errors().find("display 3 keeps what it shows") != std::string::npos; },
        seconds(20)));
    EXPECT_THAT(watch.errors(), HasSubstr(file + ":12:36: error: "));
    EXPECT_THAT(watch.errors(), HasSubstr("^~~~~~~"));
    EXPECT_THAT(shown(), HasSubstr("0.0, 1.0, 0.0"));

    replace("live.metal", flatShader("float3(0.0, 0.0, 1.0)"));
    ASSERT_TRUE(says("display 3 shows file.live\n", 3)) << watch.errors();
    EXPECT_THAT(shown(), HasSubstr("0.0, 0.0, 1.0"));

    watch.signal(SIGINT);
    const Outcome outcome = watch.wait(seconds(20));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, testing::EndsWith("the watch ends; display 3 keeps file.live\n"));
}

TEST_F(Vantorctl, CheckPointsAtTheMistake) {
    const auto file = write("broken.metal", flatShader("float3(0.0, 0.0, nothing)")).string();
    const Outcome outcome = vantorctl({"check", file, "aurora"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "aurora: compiles\n");
    EXPECT_THAT(outcome.errors, StartsWith(file + ":12:36: error: "));
    EXPECT_THAT(outcome.errors,
                HasSubstr("\n    return float4(float3(0.0, 0.0, nothing) * u.tint.rgb, 1.0);\n"
                          "                                   ^~~~~~~\n"));
    const auto half = write("half.metal", "#include <metal_stdlib>\n").string();
    EXPECT_EQ(vantorctl({"check", half}).errors,
              half + ": error: the source has no vertex or fragment function\n");
}

TEST_F(Vantorctl, AFullDiskKeepsTheOldState) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "aurora", "--quiet"}).status, 0);
    const std::string before = contents(stateFile());
    // To a program, a file that may not grow is a disk that is full.
    const Outcome outcome =
        run({"/bin/bash", "-c",
             "ulimit -f 1; exec " VANTOR_BIN "/vantorctl set --display 2 builtin.elec-pcb"},
            environment());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, stateFile().string() + ": File too large\n");
    EXPECT_EQ(contents(stateFile()), before);
    const std::filesystem::directory_iterator beside(stateFile().parent_path());
    EXPECT_EQ(std::distance(begin(beside), end(beside)), 1);
}

TEST_F(Vantorctl, ProgramsThatSetAtOnceAllGetTheirWay) {
    constexpr int kPrograms = 8;
    std::list<Process> programs;
    for (int i = 0; i < kPrograms; ++i) {
        programs.emplace_back(
            command({"set", "--display", std::to_string(i), "plasma", "--no-check"}),
            environment());
    }
    for (Process& program : programs) {
        EXPECT_EQ(program.wait(seconds(60)).status, 0);
    }
    const std::string state = vantorctl({"show"}).output;
    for (int i = 0; i < kPrograms; ++i) {
        EXPECT_THAT(state, HasSubstr("\ndisplay " + std::to_string(i) + "  plasma  "));
    }
}

TEST_F(Vantorctl, TheGalleryIsOnePageWithElevenPictures) {
    const Outcome outcome =
        vantorctl({"gallery", "--size", "64x36", "-o", path("gallery.html").string()});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output + outcome.errors, "") << "progress is for terminals";
    const std::string page = contents(path("gallery.html"));
    int pictures = 0;
    // Every PNG file begins alike.
    for (auto at = page.find("data:image/png;base64,iVBORw0KGgo"); at != std::string::npos;
         at = page.find("data:image/png;base64,iVBORw0KGgo", at + 1)) {
        ++pictures;
    }
    EXPECT_EQ(pictures, 11);
}

TEST_F(Vantorctl, OutputThatCannotBeWrittenIsAFailure) {
    const Outcome outcome =
        run({"/bin/bash", "-c", "exec " VANTOR_BIN "/vantorctl list >/dev/full"}, environment());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "standard output cannot be written\n");
}

} // namespace
} // namespace vantor::e2e
