#pragma once

#include <algorithm>
#include <limits>
#include <optional>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"
#include "player/qrtPlayParams.h"

namespace qrtplay {

/// Which sound of a timeline belongs to which sample of a run's stream; `SoundFeed` tells the rules.
///
/// A tick and a frame begin with the first sample at their time or later. Both are computed from their numbers and
/// never by adding up, so that sound and pictures stay together however long a run lasts.
///
/// Threading: one thread.
class SoundOrder final {
public:
    /// A part of the stream: one stretch of the timeline's sound, or silence.
    struct Piece {
        int64 count = 0;
        std::optional<int64> first;  ///< sample of the timeline; none: silence
    };

    /// `order` is copied. All is silent when the rate is not positive.
    SoundOrder(PlayParams& order, Rational const& rate, int32 sampleRate)
        : m_order(order.clone()), m_rate(rate), m_sampleRate(sampleRate, 1) {
        if (rate.getNumerator() > 0 && rate.getDenominator() > 0) beginTick();
    }

    /// The piece that begins at sample `position` of the stream, 1 to `most` samples long. Positions never go back.
    [[nodiscard]] Piece pieceFrom(int64 position, int64 most) {
        while (m_tickEnd <= position)
            nextTick();
        const std::optional<int64> lead = m_lead;
        int64 end = m_tickEnd;
        for (; end - position < most; end = m_tickEnd) {
            nextTick();
            if (m_lead != lead) break;
        }
        Piece piece{std::min(most, end - position), {}};
        if (lead) piece.first = position + *lead;
        return piece;
    }

private:
    void nextTick() {
        ++m_tick;
        if (m_order->next()) return beginTick();
        m_lead.reset();
        m_tickEnd = never;
    }

    void beginTick() {
        const int64 frame = m_order->getCurrentFrame();
        const bool isHeard = m_order->getStep() == 1 && frame >= 0;
        if (!isHeard)
            m_lead.reset();
        else if (!m_lead || frame - 1 != m_frame)  // else it goes on; a frame may be a sample longer than its tick
            m_lead = firstSampleOf(frame) - firstSampleOf(m_tick);
        m_frame = frame;
        m_tickEnd = firstSampleOf(m_tick + 1);
    }

    [[nodiscard]] int64 firstSampleOf(int64 frame) const noexcept {
        return ExactTime::ofFrame(frame, m_rate).frameFrom(m_sampleRate);
    }

    static constexpr int64 never = std::numeric_limits<int64>::max();

    const SharedPtr<PlayParams> m_order;  // at the frame of m_tick
    const Rational m_rate;
    const Rational m_sampleRate;
    int64 m_tick = 0;
    int64 m_frame = 0;
    int64 m_tickEnd = never;      // in samples of the stream
    std::optional<int64> m_lead;  // of the timeline's samples over those of the stream; none in silence
};

}  // namespace qrtplay
