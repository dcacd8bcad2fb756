#include "sound/qrtBlockedSoundSource.h"

#include <algorithm>

namespace qrtplay {

namespace {

// A request that crosses from one block into the next, the same again, and one neighbour on either side.
constexpr size_t keptBlocks = 4;

// So far away there is no sound, and positions can still be added up.
constexpr int64 farthest = int64{1} << 60;

int64 blockStart(int64 sample, int64 length) {
    const int64 rest = sample % length;
    return sample - (rest < 0 ? rest + length : rest);
}

}  // namespace

Outcome BlockedSoundSource::read(int64 first, int64 count, float* samples) {
    if (count <= 0) return Outcome();
    std::fill_n(samples, count * m_channels, 0.0f);
    if (first > farthest || first < -farthest || count > farthest) return Outcome();

    Outcome worst;
    const int64 end = first + count;
    for (int64 start = blockStart(first, m_length); start < end; start += m_length) {
        std::vector<float> const* block = nullptr;
        if (Outcome outcome = blockAt(start, block); outcome.failed()) worst = outcome;
        const int64 from = std::max(first, start);
        const int64 until = std::min(end, start + m_length);
        std::copy_n(block->data() + (from - start) * m_channels, (until - from) * m_channels,
                    samples + (from - first) * m_channels);
    }
    return worst;
}

Outcome BlockedSoundSource::blockAt(int64 first, std::vector<float> const*& samples) {
    const auto known =
        std::find_if(m_blocks.begin(), m_blocks.end(), [&](Block const& block) { return block.first == first; });
    if (known != m_blocks.end()) {
        m_blocks.splice(m_blocks.begin(), m_blocks, known);
        samples = &known->samples;
        return Outcome();
    }
    if (m_blocks.size() < keptBlocks)
        m_blocks.emplace_front();
    else
        m_blocks.splice(m_blocks.begin(), m_blocks, std::prev(m_blocks.end()));
    Block& block = m_blocks.front();
    block.first = first;
    block.samples.assign(static_cast<size_t>(m_length * m_channels), 0.0f);
    samples = &block.samples;
    return makeBlock(first, block.samples.data());
}

}  // namespace qrtplay
