// vantorctl gallery

#include "platform/linux/whole_file.h"
#include "platform/platform.h"
#include "shaders/shader_catalog.h"
#include "tools/arguments.h"
#include "tools/commands.h"
#include "tools/drawing.h"
#include "tools/gallery_page.h"
#include "tools/progress.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace vantor {
namespace {

/// A folder for pictures on their way into the page, gone with everything in it at the end.
class PictureFolder {
  public:
    PictureFolder() {
        std::error_code ignored;
        std::string name = (std::filesystem::temp_directory_path(ignored) / "vantorctl-XXXXXX");
        if (::mkdtemp(name.data()) != nullptr) {
            path_ = name;
        }
    }
    ~PictureFolder() {
        std::error_code ignored;
        if (!path_.empty()) {
            std::filesystem::remove_all(path_, ignored);
        }
    }
    PictureFolder(const PictureFolder&) = delete;
    PictureFolder& operator=(const PictureFolder&) = delete;

    /// Empty when none could be made.
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

Bytes contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

class GalleryCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        app.add_option("-o,--out", out_, "The page to write")->required()->type_name("FILE.html");
        frame_.addTo(app);
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        if (const auto why = frame_.parse()) {
            return console.refuseUsage(*why);
        }
        if (const auto writable = canReplaceFile(out_); !writable) {
            return console.fail(writable.error());
        }
        auto pictures = draw(platform, console);
        if (!pictures) {
            return console.fail(pictures.error());
        }
        const std::string page =
            galleryPage(*pictures, static_cast<unsigned>(frame_.size().width),
                        static_cast<unsigned>(frame_.size().height), frame_.time());
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(page.data());
        const auto written = replaceFile(out_, {bytes, page.size()});
        return written ? ExitStatus::done : console.fail(written.error());
    }

  private:
    Result<std::vector<GalleryPicture>, std::string> draw(Platform& platform,
                                                          const Console& console) const {
        const PictureFolder folder;
        if (folder.path().empty()) {
            return Failure{std::string("no folder for the pictures can be made")};
        }
        const std::filesystem::path file = folder.path() / "picture.png";
        ShaderGPU gpu(platform.gpu(), platform.images());
        std::vector<GalleryPicture> pictures;
        Progress progress(console);
        for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
            progress.say("drawing " + std::to_string(pictures.size() + 1) + " of " +
                         std::to_string(ShaderCatalog::all.size()) + ": " +
                         std::string(entry.title) + " …");
            const auto shader = findShader(entry.id);
            if (!shader) {
                return Failure{shader.error()};
            }
            const auto drawn =
                drawPNG(gpu, shader.value(),
                        {.look = {}, .size = frame_.size(), .time = frame_.time()}, file);
            if (!drawn) {
                return Failure{drawn.error()};
            }
            pictures.push_back({.id = entry.id, .title = entry.title, .png = contents(file)});
        }
        return pictures;
    }

    std::string out_;
    FrameOptions frame_{"640x360"};
};

} // namespace

std::unique_ptr<Command> makeGalleryCommand() { return std::make_unique<GalleryCommand>(); }

} // namespace vantor
