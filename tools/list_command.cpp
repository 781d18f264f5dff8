// vantorctl list

#include "shaders/shader_catalog.h"
#include "tools/commands.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <ostream>

namespace vantor {
namespace {

std::string table() {
    std::size_t width = 0;
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        width = std::max(width, entry.id.size());
    }
    std::string text;
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        text += std::string(entry.id) + std::string(width - entry.id.size() + 2, ' ') +
                std::string(entry.title) + '\n';
    }
    return text;
}

std::string json() {
    auto entries = nlohmann::ordered_json::array();
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        entries.push_back({{"id", entry.id}, {"title", entry.title}});
    }
    return entries.dump(2) + '\n';
}

class ListCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        app.add_flag("--json", json_, "Print JSON, for programs");
    }

    ExitStatus run(Platform&, const Console& console) override {
        console.out << (json_ ? json() : table());
        return ExitStatus::done;
    }

  private:
    bool json_ = false;
};

} // namespace

std::unique_ptr<Command> makeListCommand() { return std::make_unique<ListCommand>(); }

} // namespace vantor
