// Reads any bytes as play parameters: nothing may crash or leak, and nothing may be stored that the order of the
// reader's checks does not allow.
#include <cstddef>
#include <cstdint>
#include <string>

#include "player/qrtPlayParams.h"
#include "qrtFuzzRequire.h"

namespace {

using namespace QRT_0_81;

/// Parameters whose every value depends on `seed`: what two of them have in common after reading was stored by it.
SharedPtr<PlayParams> makeParams(int seed) {
    auto params =
        PlayParams::create(Time(), Time(), Time(), Rational(seed, 1), seed, static_cast<PlayParams::PlayMode>(seed),
                           static_cast<PlayParams::ProductionMode>(seed));
    params->setCurrentFrame(seed);
    params->setStartFrame(seed);
    params->setEndFrame(seed);
    return params;
}

/// Whether reading has stored a value: the two objects had different ones before. If not, both must be as they were.
template <class Get>
bool isStored(PlayParams const& first, PlayParams const& second, int firstSeed, int secondSeed, Get get) {
    if (get(first) == get(second)) return true;
    require(get(first) == get(*makeParams(firstSeed)), "a value that was not stored stays as it was");
    require(get(second) == get(*makeParams(secondSeed)), "a value that was not stored stays as it was");
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    const String text(std::string(reinterpret_cast<char const*>(data), size));
    constexpr int seeds[] = {7, 1007};  // modes beyond their enumerations
    const auto first = makeParams(seeds[0]);
    const auto second = makeParams(seeds[1]);
    const Status status = first->fromJson(text);
    require(second->fromJson(text) == status, "the result depends on the text alone");
    require(status.success() || status == Status::invalid_text, "there is one type of failure");

    const auto stored = [&](auto get) { return isStored(*first, *second, seeds[0], seeds[1], get); };
    const bool step = stored([](PlayParams const& params) { return params.getStep(); });
    const bool playMode = stored([](PlayParams const& params) { return params.getPlayMode(); });
    const bool productionMode = stored([](PlayParams const& params) { return params.getProductionMode(); });
    const bool current = stored([](PlayParams const& params) { return params.getCurrentFrame(); });
    const bool start = stored([](PlayParams const& params) { return params.getStartFrame(); });
    const bool end = stored([](PlayParams const& params) { return params.getEndFrame(); });
    const bool rate = stored([](PlayParams const& params) { return params.getFrameRate(); });
    require(!playMode || step, "the play mode comes behind the step");
    require(!productionMode || playMode, "the production mode comes behind the play mode");
    require(!current || productionMode, "the frames come behind the production mode");
    require(current == start && start == end, "the frames are stored together");
    require(!rate || current, "the frame rate comes last");
    require(rate == status.success(), "success means that everything was stored");

    const auto isMode = [](int value) { return value >= 0 && value <= 2; };
    require(!playMode || isMode(first->getPlayMode()), "a stored play mode is one of its enumeration");
    require(!productionMode || isMode(first->getProductionMode()),
            "a stored production mode is one of its enumeration");
    require(!rate || first->getFrameRate().getDenominator() != 0, "a stored frame rate has a denominator");

    const String written = first->toJson();
    if (status.success()) {
        require(*first == *second, "everything that was stored is equal");
        const auto third = makeParams(3);
        require(third->fromJson(written).success(), "what is written can be read");
        require(*third == *first && third->toJson() == written, "and means the same");
    }
    return 0;
}
