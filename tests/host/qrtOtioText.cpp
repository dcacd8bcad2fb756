#include "host/qrtOtioText.h"

#include <fstream>

namespace qrtplay {

void writeText(std::string const& path, std::string const& text) {
    std::ofstream(path, std::ios::binary) << text;
}

namespace otio {

namespace {

std::string object(std::string const& schema, std::string const& members) {
    return R"({"OTIO_SCHEMA": ")" + schema + "\", " + members + "}";
}

std::string list(std::vector<std::string> const& values) {
    std::string text = "[";
    for (std::string const& value : values)
        text += (text.size() > 1 ? ", " : "") + value;
    return text + "]";
}

std::string time(double value, double rate) {
    return object("RationalTime.1", R"("rate": )" + std::to_string(rate) + R"(, "value": )" + std::to_string(value));
}

std::string range(Range const& range) {
    return object("TimeRange.1", R"("start_time": )" + time(range.start, range.rate) + R"(, "duration": )" +
                                     time(range.duration, range.rate));
}

std::string effects(std::string const& effect) {
    return R"("effects": )" + list(effect.empty() ? std::vector<std::string>{} : std::vector{effect});
}

}  // namespace

std::string file(std::string const& path) {
    return object("ExternalReference.1", R"("target_url": ")" + path + R"(", "available_range": null)");
}

std::string images(std::string const& folder, std::string const& prefix, std::string const& suffix, int firstNumber,
                   int step, double rate, int frames) {
    return object("ImageSequenceReference.1", R"("target_url_base": ")" + folder + R"(", "name_prefix": ")" + prefix +
                                                  R"(", "name_suffix": ")" + suffix + R"(", "start_frame": )" +
                                                  std::to_string(firstNumber) + R"(, "frame_step": )" +
                                                  std::to_string(step) + R"(, "rate": )" + std::to_string(rate) +
                                                  R"(, "frame_zero_padding": 4, "available_range": )" +
                                                  range({0, static_cast<double>(frames), rate}));
}

std::string generator(std::string const& kind, std::string const& parameters) {
    return object("GeneratorReference.1", R"("generator_kind": ")" + kind + R"(", "parameters": )" + parameters);
}

std::string clip(std::string const& reference, Range const& sourceRange, std::string const& effect) {
    return object("Clip.1", R"("name": "clip", "source_range": )" + range(sourceRange) + R"(, "media_reference": )" +
                                reference + ", " + effects(effect));
}

std::string gap(Range const& sourceRange) {
    return object("Gap.1", R"("source_range": )" + range(sourceRange));
}

std::string dissolve(double in, double out, double rate) {
    return object("Transition.1", R"("transition_type": "SMPTE_Dissolve", "in_offset": )" + time(in, rate) +
                                      R"(, "out_offset": )" + time(out, rate));
}

std::string speed(double factor) {
    return object("LinearTimeWarp.1", R"("time_scalar": )" + std::to_string(factor));
}

std::string freeze() {
    return object("FreezeFrame.1", R"("time_scalar": 0)");
}

std::string track(std::string const& kind, std::vector<std::string> const& children) {
    return object("Track.1", R"("kind": ")" + kind + R"(", "children": )" + list(children));
}

std::string stack(std::vector<std::string> const& tracks, std::optional<Range> const& sourceRange,
                  std::string const& effect) {
    const std::string trimmed = sourceRange ? R"("source_range": )" + range(*sourceRange) + ", " : std::string();
    return object("Stack.1", trimmed + R"("children": )" + list(tracks) + ", " + effects(effect));
}

std::string timeline(std::vector<std::string> const& tracks) {
    return object("Timeline.1", R"("name": "test", "tracks": )" + stack(tracks));
}

}  // namespace otio

}  // namespace qrtplay
