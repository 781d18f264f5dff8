#pragma once
// vantorctl's commands over the fake platform.

#include "library/app_state.h"
#include "library/desktop_state.h"
#include "tests/support/fake_platform.h"
#include "tools/command_line.h"
#include "tools/state_file.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace vantor {

class CommandLineTest : public FakePlatformTest {
  protected:
    struct Outcome {
        ExitStatus status;
        std::string out;
        std::string err;
    };

    Outcome run(std::vector<std::string> words, bool terminal = false) {
        std::ostringstream out;
        std::ostringstream err;
        const Console console{.out = out, .err = err, .showsProgress = terminal};
        const ExitStatus status = CommandLine().run(std::move(words), platform, console);
        return {status, out.str(), err.str()};
    }

    std::filesystem::path file(const std::string& name) {
        return platform.bundle().homeDirectory() / name;
    }
    std::filesystem::path write(const std::string& name, const std::string& text) {
        std::ofstream(file(name)) << text;
        return file(name);
    }
    static std::string textOf(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    StateFile state() {
        auto read = StateFile::read(platform.propertyLists(), appStateURL(platform));
        EXPECT_TRUE(read) << read.error();
        return std::move(*read);
    }
    DesktopState desktop() { return DesktopState(state().root()); }

    static constexpr const char* kGoodSource = "v_main f_main";
    static constexpr const char* kChanged = "com.nimbara.lockscreen.changed";
};

} // namespace vantor
