#pragma once

#include <map>
#include <vector>

#include "base/qrtKit.h"
#include "media/qrtPictureStore.h"
#include "media/qrtStoreMedia.h"

namespace qrtplay {

/// What will be needed next, by frame, and when decoding it ahead should begin.
///
/// Going forward a few pictures ahead are enough, as decoding keeps the pace of playing. Going backwards the group of
/// frames before the one that is being played has to be there when it is reached, and all of it at once; when a group
/// is larger than the budget, it is decoded in stretches of half the budget, each as soon as there is room for it.
/// Threading: none of its own; the store's lock guards it.
class PictureWishes final {
public:
    using Wish = PictureStore::Wish;
    using Key = PictureStore::Key;

    /// Stands for the frames of a media whose rate is not known yet: it has to be opened.
    static constexpr int64 anyFrame = -1;

    /// Takes the place of what was wished for before; to be resolved.
    void set(std::vector<Wish>& wishes) { m_wishes.swap(wishes); }
    /// Turns times into frames, as far as media are open.
    void resolve(std::vector<StoreMedia> const& medias, size_t budgetInBytes);

    /// Each once, the most urgent first.
    [[nodiscard]] std::vector<Key> const& keys() const noexcept { return m_keys; }
    [[nodiscard]] bool contains(Key const& key) const { return m_known.contains(key); }
    /// Whether the budget has room for a picture beside the more urgent ones.
    [[nodiscard]] bool hasRoomFor(Key const& key) const;
    /// Nobody says what is needed next.
    [[nodiscard]] bool isEmpty() const noexcept { return m_wishes.empty(); }
    /// Of pictures that nobody wishes for so much is worth keeping.
    [[nodiscard]] size_t roomForOthers() const noexcept;

    /// Whether decoding of a picture that is wished for should begin, when what goes before it takes up `bytesAhead`.
    [[nodiscard]] bool isTimeFor(Key const& key, StoreMedia const& media, size_t bytesAhead) const;

private:
    /// The way that playing takes through a media.
    struct Course {
        int64 first;
        bool isBackwards = false;
        bool isKnown = false;
    };

    void note(Key const& key, bool hasRoom);

    std::vector<Wish> m_wishes;
    std::vector<Key> m_keys;
    std::map<Key, bool> m_known;         // and whether there is room for it
    std::map<size_t, Course> m_courses;  // by media
    size_t m_budget = 0;
};

}  // namespace qrtplay
