#include <QString>

#include "info/qrtInfoText.h"
#include "playback/qrtTimecode.h"
#include "render/qrtJsonText.h"

namespace qrtplay {

namespace {

char const* nameOf(TrackView::Kind kind) {
    return kind == TrackView::Kind::video ? "video" : "audio";
}

char const* nameOf(TrackItem::Kind kind) {
    switch (kind) {
        case TrackItem::Kind::clip: return "clip";
        case TrackItem::Kind::gap: return "gap";
        case TrackItem::Kind::transition: return "transition";
        case TrackItem::Kind::stack: break;
    }
    return "stack";
}

char const* nameOf(MediaReference::Kind kind) {
    switch (kind) {
        case MediaReference::Kind::file: return "file";
        case MediaReference::Kind::image_sequence: return "image_sequence";
        case MediaReference::Kind::missing: break;
    }
    return "missing";
}

std::string clockText(ExactTime const& time, Rational const& rate) {
    return timecode(time.nearestFrame(rate), rate);
}

std::string sourceText(TrackItem const& item, Timeline const& timeline) {
    if (item.media && *item.media < timeline.media().size()) return timeline.media()[*item.media].text();
    if (item.generator && *item.generator < timeline.generators().size())
        return "generated: " + timeline.generators()[*item.generator].name;
    return "";
}

/// A line below a heading; what it says may come from anywhere.
std::string indentedLine(std::string const& text) {
    return "  " + printable(text) + "\n";
}

std::string itemRow(TrackItem const& item, Timeline const& timeline) {
    const std::string place = clockText(item.start, timeline.rate()) + "  " + clockText(item.duration, timeline.rate());
    std::string text = place + "  " + nameOf(item.kind);
    if (!item.name.empty()) text += " " + item.name;
    if (const std::string source = sourceText(item, timeline); !source.empty()) text += "  <- " + source;
    return indentedLine(text);
}

void addItem(JsonText& json, TrackItem const& item, Timeline const& timeline) {
    json.beginObject().add("kind", nameOf(item.kind)).add("name", item.name);
    json.add("start", item.start.seconds()).add("seconds", item.duration.seconds());
    if (item.media && *item.media < timeline.media().size())
        json.add("media", timeline.media()[*item.media].text());
    else
        json.addNull("media");
    if (item.generator && *item.generator < timeline.generators().size())
        json.add("generator", timeline.generators()[*item.generator].name);
    else
        json.addNull("generator");
    json.endObject();
}

}  // namespace

std::string timelineTable(std::string const& path, Timeline const& timeline, std::vector<std::string> const& problems) {
    std::string table = infoRow("timeline", path) + infoRow("name", timeline.name());
    table += infoRow("rate", rateText(timeline.rate()) + " frames/s (" + fractionText(timeline.rate()) + ")");
    table += infoRow("frames", std::to_string(timeline.frameCount()));
    table += infoRow("duration", durationText(timeline.duration().seconds()));
    table += infoRow("timecode", clockText(timeline.clockStart(), timeline.rate()));
    for (TrackView const& track : timeline.tracks()) {
        table += "\n" + std::string(nameOf(track.kind)) + " track " + printable(track.name) + "\n";
        for (TrackItem const& item : track.items)
            table += itemRow(item, timeline);
    }
    if (!timeline.markers().empty()) table += "\nmarkers\n";
    for (Marker const& marker : timeline.markers())
        table += indentedLine(clockText(marker.start, timeline.rate()) + "  " + marker.name +
                              (marker.colour.empty() ? "" : " (" + marker.colour + ")"));
    if (!timeline.media().empty()) table += "\nmedia\n";
    for (size_t i = 0; i < timeline.media().size(); ++i)
        table += indentedLine(timeline.media()[i].text() + (problems[i].empty() ? "" : "  PROBLEM: " + problems[i]));
    if (!timeline.warnings().empty()) table += "\nwarnings\n";
    for (std::string const& warning : timeline.warnings())
        table += indentedLine(warning);
    return table;
}

std::string timelineJson(std::string const& path, Timeline const& timeline, std::vector<std::string> const& problems) {
    JsonText json;
    json.beginObject().add("kind", "timeline").add("path", path).add("name", timeline.name());
    json.add("rate", fractionText(timeline.rate())).add("frames", timeline.frameCount());
    json.add("seconds", timeline.duration().seconds())
        .add("timecode", clockText(timeline.clockStart(), timeline.rate()));
    json.beginArray("tracks");
    for (TrackView const& track : timeline.tracks()) {
        json.beginObject().add("kind", nameOf(track.kind)).add("name", track.name).beginArray("items");
        for (TrackItem const& item : track.items)
            addItem(json, item, timeline);
        json.endArray().endObject();
    }
    json.endArray().beginArray("media");
    for (size_t i = 0; i < timeline.media().size(); ++i) {
        MediaReference const& media = timeline.media()[i];
        json.beginObject()
            .add("text", media.text())
            .add("kind", nameOf(media.kind))
            .add("problem", problems[i])
            .endObject();
    }
    json.endArray().beginArray("generators");
    for (Generator const& generator : timeline.generators())
        json.beginObject().add("name", generator.name).add("text", generator.text).endObject();
    json.endArray().beginArray("markers");
    for (Marker const& marker : timeline.markers())
        json.beginObject()
            .add("name", marker.name)
            .add("colour", marker.colour)
            .add("start", marker.start.seconds())
            .add("seconds", marker.duration.seconds())
            .endObject();
    json.endArray().add("warnings", timeline.warnings());
    return json.endObject().text() + "\n";
}

}  // namespace qrtplay
