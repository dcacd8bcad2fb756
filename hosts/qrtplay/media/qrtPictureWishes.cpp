#include "media/qrtPictureWishes.h"

#include <algorithm>
#include <limits>

namespace qrtplay {

void PictureWishes::resolve(std::vector<StoreMedia> const& medias, size_t budgetInBytes) {
    m_budget = budgetInBytes;
    m_keys.clear();
    m_known.clear();
    m_courses.clear();
    size_t bytes = 0;
    for (Wish const& wish : m_wishes) {
        if (wish.media >= medias.size()) continue;
        StoreMedia const& media = medias[wish.media];
        if (media.state() == StoreMedia::State::failed) continue;
        if (media.state() != StoreMedia::State::open) {  // opening takes no part of the budget
            note({wish.media, anyFrame}, true);
            continue;
        }
        const Key key{wish.media, media.frameAt(wish.time)};
        if (!media.holds(key.frame) || contains(key)) continue;
        const bool hasRoom = bytes == 0 || bytes + media.expectedBytes() <= m_budget;
        bytes += media.expectedBytes();
        note(key, hasRoom);
    }
}

bool PictureWishes::hasRoomFor(Key const& key) const {
    const auto found = m_known.find(key);
    return found != m_known.end() && found->second;
}

void PictureWishes::note(Key const& key, bool hasRoom) {
    if (!m_known.emplace(key, hasRoom).second) return;
    m_keys.push_back(key);
    if (key.frame == anyFrame) return;
    Course& course = m_courses.try_emplace(key.media, Course{key.frame}).first->second;
    if (course.isKnown || key.frame == course.first) return;
    course.isKnown = true;
    course.isBackwards = key.frame < course.first;
}

size_t PictureWishes::roomForOthers() const noexcept {
    constexpr size_t share = 64;
    return isEmpty() ? std::numeric_limits<size_t>::max() : m_budget / share;
}

bool PictureWishes::isTimeFor(Key const& key, StoreMedia const& media, size_t bytesAhead) const {
    constexpr size_t share = 40;  // evens out pictures that take long and others that do not
    constexpr size_t atLeast = 4;
    if (bytesAhead == 0) return true;
    if (bytesAhead + media.expectedBytes() > m_budget) return false;  // would push out what is needed earlier
    const bool isNear = bytesAhead < std::max(m_budget / share, atLeast * media.expectedBytes());
    Course const& course = m_courses.at(key.media);
    if (!course.isBackwards) return isNear;

    PictureSource const& pictures = media.pictures();
    const int64 group = pictures.runBegin(course.first);
    const int64 groupBefore = group > 0 ? pictures.runBegin(group - 1) : 0;
    if (!isNear && key.frame < groupBefore) return false;
    const auto length = static_cast<size_t>(key.frame - pictures.runBegin(key.frame) + 1);
    const size_t stretch = length > m_budget / std::max<size_t>(1, media.expectedBytes()) / 2
                               ? m_budget / 2
                               : length * media.expectedBytes();
    return bytesAhead + stretch <= m_budget;
}

}  // namespace qrtplay
