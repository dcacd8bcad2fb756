// The order of virtual operations is part of the binary interface: a host built against one header must reach the right
// operation of a library built from another. Every call here is made through the raw table (Itanium C++ ABI), in which
// the destructor, slot 0, takes two entries: slot n is entry n + 1.
#if defined(__GNUC__)

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "foundation/cache/qrtCacheData.h"
#include "foundation/cache/qrtEvictionAdvisorInterfaceBase.h"
#include "foundation/cache/qrtForEachFunctorInterface.h"
#include "foundation/composition/qrtComposition.h"
#include "foundation/composition/qrtGraphEngineInterface.h"
#include "foundation/core/qrtAudioFormatInterface.h"
#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtPrefs.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "foundation/qrtTestSupport.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;

/// Calls what stands in slot `slot` (1 or above) of the object's main table.
template <class Result, class Object, class... Arguments>
Result callSlot(std::size_t slot, Object* object, Arguments... arguments) {
    auto const* const table = *reinterpret_cast<void* const* const*>(object);
    return reinterpret_cast<Result (*)(Object*, Arguments...)>(table[slot + 1])(object, arguments...);
}

/// Which operations were reached.
using Calls = std::vector<std::string>;

TEST(SlotOrder, ofReferenceCounting) {
    struct Plain final : RefCountedMT {};
    Plain object;
    RefCountedMT* const base = &object;
    callSlot<void>(1, base);
    callSlot<void>(1, base);
    EXPECT_EQ(object.refcount(), 2u);
    EXPECT_FALSE(callSlot<bool>(2, base));
    EXPECT_EQ(callSlot<uint32>(3, base), 1u);
    EXPECT_TRUE(callSlot<bool>(2, base));
    EXPECT_EQ(object.refcount(), 0u);
}

TEST(SlotOrder, ofTheDestructor) {
    struct Flagging final : RefCountedMT {
        explicit Flagging(int& ends) : count(ends) {}
        ~Flagging() override { ++count; }
        int& count;
    };
    int ends = 0;
    RefCountedMT* const object = new Flagging(ends);
    auto const* const table = *reinterpret_cast<void* const* const*>(object);
    reinterpret_cast<void (*)(RefCountedMT*)>(table[1])(object);  // entry 1 destroys and frees
    EXPECT_EQ(ends, 1);
}

TEST(SlotOrder, ofVideoBuffers) {
    struct Buffer final : VideoBuffer {
        unsigned char getType() const override { return memoryKind; }
        Status getData(void*& data) override { return data = &pixel, Status(Status::no_resource); }
        Status getData(void*& data) const override { return data = &pixel, Status(Status::no_resource); }
        Status getTexture(unsigned int& texture) const override { return texture = 77, Status(Status::not_in_cache); }
        VideoBufferResolution getResolution() const override { return {5, 3, 4, 16, true}; }
        mutable int pixel = 0;
    };
    Buffer buffer;
    VideoBuffer* const base = &buffer;
    callSlot<void>(1, base);
    EXPECT_EQ(callSlot<uint32>(3, base), 1u);
    EXPECT_TRUE(callSlot<bool>(2, base));
    EXPECT_EQ(callSlot<unsigned char>(4, base), 1);
    for (const std::size_t slot : {std::size_t{5}, std::size_t{6}}) {
        void* data = nullptr;
        EXPECT_TRUE((callSlot<Status, VideoBuffer, void*&>(slot, base, data) == Status::no_resource));
        EXPECT_EQ(data, &buffer.pixel);
    }
    unsigned int texture = 0;
    EXPECT_TRUE((callSlot<Status, VideoBuffer, unsigned int&>(7, base, texture) == Status::not_in_cache));
    EXPECT_EQ(texture, 77u);
    EXPECT_EQ(callSlot<VideoBufferResolution>(8, base), VideoBufferResolution(5, 3, 4, 16, true));
}

TEST(SlotOrder, ofCacheRecords) {
    struct Record final : CacheData {
        ConstSharedPtr<CacheData> clone() const override { return calls.push_back("const clone"), nullptr; }
        SharedPtr<CacheData> clone() override { return calls.push_back("clone"), nullptr; }
        bool expire(Reason) const override { return calls.push_back("expire"), true; }
        Status serialize(String&, int&) const override { return calls.push_back("serialize"), Status::no_resource; }
        Status deserialize(String const&) override { return calls.push_back("deserialize"), Status::not_in_cache; }
        mutable Calls calls;
    };
    Record record;
    CacheData* const base = &record;
    callSlot<void>(1, base);
    EXPECT_EQ(callSlot<uint32>(3, base), 1u);
    EXPECT_TRUE(callSlot<bool>(2, base));
    EXPECT_TRUE(callSlot<ConstSharedPtr<CacheData>>(4, base) == nullptr);
    EXPECT_TRUE(callSlot<SharedPtr<CacheData>>(5, base) == nullptr);
    EXPECT_TRUE((callSlot<bool, CacheData, CacheData::Reason>(6, base, CacheData::Reason::lookup)));
    String text;
    int version = 0;
    EXPECT_TRUE((callSlot<Status, CacheData, String&, int&>(7, base, text, version) == Status::no_resource));
    EXPECT_TRUE((callSlot<Status, CacheData, String const&>(8, base, text) == Status::not_in_cache));
    EXPECT_THAT(record.calls, ElementsAre("const clone", "clone", "expire", "serialize", "deserialize"));
}

TEST(SlotOrder, ofEvictionAdvisorsAndVisitors) {
    using Data = SharedPtr<CacheData>;
    struct Advisor final : EvictionAdvisorInterfaceBase<Data> {
        bool canEvict(String const& key, Data const&) override { return key == "go"; }
    };
    Advisor advisor;
    EvictionAdvisorInterfaceBase<Data>* const advisorBase = &advisor;
    callSlot<void>(1, advisorBase);
    EXPECT_EQ(callSlot<uint32>(3, advisorBase), 1u);
    EXPECT_TRUE(callSlot<bool>(2, advisorBase));
    const Data nothing;
    const auto canEvict = [&](String const& key) {
        return callSlot<bool, EvictionAdvisorInterfaceBase<Data>, String const&, Data const&>(4, advisorBase, key,
                                                                                              nothing);
    };
    EXPECT_TRUE(canEvict("go"));
    EXPECT_FALSE(canEvict("stay"));

    struct Visitor final : ForEachFunctorInterface<Data> {
        bool visit(Data const&) override { return ++visits < 2; }
        int visits = 0;
    };
    Visitor visitor;
    ForEachFunctorInterface<Data>* const visitorBase = &visitor;
    EXPECT_TRUE((callSlot<bool, ForEachFunctorInterface<Data>, Data const&>(1, visitorBase, nothing)));
    EXPECT_FALSE((callSlot<bool, ForEachFunctorInterface<Data>, Data const&>(1, visitorBase, nothing)));
}

TEST(SlotOrder, ofObservers) {
    struct Watching final : Observer {
        void update(Subject*, NotificationHint const& hint) override { seen = &hint; }
        NotificationHint const* seen = nullptr;
    };
    Watching observer;
    Observer* const base = &observer;
    const NotificationHint hint{};
    callSlot<void, Observer, Subject*, NotificationHint const&>(1, base, nullptr, hint);
    EXPECT_EQ(observer.seen, &hint);
}

TEST(SlotOrder, ofPreferences) {
    struct Preferences final : Prefs {
        Status setPref(String const& name, int value) override {
            return calls.push_back("set " + std::string(name.c_str()) + std::to_string(value)), Status::no_resource;
        }
        Status getPref(String const&, int& value) const override { return value = 6, Status::not_in_cache; }
        Status getPrefs(Vector<String>& names) const override { return names.push_back("N"), Status::out_of_range; }
        Calls calls;
    };
    Preferences prefs;
    Prefs* const base = &prefs;
    const String name("HEAD");
    EXPECT_TRUE((callSlot<Status, Prefs, String const&, int>(1, base, name, 5) == Status::no_resource));
    EXPECT_THAT(prefs.calls, ElementsAre("set HEAD5"));
    int value = 0;
    EXPECT_TRUE((callSlot<Status, Prefs, String const&, int&>(2, base, name, value) == Status::not_in_cache));
    EXPECT_EQ(value, 6);
    Vector<String> names;
    EXPECT_TRUE((callSlot<Status, Prefs, Vector<String>&>(3, base, names) == Status::out_of_range));
    EXPECT_THAT(itemsOf(names), ElementsAre("N"));
}

TEST(SlotOrder, ofCompositions) {
    struct Timeline final : Composition {
        Status getStartTime(Time& start) const override { return start = Time(10, Rational(24, 1)), Status::ok; }
        Status getDuration(Time& duration) const override { return duration = Time(20, Rational(25, 1)), Status::ok; }
    };
    Timeline timeline;
    Composition* const base = &timeline;
    Time time;
    EXPECT_TRUE((callSlot<Status, Composition, Time&>(4, base, time).success()));
    EXPECT_EQ(time.getNbTicks(), 10);
    EXPECT_TRUE((callSlot<Status, Composition, Time&>(5, base, time).success()));
    EXPECT_EQ(time.getNbTicks(), 20);
}

TEST(SlotOrder, ofAudioFormats) {
    struct Stereo final : AudioFormatInterface {
        size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 8; }
        int32 getSampleRate() const override { return 48000; }
    };
    Stereo format;
    AudioFormatInterface* const base = &format;
    EXPECT_EQ((callSlot<size_t, AudioFormatInterface, size_t>(4, base, 3)), 24u);
    EXPECT_EQ(callSlot<int32>(5, base), 48000);
}

class Segment final : public ExternalSegment {
public:
    String const& getId() const override { return calls.push_back("id"), m_id; }
    Subject* getSubject() override { return calls.push_back("subject"), nullptr; }
    bool isRamSegment() const override { return calls.push_back("ram"), true; }
    bool hasOwnBuffers() const override { return calls.push_back("own buffers"), true; }
    void* getOwnRamBuffer(VideoBufferResolution const&) override { return calls.push_back("own ram"), nullptr; }
    unsigned int getOwnTexture(unsigned int) override { return calls.push_back("own texture"), 4u; }
    Status renderToTexture(unsigned int, unsigned int, VideoBufferResolution const&, Time const& time) override {
        return calls.push_back("texture " + std::to_string(time.getNbTicks())), Status::no_resource;
    }
    Status renderToRam(void*, unsigned int size, VideoBufferResolution const&, Time const&) override {
        return calls.push_back("ram " + std::to_string(size)), Status::not_in_cache;
    }
    mutable Calls calls;

private:
    const String m_id{"segment"};
};

TEST(SlotOrder, ofExternalSegments) {
    using Format = VideoBufferResolution const&;
    Segment segment;
    ExternalSegment* const base = &segment;
    const VideoBufferResolution format(2, 2, 4, 8, false);
    const Time time(31, Rational(24, 1));
    EXPECT_EQ(callSlot<String const&>(4, base), "segment");
    EXPECT_EQ(callSlot<Subject*>(5, base), nullptr);
    EXPECT_TRUE(callSlot<bool>(6, base));
    EXPECT_TRUE(callSlot<bool>(7, base));
    EXPECT_EQ((callSlot<void*, ExternalSegment, Format>(8, base, format)), nullptr);
    EXPECT_EQ((callSlot<unsigned int, ExternalSegment, unsigned int>(9, base, 1u)), 4u);
    EXPECT_TRUE((callSlot<Status, ExternalSegment, unsigned int, unsigned int, Format, Time const&>(
                     10, base, 1u, 1u, format, time) == Status::no_resource));
    EXPECT_TRUE((callSlot<Status, ExternalSegment, void*, unsigned int, Format, Time const&>(
                     11, base, nullptr, 16u, format, time) == Status::not_in_cache));
    EXPECT_THAT(segment.calls,
                ElementsAre("id", "subject", "ram", "own buffers", "own ram", "own texture", "texture 31", "ram 16"));
}

class Engine final : public GraphEngineInterface {
public:
    Status setPref(String const&, int) override { return note("setPref"); }
    Status getPref(String const&, int&) const override { return note("getPref"); }
    Status getPrefs(Vector<String>&) const override { return note("getPrefs"); }
    Status setGLContext(QOpenGLContext*) override { return note("setGLContext"); }
    Status setComposition(SharedPtr<Composition> const&, List<SharedPtr<ExternalSegment>> const&,
                          VideoBufferResolution const&, Rational const&) override {
        return note("setComposition");
    }
    Status updateComposition(SharedPtr<Composition> const&, String const&) override {
        return note("updateComposition");
    }
    Status renderFrame(VideoBufferResolution const&, int64 frame, uint32 texture) override {
        return note("renderFrame " + std::to_string(frame) + " into " + std::to_string(texture));
    }
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const&, char*, size_t bytes, size_t position) override {
        return note("fillAudio " + std::to_string(bytes) + " at " + std::to_string(position));
    }
    Status setVideoFrameRate(Rational const&) override { return note("setVideoFrameRate"); }
    Rational getVideoFrameRate() const override { return Rational(30000, 1001); }
    SharedPtr<TokenResolver> getTokenResolver() const override { return nullptr; }
    Status clearCache() override { return note("clearCache"); }
    Status getCacheStats(CacheStats::CacheType, ConstSharedPtr<CacheStats>&) const override {
        return note("getCacheStats");
    }
    Status setStep(int32 step) override { return note("setStep " + std::to_string(step)); }
    int32 getStep() const override { return -9; }

    mutable Calls calls;

private:
    Status note(std::string call) const { return calls.push_back(std::move(call)), Status::no_resource; }
};

class GraphEngineSlots : public ::testing::Test {
protected:
    /// Graph engines count from 1: the destructor, which takes entries 0 and 1 of the table, is slot 1.
    template <class Result = Status, class... Arguments>
    Result call(std::size_t slotFromOne, Arguments... arguments) {
        return callSlot<Result, GraphEngineInterface, Arguments...>(slotFromOne - 1, &engine, arguments...);
    }

    Engine engine;
};

TEST_F(GraphEngineSlots, beginWithThePreferences) {
    const String name("name");
    int value = 0;
    Vector<String> names;
    EXPECT_TRUE((call<Status, String const&, int>(2, name, 1) == Status::no_resource));
    EXPECT_TRUE((call<Status, String const&, int&>(3, name, value) == Status::no_resource));
    EXPECT_TRUE((call<Status, Vector<String>&>(4, names) == Status::no_resource));
    EXPECT_THAT(engine.calls, ElementsAre("setPref", "getPref", "getPrefs"));
}

TEST_F(GraphEngineSlots, setUpTheCompositionNext) {
    const SharedPtr<Composition> composition;
    const List<SharedPtr<ExternalSegment>> segments;
    const VideoBufferResolution format;
    const Rational rate;
    const String description;
    EXPECT_TRUE((call<Status, QOpenGLContext*>(5, nullptr) == Status::no_resource));
    EXPECT_TRUE((call<Status, SharedPtr<Composition> const&, List<SharedPtr<ExternalSegment>> const&,
                      VideoBufferResolution const&, Rational const&>(6, composition, segments, format, rate) ==
                 Status::no_resource));
    EXPECT_TRUE((call<Status, SharedPtr<Composition> const&, String const&>(7, composition, description) ==
                 Status::no_resource));
    EXPECT_THAT(engine.calls, ElementsAre("setGLContext", "setComposition", "updateComposition"));
}

TEST_F(GraphEngineSlots, renderVideoAndAudioInTheEighthAndNinth) {
    const VideoBufferResolution format;
    const ConstSharedPtr<AudioFormatInterface> audioFormat;
    EXPECT_TRUE(
        (call<Status, VideoBufferResolution const&, int64, uint32>(8, format, -5000000000, 7u) == Status::no_resource));
    EXPECT_TRUE((call<Status, ConstSharedPtr<AudioFormatInterface> const&, char*, size_t, size_t>(
                     9, audioFormat, nullptr, 64, 48000) == Status::no_resource));
    EXPECT_THAT(engine.calls, ElementsAre("renderFrame -5000000000 into 7", "fillAudio 64 at 48000"));
}

TEST_F(GraphEngineSlots, keepTheFrameRateInTheTenthAndEleventh) {
    const Rational rate;
    EXPECT_TRUE((call<Status, Rational const&>(10, rate) == Status::no_resource));
    EXPECT_EQ(call<Rational>(11), Rational(30000, 1001));
    EXPECT_THAT(engine.calls, ElementsAre("setVideoFrameRate"));
}

TEST_F(GraphEngineSlots, endWithTokensCacheAndStep) {
    ConstSharedPtr<CacheStats> stats;
    EXPECT_TRUE(call<SharedPtr<TokenResolver>>(12) == nullptr);
    EXPECT_TRUE((call<Status>(13) == Status::no_resource));
    EXPECT_TRUE((call<Status, CacheStats::CacheType, ConstSharedPtr<CacheStats>&>(
                     14, CacheStats::CacheType::graph_engine, stats) == Status::no_resource));
    EXPECT_TRUE((call<Status, int32>(15, -2) == Status::no_resource));
    EXPECT_EQ(call<int32>(16), -9);
    EXPECT_THAT(engine.calls, ElementsAre("clearCache", "getCacheStats", "setStep -2"));
}

}  // namespace
}  // namespace QRT_0_81

#endif
