#pragma once

#include <list>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtSoundSource.h"

namespace qrtplay {

/// Sound that is made in blocks of one length, each of them always in the same way, so that the same numbers come out
/// in whatever order and portions they are asked for. The blocks used last are kept, so that requests which overlap or
/// go backwards make nothing anew.
class BlockedSoundSource : public SoundSource {
public:
    Outcome read(int64 first, int64 count, float* samples) final;

protected:
    BlockedSoundSource(int64 samplesPerBlock, int channels) : m_length(samplesPerBlock), m_channels(channels) {}

    [[nodiscard]] int64 samplesPerBlock() const noexcept { return m_length; }
    [[nodiscard]] int channels() const noexcept { return m_channels; }
    /// Writes the block that begins with sample `first`, a multiple of the length, into memory that is silent so far.
    virtual Outcome makeBlock(int64 first, float* samples) = 0;

private:
    struct Block {
        int64 first;
        std::vector<float> samples;
    };

    Outcome blockAt(int64 first, std::vector<float> const*& samples);

    const int64 m_length;
    const int m_channels;
    std::list<Block> m_blocks;  // most recently used first
};

}  // namespace qrtplay
