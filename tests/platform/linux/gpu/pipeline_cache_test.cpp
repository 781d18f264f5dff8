#include "platform/linux/gpu/pipeline_cache.h"

#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace vantor::vulkan {
namespace {

class PipelineCacheTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        auto made = Context::create();
        ASSERT_TRUE(made) << made.error();
        context = *std::move(made);
    }
    static void TearDownTestSuite() { context.reset(); }

    PipelineCacheTest() { PipelineCache(context, file).store(); }

    std::size_t loaded() const { return PipelineCache(context, file).loadedBytes(); }
    std::string bytes() const {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void write(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }

    static std::shared_ptr<Context> context;
    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "Library/Caches/test/pipelines.cache";
};

std::shared_ptr<Context> PipelineCacheTest::context;

TEST_F(PipelineCacheTest, WhatIsStoredIsReadBack) {
    // The driver's own header is 32 bytes.
    EXPECT_GE(loaded(), 32U);
    const auto files = std::distance(std::filesystem::directory_iterator(file.parent_path()), {});
    EXPECT_EQ(files, 1);
}

TEST_F(PipelineCacheTest, AFileWithAnyByteChangedCountsAsEmpty) {
    const std::string whole = bytes();
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::string damaged = whole;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x10);
        write(damaged);
        EXPECT_EQ(loaded(), 0U) << "byte " << i;
    }
    write(whole);
    EXPECT_GT(loaded(), 0U);
}

TEST_F(PipelineCacheTest, AFileOfAnotherLengthCountsAsEmpty) {
    const std::string whole = bytes();
    for (std::size_t i = 0; i < whole.size(); i += 7) {
        write(whole.substr(0, i));
        EXPECT_EQ(loaded(), 0U) << i << " bytes";
    }
    write(whole + '\0');
    EXPECT_EQ(loaded(), 0U);
}

TEST_F(PipelineCacheTest, WhatIsNoFileCountsAsEmpty) {
    std::filesystem::remove(file);
    EXPECT_EQ(loaded(), 0U);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(loaded(), 0U);
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(loaded(), 0U);
    PipelineCache(context, file).store();
    EXPECT_TRUE(std::filesystem::is_directory(file));
}

TEST_F(PipelineCacheTest, AnUnchangedCacheIsNotWrittenAgain) {
    PipelineCache cache(context, file);
    std::filesystem::remove(file);
    cache.store();
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(PipelineCacheTest, AnEmptyPathKeepsNothing) {
    PipelineCache cache(context, {});
    cache.store();
    EXPECT_NE(cache.handle(), VkPipelineCache{});
    EXPECT_EQ(cache.loadedBytes(), 0U);
}

} // namespace
} // namespace vantor::vulkan
