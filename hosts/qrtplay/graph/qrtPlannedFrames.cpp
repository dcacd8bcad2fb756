#include "graph/qrtPlannedFrames.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

namespace {

void addPictures(FrameNode const& node, std::vector<PictureStore::Wish>& pictures) {
    if (node.kind == FrameNode::Kind::media) pictures.push_back({node.source, node.time});
    for (FrameNode const& child : node.children)
        addPictures(child, pictures);
}

}  // namespace

std::vector<PictureStore::Wish> picturesOf(FrameNode const& plan) {
    std::vector<PictureStore::Wish> pictures;
    addPictures(plan, pictures);
    return pictures;
}

void PlannedFrames::add(int64 frame, std::vector<PictureStore::Wish> pictures) {
    m_frames[frame] = {std::move(pictures), false};
    if (m_frames.size() <= mostFrames) return;
    const bool firstIsFarther = frame - m_frames.begin()->first > m_frames.rbegin()->first - frame;
    m_frames.erase(firstIsFarther ? m_frames.begin() : std::prev(m_frames.end()));
}

void PlannedFrames::collect(PictureStore const& store, CacheStats& stats) {
    auto& ranges = stats.getFrameRanges();
    for (auto planned = m_frames.begin(); planned != m_frames.end();) {
        const int64 frame = planned->first;
        auto const& pictures = planned->second.pictures;
        const bool kept =
            !pictures.empty() && std::all_of(pictures.begin(), pictures.end(),
                                             [&store](auto const& picture) { return store.isKept(picture); });
        if (!kept) {
            planned = planned->second.wasKept || pictures.empty() ? m_frames.erase(planned) : std::next(planned);
            continue;
        }
        planned->second.wasKept = true;
        if (!ranges.empty() && ranges.back().last == frame - 1)
            ranges.back().last = frame;
        else
            ranges.push_back({frame, frame});
        ++planned;
    }
}

}  // namespace qrtplay
