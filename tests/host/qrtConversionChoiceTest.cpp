#include "graph/qrtConversionChoice.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

TEST(ConversionChoices, areNamed) {
    for (const ConversionChoice choice : {ConversionChoice::automatic, ConversionChoice::cpu, ConversionChoice::gpu}) {
        ConversionChoice read{};
        ASSERT_TRUE(parseConversion(conversionName(choice), read));
        EXPECT_EQ(read, choice);
    }
    ConversionChoice untouched = ConversionChoice::gpu;
    EXPECT_FALSE(parseConversion("CPU ", untouched));
    EXPECT_EQ(untouched, ConversionChoice::gpu);
}

TEST(ConversionChoices, tellRenderersInSoftwareFromOthers) {
    for (char const* const name :
         {"llvmpipe (LLVM 15.0.6, 256 bits)", "softpipe", "Software Rasterizer", "Mesa swrast"})
        EXPECT_TRUE(isSoftwareRenderer(name)) << name;
    for (char const* const name : {"NVIDIA H100/PCIe/SSE2", "Mesa Intel(R) UHD Graphics 620", "AMD Radeon", ""})
        EXPECT_FALSE(isSoftwareRenderer(name)) << name;
}

}  // namespace
}  // namespace qrtplay
