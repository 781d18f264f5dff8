#pragma once
// The installed programs with a user's home of their own, in which a test plays the user.

#include "tests/e2e/picture.h"
#include "tests/e2e/process.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace vantor::e2e {

/// A shader that shows one colour: the tint, darkened by what it is given.
inline std::string flatShader(const std::string& color) {
    return "#include <metal_stdlib>\nusing namespace metal;\n"
           "struct Uniforms { float2 resolution; float time; float speed; float4 tint; };\n"
           "struct VOut { float4 position [[position]]; };\n"
           "vertex VOut v_main(uint vid [[vertex_id]]) {\n"
           "    float2 p = float2((vid << 1) & 2, vid & 2);\n"
           "    VOut out;\n    out.position = float4(p * 2.0 - 1.0, 0.0, 1.0);\n"
           "    return out;\n}\n"
           "fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {\n"
           "    return float4(" +
           color + " * u.tint.rgb, 1.0);\n}\n";
}

class Installation : public testing::Test {
  protected:
    std::filesystem::path home() const { return folder_.path() / "home"; }
    std::filesystem::path out() const { return folder_.path() / "out"; }
    std::filesystem::path stateFile() const {
        return home() / "Library/Containers/com.nimbara.app/Data/Library/Application Support/"
                        "VantorEngine/LockScreen.plist";
    }
    std::filesystem::path extensionHome() const {
        return home() / "Library/Containers/com.nimbara.app.lockscreen/Data";
    }
    std::string log() const { return contents(extensionHome() / "Library/Logs/lockscreen.log"); }
    std::filesystem::path thumbnails() const {
        return extensionHome() / "Library/Caches/Thumbnails";
    }

    /// No bus, unless a derived fixture has one.
    virtual std::map<std::string, std::string> environment() const {
        return {{"VANTOR_USER_HOME", home().string()},
                {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"},
                {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent"}};
    }

    std::filesystem::path write(const std::string& name, const std::string& text) const {
        const std::filesystem::path file = folder_.path() / name;
        std::ofstream(file) << text;
        return file;
    }

    Outcome command(const std::string& program, std::vector<std::string> words) const {
        words.insert(words.begin(), VANTOR_BIN "/" + program);
        return run(words, environment());
    }
    Outcome vantorctl(std::vector<std::string> words) const {
        return command("vantorctl", std::move(words));
    }

    void SetUp() override { std::filesystem::create_directories(home()); }

    const std::filesystem::path& folder() const { return folder_.path(); }

  private:
    TemporaryFolder folder_;
};

} // namespace vantor::e2e
