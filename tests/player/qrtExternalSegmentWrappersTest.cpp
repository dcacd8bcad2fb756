// The wrapped segments of one composition.
#include "qrtExternalSegmentWrappers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "harness/qrtFakeSegment.h"
#include "qrtExternalSegmentWrapper.h"

namespace QRT_0_81 {

class ExternalSegmentWrappersTest : public ::testing::Test {
protected:
    static std::vector<std::string> idsOf(ExternalSegmentWrappers const& wrappers) {
        std::vector<std::string> ids;
        for (auto const& segment : wrappers.getSegments())
            ids.emplace_back(segment->getId().c_str());
        return ids;
    }

    ExternalSegmentCacheManager manager{FramebufferReaper::create()};
    List<SharedPtr<ExternalSegment>> segments;
};

TEST_F(ExternalSegmentWrappersTest, areInTheHostsOrderWithoutItsNullEntries) {
    segments.append(nullptr);
    for (char const* const id : {"c", "a", "b"}) {
        segments.append(FakeSegment::create(id, {}));
        segments.append(nullptr);
    }
    const auto wrappers = ExternalSegmentWrappers::create(&manager, segments);
    EXPECT_EQ(idsOf(*wrappers), (std::vector<std::string>{"c", "a", "b"}));
    EXPECT_EQ(segments.size(), 7u) << "the host's own list stays as it is";
}

TEST_F(ExternalSegmentWrappersTest, standInFrontOfTheHostsSegmentsEachWithAWrapperOfItsOwn) {
    const auto segment = FakeSegment::create("a", {});
    segments.append(segment);
    segments.append(segment);
    const auto wrappers = ExternalSegmentWrappers::create(&manager, segments);
    ASSERT_EQ(wrappers->getSegments().size(), 2u);
    auto const& first = *wrappers->getSegments().begin();
    auto const& second = *std::next(wrappers->getSegments().begin());
    for (auto const& wrapper : {first, second}) {
        EXPECT_TRUE(dynamicPtrCast<ExternalSegmentWrapper>(wrapper));
        EXPECT_EQ(&wrapper->getId(), &segment->getId());
    }
    EXPECT_FALSE(first == second);
}

TEST_F(ExternalSegmentWrappersTest, ofAnEmptyListAreNone) {
    EXPECT_TRUE(ExternalSegmentWrappers::create(&manager, segments)->getSegments().empty());
    segments.append(nullptr);
    EXPECT_TRUE(ExternalSegmentWrappers::create(&manager, segments)->getSegments().empty());
}

TEST_F(ExternalSegmentWrappersTest, areHandedOverWithTheOnlyReferenceAndLetGoOfTheSegmentsAtTheirEnd) {
    const auto segment = FakeSegment::create("a", {});
    segments.append(segment);
    auto wrappers = ExternalSegmentWrappers::create(&manager, segments);
    EXPECT_EQ(wrappers->refcount(), 1u);
    EXPECT_EQ(segment->refcount(), 3u);  // this test's, the list's and the wrapper's
    wrappers.reset();
    EXPECT_EQ(segment->refcount(), 2u);
}

}  // namespace QRT_0_81
