#pragma once

#include <string>

#include "player/qrtPlayParams.h"

namespace QRT_0_81 {

inline constexpr auto unknownPlayMode = static_cast<PlayParams::PlayMode>(7);
inline constexpr auto unknownProductionMode = static_cast<PlayParams::ProductionMode>(-3);

[[nodiscard]] inline SharedPtr<PlayParams> makeParams(int64 current, int64 start, int64 end, Rational const& rate,
                                                      int step, PlayParams::PlayMode playMode,
                                                      PlayParams::ProductionMode productionMode) {
    auto params = PlayParams::create(Time(), Time(), Time(), rate, step, playMode, productionMode);
    params->setCurrentFrame(current);
    params->setStartFrame(start);
    params->setEndFrame(end);
    return params;
}

/// Values that no document here holds, so that what was stored can be told from what was not.
[[nodiscard]] inline SharedPtr<PlayParams> sentinel() {
    return makeParams(-901, -902, -903, Rational(-904, 905), -906, unknownPlayMode, unknownProductionMode);
}

/// A document, member by member; each may be replaced, or left out when empty.
struct PlayParamsDocument {
    std::string frameRate = R"("frame_rate":{"numerator":30000,"denominator":1001})";
    std::string step = R"("step":-2)";
    std::string playMode = R"("play_mode":"loop")";
    std::string productionMode = R"("production_mode":"audio_only")";
    std::string currentFrame = R"("current_frame":11)";
    std::string startFrame = R"("start_frame":10)";
    std::string endFrame = R"("end_frame":99)";

    [[nodiscard]] String text() const {
        std::string joined;
        for (auto const* member :
             {&currentFrame, &startFrame, &endFrame, &frameRate, &step, &playMode, &productionMode}) {
            if (member->empty()) continue;
            joined += (joined.empty() ? "" : ",") + *member;
        }
        return String("{" + joined + "}");
    }
};

/// The document with one member replaced, or without it when `replacement` is empty.
[[nodiscard]] inline String with(std::string PlayParamsDocument::*member, std::string const& replacement) {
    PlayParamsDocument document;
    document.*member = replacement;
    return document.text();
}

}  // namespace QRT_0_81
