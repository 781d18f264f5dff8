#include "agent/output/headless/headless_backend.h"

#include "platform/linux/system/linux_media_clock.h"

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace vantor::agent {
namespace {

class HeadlessOutput : public Output {
  public:
    HeadlessOutput(MainLoop& loop, OutputDescription description, const OutputEvents& events)
        : description_(std::move(description)), alarm_(loop.alarm([this, &events] {
              awaited_ = false;
              events.refresh(*this);
          })) {}

    const OutputDescription& description() const override { return description_; }
    Visibility visibility() const override { return Visibility::visible; }
    VkSurfaceKHR makeSurface(VkInstance) override { return VK_NULL_HANDLE; }
    bool isInMemory() const override { return true; }
    void willPresent() override { requestRefresh(); }

    void requestRefresh() override {
        if (std::exchange(awaited_, true)) {
            return;
        }
        // A display refreshes at times of its own, whenever it was asked.
        const double passed = LinuxMediaClock().now() * description_.refreshRate;
        alarm_->set((std::floor(passed) + 1 - passed) / description_.refreshRate);
    }

  private:
    OutputDescription description_;
    std::unique_ptr<Alarm> alarm_;
    bool awaited_ = false;
};

class HeadlessBackend : public OutputBackend {
  public:
    HeadlessBackend(MainLoop& loop, std::span<const OutputDescription> outputs, OutputEvents events)
        : events_(std::move(events)), announcement_(loop.alarm([this] { announce(); })) {
        for (const OutputDescription& output : outputs) {
            outputs_.push_back(std::make_unique<HeadlessOutput>(loop, output, events_));
        }
        announcement_->set(0);
    }

    std::string_view kind() const override { return "headless"; }

  private:
    void announce() {
        for (const auto& output : outputs_) {
            events_.added(*output);
        }
    }

    OutputEvents events_;
    std::vector<std::unique_ptr<HeadlessOutput>> outputs_;
    std::unique_ptr<Alarm> announcement_;
};

} // namespace

std::unique_ptr<OutputBackend>
makeHeadless(MainLoop& loop, std::span<const OutputDescription> outputs, OutputEvents events) {
    return std::make_unique<HeadlessBackend>(loop, outputs, std::move(events));
}

} // namespace vantor::agent
