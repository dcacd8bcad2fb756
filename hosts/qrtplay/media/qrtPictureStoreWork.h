#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "media/qrtPictureCache.h"
#include "media/qrtPictureStore.h"
#include "media/qrtPictureWishes.h"
#include "media/qrtStoreMedia.h"

namespace qrtplay {

/// What the picture store does behind its facade: who waits, what is wished for, and the threads that see to both.
///
/// A thread that is free takes what is most urgent: the newest demand, else the first wish that is not kept. What is in
/// the way of a demand is told to give up, and taken up again later. There is one lock; opening, decoding and freeing
/// pictures happen outside of it.
class PictureStore::Work final {
public:
    Work(size_t mediaCount, Open open, size_t budgetInBytes);
    ~Work();
    Work(Work const&) = delete;
    Work& operator=(Work const&) = delete;

    Outcome picture(Wish const& wish, Answer& answer);
    void prepare(std::vector<Wish> wishes);
    void setBudget(size_t bytes);
    [[nodiscard]] size_t sizeInBytes() const;
    void clear();
    [[nodiscard]] bool keptPicture(Wish const& wish, Answer& answer);
    [[nodiscard]] bool isKept(Wish const& wish) const;

private:
    /// Somebody who waits for a picture.
    struct Demand {
        Wish const& wish;
        Answer& answer;
        uint64 serial = 0;
        size_t overtaken = 0;  // by newer ones
        bool isDone = false;
        Outcome outcome{};

        [[nodiscard]] Urgency urgency() const noexcept;
    };
    /// What a thread takes on.
    struct Job {
        enum class Kind { none, open, decode };
        Kind kind = Kind::none;
        size_t media = 0;
        int64 frame = 0;
        StoreSource* source = nullptr;
        StoreSource* restless = nullptr;  // to be put to rest first, because too many are awake
    };
    using Lock = std::unique_lock<std::mutex>;

    // Each of these is called under the lock; those that are given it let go of it for the work itself.
    void work();
    void perform(Job const& job, Lock& lock);
    void open(Job const& job, Lock& lock);
    void decode(Job const& job, Lock& lock);
    void putToRest(StoreSource& source, Lock& lock);

    [[nodiscard]] Job nextJob();
    [[nodiscard]] Job demandedJob();
    [[nodiscard]] Job wishedJob();
    [[nodiscard]] Job openingOf(size_t media);
    [[nodiscard]] Job decodingOf(Key const& key, Urgency urgency);
    [[nodiscard]] StoreSource* leastRecentlyUsedAwake() const;

    [[nodiscard]] bool answerAtOnce(Demand& demand);
    void makeRoomFor(Demand const& demand);
    void noteOvertaking(Demand const& demand);
    void finish(Demand& demand, Outcome outcome);
    template <class Answering>
    void answerDemands(Answering answering);
    [[nodiscard]] PictureCache::Surplus take(Key const& key, FramePtr const& picture, StoreSource& source);
    [[nodiscard]] PictureCache::Surplus resolveWishes();
    [[nodiscard]] bool isWorthKeeping(Key const& key) const;
    [[nodiscard]] bool hasDemandFor(size_t media) const;

    const Open m_open;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;   // there may be work
    std::condition_variable m_answered;  // a demand is done, or one that was done has left
    // All under m_mutex.
    std::vector<StoreMedia> m_medias;
    PictureCache m_cache;
    std::vector<Demand*> m_demands;  // the oldest first
    PictureWishes m_wishes;
    std::vector<StoreSource*> m_busy;
    uint64 m_serial = 0;
    uint64 m_generation = 0;
    size_t m_waiting = 0;  // calls that have not left yet
    size_t m_idleThreads = 0;
    size_t m_openings = 0;
    size_t m_awake = 0;
    bool m_isEnding = false;

    std::vector<std::thread> m_threads;  // last: they use everything above
};

}  // namespace qrtplay
