#include "platform/linux/gpu/device_choice.h"

#include <gtest/gtest.h>

#include <vector>

namespace vantor::vulkan {
namespace {

const std::vector<DeviceCandidate> kMachine{
    {.name = "Software Rasteriser 15", .type = VK_PHYSICAL_DEVICE_TYPE_CPU},
    {.name = "Onboard Graphics", .type = VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU},
    {.name = "Large Card 9000", .type = VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU},
    {.name = "Small Card 90", .type = VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU},
};

TEST(DeviceChoice, ADiscreteDeviceGoesBeforeAnIntegratedBeforeASoftwareOne) {
    EXPECT_EQ(preferredDevice(kMachine, ""), 2U);
    EXPECT_EQ(preferredDevice(std::span(kMachine).first(2), ""), 1U);
    EXPECT_EQ(preferredDevice(std::span(kMachine).first(1), ""), 0U);
}

TEST(DeviceChoice, APartOfANameInAnyCaseNamesADevice) {
    EXPECT_EQ(preferredDevice(kMachine, "software"), 0U);
    EXPECT_EQ(preferredDevice(kMachine, "SMALL"), 3U);
    EXPECT_EQ(preferredDevice(kMachine, "card"), 2U);
}

TEST(DeviceChoice, AnIndexNamesADevice) {
    EXPECT_EQ(preferredDevice(kMachine, "0"), 0U);
    EXPECT_EQ(preferredDevice(kMachine, "1"), 1U);
}

TEST(DeviceChoice, ANumberBeyondTheDevicesIsAPartOfAName) {
    EXPECT_EQ(preferredDevice(kMachine, "15"), 0U);
}

TEST(DeviceChoice, WhatNamesNoDeviceChangesNothing) {
    EXPECT_EQ(preferredDevice(kMachine, "unheard of"), 2U);
    EXPECT_EQ(preferredDevice(kMachine, "77"), 2U);
}

} // namespace
} // namespace vantor::vulkan
