#pragma once

#include "common/graph_engine.h"
#include "common/paint.h"

namespace examples {

/// Draws a light bar that moves to the right with every frame, an eighth of the picture wide.
class BarGraphEngine : public GraphEngine {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create() {
        return SharedPtr<GraphEngineInterface>(new BarGraphEngine);
    }

    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override {
        const int width = resolution.getWidth();
        const int height = resolution.getHeight();
        const int left = static_cast<int>(frame * width / 64 % width);
        fill(texture, {0, 0, width, height}, {0.1f, 0.2f, 0.4f});
        fill(texture, {left, 0, width / 8, height}, {1.0f, 0.9f, 0.6f});
        return Status();
    }
};

}  // namespace examples
