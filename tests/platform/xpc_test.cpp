#include "platform/xpc.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

class CountingSink : public ReplySink {
  public:
    explicit CountingSink(int& count) : count_(count) {}
    void error(const std::optional<Error>&) override { ++count_; }
    void object(const ObjectRef&, const std::optional<Error>&) override { ++count_; }
    void boolean(bool, const std::optional<Error>&) override { ++count_; }

  private:
    int& count_;
};

TEST(Reply, ReachesItsSinkOnce) {
    int count = 0;
    Reply reply(ReplyShape::error, std::make_unique<CountingSink>(count));
    std::move(reply).send(std::nullopt);
    EXPECT_EQ(count, 1);
}

TEST(ReplyDeathTest, StopsTheProcessWhenDroppedSentTwiceOrOfAnotherShape) {
    int count = 0;
    EXPECT_DEATH(Reply(ReplyShape::error, std::make_unique<CountingSink>(count)),
                 "dropped without being sent");
    EXPECT_DEATH(
        {
            Reply reply(ReplyShape::error, std::make_unique<CountingSink>(count));
            std::move(reply).send(std::nullopt);
            std::move(reply).send(std::nullopt);
        },
        "sent twice");
    EXPECT_DEATH(
        {
            Reply reply(ReplyShape::error, std::make_unique<CountingSink>(count));
            std::move(reply).sendBoolean(true);
        },
        "another shape");
}

TEST(XPCInterface, ASlotWithoutASetCarriesNothing) {
    XPCInterface interface(kWallpaperProtocolName);
    const ArgumentSlot slot{"invalidateWithId:reply:", 0, false};
    EXPECT_TRUE(interface.classes(slot).empty());
    interface.setClasses({nullptr}, slot);
    EXPECT_EQ(interface.classes(slot).size(), 1U);
    interface.setClasses({nullptr, nullptr}, slot);
    EXPECT_EQ(interface.classes(slot).size(), 2U);
    EXPECT_EQ(interface.slotCount(), 1U);
}

} // namespace
} // namespace vantor
