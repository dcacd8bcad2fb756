#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// A colour transformation as a function of a fragment shader, `vec4 managed(vec4)` in GLSL 1.30.
struct ColourShader {
    /// A table that the function looks up, in a texture of its own.
    struct Table {
        std::string sampler;
        int dimensions = 1;  ///< of the texture: 1, 2 or 3
        int width = 0;
        int height = 1;
        int depth = 1;
        int channels = 3;      ///< 1 or 3, floats
        bool isLinear = true;  ///< interpolated between the entries
        std::vector<float> values;
    };

    std::string text;
    std::vector<Table> tables;
};

/// Colours as an OpenColorIO configuration defines them, for one display and view of it.
///
/// Threading: any thread may call any method.
class ColourManagement final {
public:
    /// `configPath`: of the configuration; empty for the one that the environment variable OCIO names. An empty
    /// `display` or `view` is the configuration's default. Failures name the configuration, and where a display or a
    /// view is unknown those that there are.
    static Outcome create(std::string const& configPath, std::string const& display, std::string const& view,
                          std::shared_ptr<ColourManagement const>& management);
    ~ColourManagement();
    ColourManagement(ColourManagement const&) = delete;
    ColourManagement& operator=(ColourManagement const&) = delete;

    [[nodiscard]] std::string const& display() const noexcept { return m_display; }
    [[nodiscard]] std::string const& view() const noexcept { return m_view; }
    [[nodiscard]] std::vector<std::string> displays() const;
    /// None when there is no such display.
    [[nodiscard]] std::vector<std::string> views(std::string const& display) const;

    /// From the colour space that the rules of the configuration say the file has, to the display. The same shader for
    /// all files of one colour space.
    Outcome shaderFor(std::string const& filePath, std::shared_ptr<ColourShader const>& shader) const;

private:
    struct Config;

    ColourManagement();
    Outcome choose(std::string const& display, std::string const& view);

    std::string m_configPath;
    std::string m_display;
    std::string m_view;
    std::unique_ptr<Config> m_config;

    mutable std::mutex m_mutex;
    mutable std::map<std::string, std::shared_ptr<ColourShader const>> m_shaders;  // by colour space; under m_mutex
};

}  // namespace qrtplay
