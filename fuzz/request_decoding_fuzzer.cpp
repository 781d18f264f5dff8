// Decodes requests from reflected graphs that the bytes describe: any labels, any kinds, any depth,
// and children that are the graph's earlier values again, so cycles too.

#include "bridge/request_decoding.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace {

using namespace vantor;

class Input {
  public:
    explicit Input(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool empty() const { return bytes_.empty(); }

    std::uint8_t byte() {
        if (bytes_.empty()) {
            return 0;
        }
        const std::uint8_t value = bytes_[0];
        bytes_ = bytes_.subspan(1);
        return value;
    }

    double real() {
        std::array<std::uint8_t, sizeof(double)> raw{};
        for (std::uint8_t& each : raw) {
            each = byte();
        }
        double value = 0;
        std::memcpy(&value, raw.data(), sizeof value);
        return value;
    }

    Bytes bytes() {
        Bytes value(byte() % 16);
        for (std::uint8_t& each : value) {
            each = byte();
        }
        return value;
    }

  private:
    std::span<const std::uint8_t> bytes_;
};

class Node;
using Graph = std::vector<std::shared_ptr<Node>>;

/// Children are indices into the graph, which outlives the values.
class Node final : public ReflectedValue {
  public:
    Node(Input& input, const Graph& graph) : graph_(graph), kind_(input.byte() % 9) {
        number_ = input.real();
        other_ = kind_ == 2 ? input.real() : 0;
        bytes_ = input.bytes();
        children_ = input.bytes();
        labels_ = input.bytes();
    }

    std::vector<ReflectedChild> children() const override {
        static constexpr std::array<const char*, 10> kLabels{"configuration",
                                                             "destination",
                                                             "size",
                                                             "scaleFactor",
                                                             "directDisplayID",
                                                             "isPreview",
                                                             "presentationMode",
                                                             "activityState",
                                                             "cacheDirectory",
                                                             "other"};
        std::vector<ReflectedChild> out;
        for (std::size_t index = 0; index < children_.size(); ++index) {
            const std::size_t label = index < labels_.size() ? labels_[index] % 11U : 10;
            out.push_back({.label = label < kLabels.size()
                                        ? std::optional<std::string>(kLabels[label])
                                        : std::nullopt,
                           .value = graph_[children_[index] % graph_.size()]});
        }
        return out;
    }
    bool isEnumeration() const override { return kind_ == 8; }
    std::optional<Bytes> asBytes() const override { return when(0, bytes_); }
    std::optional<UUID> asUUID() const override {
        UUID identifier;
        std::copy(bytes_.begin(), bytes_.end(), identifier.bytes.begin());
        return when(1, identifier);
    }
    std::optional<Size> asSize() const override { return when(2, Size{number_, other_}); }
    std::optional<double> asDouble() const override { return when(3, number_); }
    std::optional<std::uint32_t> asUInt32() const override {
        return when(4, static_cast<std::uint32_t>(bytes_.size()));
    }
    std::optional<bool> asBoolean() const override { return when(5, true); }
    std::optional<std::string> asFileURL() const override {
        return when(6, std::string("file:///x"));
    }
    std::string description() const override { return {bytes_.begin(), bytes_.end()}; }

  private:
    template <typename T>
    std::optional<T> when(int kind, T value) const {
        return kind_ == kind ? std::optional<T>(std::move(value)) : std::nullopt;
    }

    const Graph& graph_;
    int kind_;
    double number_;
    double other_;
    Bytes bytes_;
    Bytes children_;
    Bytes labels_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    Graph graph;
    while (graph.empty() || (!input.empty() && graph.size() < 256)) {
        graph.push_back(std::make_shared<Node>(input, graph));
    }
    const ReflectedRef root = graph.front();
    PrivateBridge::firstUUID(root, 0);
    const PrivateBridge::Creation creation = PrivateBridge::parseCreation(root);
    if (!(creation.size.width > 0) || !(creation.scale > 0) ||
        (creation.configuration && creation.configuration->empty())) {
        std::abort();
    }
    PrivateBridge::parseUpdate(root);
    return 0;
}
