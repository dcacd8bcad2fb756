#include "graph/qrtColourManagement.h"

#include <OpenColorIO/OpenColorIO.h>

#include <algorithm>

#include "foundation/core/qrtPlatform.h"

namespace qrtplay {

namespace ocio = OCIO_NAMESPACE;

struct ColourManagement::Config {
    ocio::ConstConfigRcPtr config;
};

namespace {

/// What the library says in several lines, as one.
std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

bool contains(std::vector<std::string> const& names, std::string const& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string list(std::vector<std::string> const& names) {
    if (names.empty()) return "there are none";
    std::string text = "there are: ";
    for (std::string const& name : names)
        text += (&name == &names.front() ? "" : ", ") + name;
    return text;
}

bool isLinear(ocio::Interpolation interpolation) {
    return interpolation != ocio::INTERP_NEAREST;
}

ColourShader::Table planarTable(ocio::GpuShaderDesc const& description, unsigned index) {
    char const* texture = nullptr;
    char const* sampler = nullptr;
    unsigned width = 0;
    unsigned height = 0;
    ocio::GpuShaderDesc::TextureType channels = ocio::GpuShaderDesc::TEXTURE_RGB_CHANNEL;
    ocio::Interpolation interpolation = ocio::INTERP_LINEAR;
    float const* values = nullptr;
    description.getTexture(index, texture, sampler, width, height, channels, interpolation);
    description.getTextureValues(index, values);

    ColourShader::Table table;
    table.sampler = sampler;
    table.dimensions = height > 1 ? 2 : 1;
    table.width = static_cast<int>(width);
    table.height = static_cast<int>(height);
    table.channels = channels == ocio::GpuShaderDesc::TEXTURE_RED_CHANNEL ? 1 : 3;
    table.isLinear = isLinear(interpolation);
    table.values.assign(values, values + size_t{width} * height * static_cast<size_t>(table.channels));
    return table;
}

ColourShader::Table cubicTable(ocio::GpuShaderDesc const& description, unsigned index) {
    char const* texture = nullptr;
    char const* sampler = nullptr;
    unsigned edge = 0;
    ocio::Interpolation interpolation = ocio::INTERP_LINEAR;
    float const* values = nullptr;
    description.get3DTexture(index, texture, sampler, edge, interpolation);
    description.get3DTextureValues(index, values);

    ColourShader::Table table;
    table.sampler = sampler;
    table.dimensions = 3;
    table.width = table.height = table.depth = static_cast<int>(edge);
    table.isLinear = isLinear(interpolation);
    table.values.assign(values, values + size_t{edge} * edge * edge * 3);
    return table;
}

std::shared_ptr<ColourShader const> describe(ocio::ConstProcessorRcPtr const& processor) {
    ocio::GpuShaderDescRcPtr description = ocio::GpuShaderDesc::CreateShaderDesc();
    description->setLanguage(ocio::GPU_LANGUAGE_GLSL_1_3);
    description->setFunctionName("managed");
    description->setResourcePrefix("ocio_");
    processor->getDefaultGPUProcessor()->extractGpuShaderInfo(description);

    auto shader = std::make_shared<ColourShader>();
    shader->text = description->getShaderText();
    for (unsigned i = 0; i < description->getNumTextures(); ++i)
        shader->tables.push_back(planarTable(*description, i));
    for (unsigned i = 0; i < description->getNum3DTextures(); ++i)
        shader->tables.push_back(cubicTable(*description, i));
    return shader;
}

}  // namespace

ColourManagement::ColourManagement() : m_config(std::make_unique<Config>()) {}
ColourManagement::~ColourManagement() = default;

Outcome ColourManagement::create(std::string const& configPath, std::string const& display, std::string const& view,
                                 std::shared_ptr<ColourManagement const>& management) {
    std::shared_ptr<ColourManagement> made(new ColourManagement());
    made->m_configPath = configPath;
    if (configPath.empty()) {
        char const* const environment = Platform::getenv("OCIO");
        if (!environment || *environment == '\0')
            return Outcome::failure(
                "colour management: no configuration is named, and the environment variable OCIO is "
                "not set");
        made->m_configPath = environment;
    }
    try {
        made->m_config->config = ocio::Config::CreateFromFile(made->m_configPath.c_str());
        made->m_config->config->validate();
        if (Outcome outcome = made->choose(display, view); outcome.failed()) return outcome;
    } catch (std::exception const& error) {
        return Outcome::failure(made->m_configPath + ": " + oneLine(error.what()));
    }
    management = std::move(made);
    return Outcome();
}

Outcome ColourManagement::choose(std::string const& display, std::string const& view) {
    m_display = display.empty() ? m_config->config->getDefaultDisplay() : display;
    if (const auto known = displays(); !contains(known, m_display))
        return Outcome::failure(m_configPath + ": no display is called '" + m_display + "'; " + list(known));
    m_view = view.empty() ? m_config->config->getDefaultView(m_display.c_str()) : view;
    if (const auto known = views(m_display); !contains(known, m_view))
        return Outcome::failure(m_configPath + ": no view of the display '" + m_display + "' is called '" + m_view +
                                "'; " + list(known));
    return Outcome();
}

std::vector<std::string> ColourManagement::displays() const {
    const int count = m_config->config->getNumDisplays();
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        names.emplace_back(m_config->config->getDisplay(i));
    return names;
}

std::vector<std::string> ColourManagement::views(std::string const& display) const {
    const int count = m_config->config->getNumViews(display.c_str());
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        names.emplace_back(m_config->config->getView(display.c_str(), i));
    return names;
}

Outcome ColourManagement::shaderFor(std::string const& filePath, std::shared_ptr<ColourShader const>& shader) const {
    try {
        const std::string space = m_config->config->getColorSpaceFromFilepath(filePath.c_str());
        const std::lock_guard lock(m_mutex);
        std::shared_ptr<ColourShader const>& known = m_shaders[space];
        if (!known) {
            const ocio::DisplayViewTransformRcPtr transform = ocio::DisplayViewTransform::Create();
            transform->setSrc(space.c_str());
            transform->setDisplay(m_display.c_str());
            transform->setView(m_view.c_str());
            known = describe(m_config->config->getProcessor(transform));
        }
        shader = known;
    } catch (std::exception const& error) {
        return Outcome::failure("colour management with " + m_configPath + ": " + oneLine(error.what()));
    }
    return Outcome();
}

}  // namespace qrtplay
