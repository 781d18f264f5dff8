// Installs what was built into a prefix of its own and uses it from there.

#include "tests/e2e/installation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <set>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>

namespace vantor::e2e {
namespace {

using Files = std::set<std::filesystem::path>;

/// A user who owns none of the installation, where the test may become one.
constexpr const char* kUser = "54321";

Files linesOf(const std::string& text) {
    std::istringstream stream(text);
    Files lines;
    for (std::string line; std::getline(stream, line);) {
        lines.insert(line);
    }
    return lines;
}

class Install : public Installation {
  protected:
    void SetUp() override {
        Installation::SetUp();
        // The build has one list of what was installed last, and tests run side by side.
        const int lock = open(VANTOR_BUILD "/install.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0644);
        ASSERT_EQ(flock(lock, LOCK_EX), 0);
        const Outcome outcome =
            run({VANTOR_CMAKE, "--install", VANTOR_BUILD, "--prefix", prefix().string(), "--strip"},
                {});
        manifest_ = linesOf(contents(VANTOR_BUILD "/install_manifest.txt"));
        close(lock);
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
    }

    std::filesystem::path prefix() const { return folder() / "prefix"; }
    std::string agent() const { return prefix() / "bin/vantor-agent"; }
    const Files& manifest() const { return manifest_; }

    Files files() const {
        Files found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(prefix())) {
            if (!entry.is_directory()) {
                found.insert(entry.path());
            }
        }
        return found;
    }

    /// The installed programs show a red and a blue display, started by the words `before` them.
    void expectPictures(const std::vector<std::string>& before) const {
        const auto start = [&](std::vector<std::string> words) {
            words.insert(words.begin(), before.begin(), before.end());
            return run(words, environment());
        };
        for (const auto& [display, color] :
             {std::pair{"1", "float3(1, 0, 0)"}, {"2", "float3(0, 0, 1)"}}) {
            const auto shader = write(std::string(display) + ".metal", flatShader(color));
            const Outcome chosen =
                start({prefix() / "bin/vantorctl", "set", "--display", display, shader});
            ASSERT_EQ(chosen.status, 0) << chosen.errors;
        }
        const Outcome shown = start({agent(), "run", "--output", "headless:160x90,160x90",
                                     "--seconds", "3", "--out", out()});
        ASSERT_EQ(shown.status, 0) << shown.errors;
        const Pixel first = Picture::read(out() / "display-1-b.png").at(80, 45);
        const Pixel second = Picture::read(out() / "display-2-b.png").at(80, 45);
        EXPECT_EQ(std::pair(first.red, first.blue), std::pair(255, 0)) << shown.errors;
        EXPECT_EQ(std::pair(second.red, second.blue), std::pair(0, 255)) << shown.errors;
        EXPECT_THAT(log(),
                    testing::HasSubstr(" — WallpaperExtensionKit loaded, runtime layout OK"));
    }

  private:
    Files manifest_;
};

TEST_F(Install, ProgramsShowTheirPicturesFromTheInstalledPlaceAlone) { expectPictures({}); }

TEST_F(Install, AnAgentInAUserNamespaceThatDoesNotKnowRootKeepsItsExtension) {
    // As the service's sandbox is: only the user has an identity in it.
    std::vector<std::string> sandbox{"/usr/bin/env", "unshare", "--user", "--map-current-user"};
    if (geteuid() == 0) {
        sandbox.insert(sandbox.begin() + 1,
                       {"setpriv", "--reuid", kUser, "--regid", kUser, "--clear-groups"});
        const auto user = static_cast<uid_t>(std::stoul(kUser));
        ASSERT_EQ(chown(home().c_str(), user, user), 0);
        ASSERT_TRUE(std::filesystem::create_directory(out()));
        ASSERT_EQ(chown(out().c_str(), user, user), 0);
        std::filesystem::permissions(folder(), std::filesystem::perms(0755));
    }
    std::vector<std::string> probe = sandbox;
    probe.emplace_back("true");
    if (run(probe, {}).status != 0) {
        GTEST_SKIP() << "this kernel gives users no namespaces";
    }
    expectPictures(sandbox);
    EXPECT_THAT(log(), testing::Not(testing::HasSubstr("rejected")));
}

TEST_F(Install, TheListOfInstalledFilesIsWhole) { EXPECT_EQ(manifest(), files()); }

TEST_F(Install, NoFileMentionsWhereItWasBuilt) {
    if (!std::string(VANTOR_SANITIZE).empty()) {
        GTEST_SKIP() << "a sanitizer's reports name the sources";
    }
    for (const auto& file : files()) {
        const std::string text = contents(file);
        EXPECT_EQ(text.find(VANTOR_BUILD), std::string::npos) << file;
        EXPECT_EQ(text.find(VANTOR_SOURCE_FOLDER), std::string::npos) << file;
    }
}

TEST_F(Install, TheServiceAndTheEntriesStartTheInstalledAgent) {
    const std::string start = "\"" + agent() + "\" run --output ";
    for (const auto& [file, line] : std::map<std::string, std::string>{
             {"share/systemd/user/vantor-agent.service", "\nExecStart=" + start + "background\n"},
             {"share/dbus-1/services/com.nimbara.vantor.Agent.service",
              "\nExec=" + start + "background\n"},
             {"share/applications/vantor-agent.desktop", "\nExec=" + start + "window\n"}}) {
        const std::string text = contents(prefix() / file);
        EXPECT_THAT(text, testing::HasSubstr(line)) << file;
        EXPECT_EQ(text.find("@program@"), std::string::npos) << file;
    }
}

TEST_F(Install, TheServiceAndTheDesktopEntryAreValid) {
    const Outcome service = run({"/usr/bin/env", "systemd-analyze", "verify", "--user", "--man=no",
                                 prefix() / "share/systemd/user/vantor-agent.service"},
                                {{"XDG_RUNTIME_DIR", home()}});
    EXPECT_EQ(service.status, 0);
    EXPECT_EQ(service.errors, "");
    const Outcome entry = run({"/usr/bin/env", "desktop-file-validate",
                               prefix() / "share/applications/vantor-agent.desktop"},
                              {});
    EXPECT_EQ(entry.status, 0);
    EXPECT_EQ(entry.output, "");
}

TEST_F(Install, EveryProgramHasItsManualAndItsCompletions) {
    for (const auto& program : std::filesystem::directory_iterator(prefix() / "bin")) {
        const std::string name = program.path().filename();
        for (const std::string& file :
             {"share/man/man1/" + name + ".1", "share/bash-completion/completions/" + name,
              "share/zsh/site-functions/_" + name,
              "share/fish/vendor_completions.d/" + name + ".fish"}) {
            EXPECT_TRUE(std::filesystem::exists(prefix() / file)) << file;
        }
    }
}

} // namespace
} // namespace vantor::e2e
