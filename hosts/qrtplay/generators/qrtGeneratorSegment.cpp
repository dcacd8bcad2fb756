#include "generators/qrtGeneratorSegment.h"

#include <algorithm>
#include <climits>

#include "foundation/core/qrtNotificationHint.h"

namespace qrtplay {

GeneratorSegment::GeneratorSegment(Generator const& generator) : m_id(generator.id), m_generator(generator) {}

Generator GeneratorSegment::generator() const {
    const std::lock_guard lock(m_mutex);
    return m_generator;
}

void GeneratorSegment::setText(std::string const& text) {
    Generator changed;
    {
        const std::lock_guard lock(m_mutex);
        if (m_generator.text == text) return;
        m_generator.text = text;
        changed = m_generator;
    }
    if (changed.kind == Generator::Kind::title) notifyOf(changed);
}

void GeneratorSegment::setColour(std::vector<double> const& colour) {
    Generator changed;
    {
        const std::lock_guard lock(m_mutex);
        if (m_generator.colour == colour) return;
        m_generator.colour = colour;
        changed = m_generator;
    }
    if (changed.kind == Generator::Kind::title || changed.kind == Generator::Kind::solid_colour) notifyOf(changed);
}

void GeneratorSegment::notifyOf(Generator const& changed) {
    const int64 lastFrame = std::clamp<int64>(changed.frameCount - 1, 0, INT_MAX);
    m_subject.notify(InvalidationHint(0, static_cast<int>(lastFrame)));
}

void* GeneratorSegment::getOwnRamBuffer(VideoBufferResolution const&) {
    return nullptr;
}

unsigned int GeneratorSegment::getOwnTexture(unsigned int) {
    return 0;
}

}  // namespace qrtplay
