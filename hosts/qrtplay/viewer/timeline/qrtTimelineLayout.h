#pragma once

#include <QRect>
#include <QSize>
#include <utility>

#include "base/qrtKit.h"

namespace qrtplay {

/// Where the rows of a timeline lie in its widget, from the top down.
class TimelineLayout final {
public:
    static constexpr int rulerHeight = 26;
    static constexpr int barHeight = 3;
    static constexpr int markerHeight = 16;
    static constexpr int lowestTrack = 20;
    static constexpr int highestTrack = 48;
    static constexpr int trackSpace = 2;   ///< under each track
    static constexpr int mediumSpace = 6;  ///< more between pictures and sound

    void setSize(QSize size) noexcept;
    void setTracks(size_t video, size_t audio, bool hasMarkers) noexcept;
    /// Positive shows what lies further down. Returns whether anything moved.
    bool scrollBy(int pixels) noexcept;

    [[nodiscard]] QSize size() const noexcept { return m_size; }
    [[nodiscard]] QRect ruler() const noexcept;
    [[nodiscard]] QRect renderedBar() const noexcept;
    [[nodiscard]] QRect decodedBar() const noexcept;
    [[nodiscard]] QRect markers() const noexcept;  ///< empty without any
    [[nodiscard]] QRect tracks() const noexcept;   ///< what is left for all of them
    [[nodiscard]] int trackHeight() const noexcept { return m_trackHeight; }
    /// May lie outside `tracks`, in part or altogether.
    [[nodiscard]] QRect track(size_t index) const noexcept;
    /// Of the tracks that are to be seen: [first, end).
    [[nodiscard]] std::pair<size_t, size_t> visibleTracks() const noexcept;
    [[nodiscard]] int scrolled() const noexcept { return m_scrolled; }
    [[nodiscard]] int tracksHeight() const noexcept;  ///< of all, with the space between them

private:
    void arrange() noexcept;

    QSize m_size;
    size_t m_video = 0;
    size_t m_audio = 0;
    bool m_hasMarkers = false;
    int m_trackHeight = highestTrack;
    int m_scrolled = 0;
};

}  // namespace qrtplay
