#include "timeline/qrtOtioSource.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "timeline/qrtImageSequencePattern.h"

namespace qrtplay {

namespace {

namespace fs = std::filesystem;
using rapidjson::Value;

std::string fileNameOf(std::string const& path) {
    return fs::path(path).filename().string();
}

bool isOtioFile(std::string const& path) {
    std::string ending = fs::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".otio";
}

constexpr char outsideOfAllowed[] = "lies outside of the folders that --allow-path names";

/// Reads one media reference.
class SourceReader final {
public:
    SourceReader(OtioObject const& reference, std::string const& clipName, std::string const& folder, OtioRun& run)
        : m_reference(reference), m_folder(folder), m_run(run) {
        m_source.available = readRange(reference, "available_range");
        const std::string name = reference.name();
        m_source.media.name = clipName.empty() ? name : clipName;
    }

    OtioSource read() {
        m_source.kind = OtioSource::Kind::media;
        if (m_reference.is("ExternalReference")) {
            readFile();
        } else if (m_reference.is("ImageSequenceReference")) {
            readImages();
        } else if (m_reference.is("GeneratorReference")) {
            readGenerator();
        } else if (!m_reference.is("MissingReference") && !m_reference.is("MediaReference")) {
            m_source.kind = OtioSource::Kind::nothing;
            m_run.warnOnce(m_reference, "'" + oneLine(m_reference.schema()) + "' is not known: a gap takes its place");
        }
        return std::move(m_source);
    }

private:
    void missing(std::string const& address, std::string const& why) {
        m_source.media.kind = MediaReference::Kind::missing;
        m_source.media.path = address;
        m_run.warn(m_reference, "'" + oneLine(address) + "' " + why);
    }

    void readFile() {
        if (!m_reference.find("target_url")) m_reference.fail("target_url is missing");
        const std::string address = m_reference.text("target_url");
        std::string path;
        if (const Outcome outcome = resolveOtioAddress(address, m_folder, path); outcome.failed())
            return missing(address, outcome.message());
        if (!m_run.allowed.allow(path)) return missing(path, outsideOfAllowed);
        std::error_code error;
        if (isOtioFile(path) && !fs::is_regular_file(path, error)) return missing(path, "is not there");
        if (isOtioFile(path)) m_source.kind = OtioSource::Kind::timeline;
        m_source.path = path;
        m_source.media.kind = MediaReference::Kind::file;
        m_source.media.path = path;
        m_source.media.name = fileNameOf(path);
    }

    void readImages() {
        ImageSequenceName images = readImageNames();
        const std::string address = m_reference.text("target_url_base");
        std::string base = m_folder;
        if (!address.empty()) {
            if (const Outcome outcome = resolveOtioAddress(address, m_folder, base); outcome.failed())
                return missing(address, outcome.message());
        }
        // A prefix may begin with folders.
        const fs::path first = fs::path(base) / images.prefix;
        images.folder = first.parent_path().string();
        images.prefix = images.prefix.empty() ? "" : first.filename().string();
        if (!m_run.allowed.allow(images)) return missing(images.text(), outsideOfAllowed);
        setLastNumber(images);
        m_source.media.kind = MediaReference::Kind::image_sequence;
        m_source.media.images = images;
        m_source.media.name = fileNameOf(images.text());
    }

    ImageSequenceName readImageNames() {
        constexpr int64 largestNumber = 1'000'000'000;
        constexpr int64 largestStep = 100'000;
        constexpr int64 mostDigits = 20;
        const auto numberWithin = [&](char const* member, int64 otherwise, int64 least, int64 most) {
            const int64 number = m_reference.wholeNumber(member).value_or(otherwise);
            if (number < least || number > most)
                m_reference.fail(std::string(member) + " is not between " + std::to_string(least) + " and " +
                                 std::to_string(most));
            return number;
        };
        ImageSequenceName images;
        images.firstNumber = numberWithin("start_frame", 1, -largestNumber, largestNumber);
        images.step = numberWithin("frame_step", 1, 1, largestStep);
        images.digits = static_cast<size_t>(numberWithin("frame_zero_padding", 0, 0, mostDigits));
        images.prefix = m_reference.text("name_prefix");
        images.suffix = m_reference.text("name_suffix");
        if (images.suffix.find('/') != std::string::npos) m_reference.fail("name_suffix has a folder in it");
        if ((images.prefix + images.suffix).find('\0') != std::string::npos)
            m_reference.fail("the name has a zero byte in it");
        std::optional<Rational> rate = readRate(m_reference, "rate");
        if (!rate && m_source.available) rate = m_source.available->rate;
        if (!rate) m_reference.fail("rate is missing");
        // With steps each picture stays for as many frames.
        images.rate = Rational(rate->getNumerator(), rate->getDenominator() * static_cast<uint32>(images.step));
        images.lastNumber = images.firstNumber;
        return images;
    }

    void setLastNumber(ImageSequenceName& images) {
        constexpr int64 mostImages = 1'000'000'000;
        if (m_source.available) {
            const int64 count = m_source.available->duration.frameFrom(images.rate);
            images.lastNumber = images.firstNumber + (std::clamp<int64>(count, 1, mostImages) - 1) * images.step;
            return;
        }
        ImageSequenceName found = images;
        if (findNumbers(found).failed() || found.lastNumber < images.firstNumber) return;
        const int64 count = (found.lastNumber - images.firstNumber) / images.step + 1;
        images.lastNumber = images.firstNumber + (count - 1) * images.step;
        m_source.available = OtioRange{ExactTime(), ExactTime::ofFrame(count, images.rate), images.rate};
    }

    void readGenerator() {
        const std::optional<Generator> generator = readOtioGenerator(m_reference, m_run);
        m_source.kind = generator ? OtioSource::Kind::generator : OtioSource::Kind::nothing;
        if (generator) m_source.generator = *generator;
        m_source.generator.name = m_source.media.name;
    }

    OtioObject const& m_reference;
    std::string const& m_folder;
    OtioRun& m_run;
    OtioSource m_source;
};

/// The active one of several references by name.
Value const* activeReference(OtioObject const& clip, Value const& references, std::string const& key) {
    if (references.MemberCount() == 0) return nullptr;
    for (auto const& reference : references.GetObject()) {
        if (std::string_view(reference.name.GetString(), reference.name.GetStringLength()) != key) continue;
        return reference.value.IsNull() ? nullptr : &reference.value;
    }
    clip.fail("active_media_reference_key '" + oneLine(key) + "' is none of media_references");
}

}  // namespace

OtioSource readOtioSource(OtioObject const& clip, std::string const& folder, OtioRun& run) {
    std::string member = "media_reference";
    Value const* value = nullptr;
    if (Value const* references = clip.findObject("media_references")) {
        std::string key = clip.text("active_media_reference_key");
        if (key.empty()) key = "DEFAULT_MEDIA";
        value = activeReference(clip, *references, key);
        member = "media_references/" + key;
    } else {
        value = clip.findObject("media_reference");
    }
    if (!value) {
        OtioSource none;
        none.kind = OtioSource::Kind::media;
        none.media.name = clip.name();
        return none;
    }
    const OtioObject reference(*value, clip, member.c_str());
    return SourceReader(reference, clip.name(), folder, run).read();
}

}  // namespace qrtplay
