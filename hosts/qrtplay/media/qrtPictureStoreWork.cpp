#include "media/qrtPictureStoreWork.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace qrtplay {

namespace {

/// Sources that hold memory and open files at a time; a timeline may have hundreds of media.
constexpr size_t mostAwake = 24;

size_t threadCount() {
    return std::clamp(std::thread::hardware_concurrency(), 2u, 4u);
}

Outcome hasEnded() {
    return Outcome::failure("a picture is no longer decoded, because playing has ended");
}

}  // namespace

Urgency PictureStore::Work::Demand::urgency() const noexcept {
    constexpr size_t patience = 8;
    return overtaken < patience ? serial : std::numeric_limits<Urgency>::max() - serial;
}

PictureStore::Work::Work(size_t mediaCount, Open open, size_t budgetInBytes)
    : m_open(std::move(open)), m_medias(mediaCount), m_cache(budgetInBytes) {
    const Lock lock(m_mutex);
    for (size_t i = 0; i < threadCount(); ++i)
        m_threads.emplace_back([this] { work(); });
}

PictureStore::Work::~Work() {
    {
        const Lock lock(m_mutex);
        m_isEnding = true;
        for (StoreSource* const source : m_busy)
            source->givesUp = true;
        answerDemands([this](Demand& demand) { finish(demand, hasEnded()); });
        m_changed.notify_all();
    }
    for (std::thread& thread : m_threads)
        thread.join();
    Lock lock(m_mutex);
    m_answered.wait(lock, [this] { return m_waiting == 0; });
}

Outcome PictureStore::Work::picture(Wish const& wish, Answer& answer) {
    Lock lock(m_mutex);
    if (wish.media >= m_medias.size())
        return Outcome::failure("there is no media number " + std::to_string(wish.media));
    Demand demand{wish, answer, ++m_serial};
    if (answerAtOnce(demand)) return demand.outcome;

    ++m_waiting;
    m_demands.push_back(&demand);
    makeRoomFor(demand);
    m_changed.notify_all();
    m_answered.wait(lock, [&demand] { return demand.isDone; });
    --m_waiting;
    m_answered.notify_all();
    return demand.outcome;
}

void PictureStore::Work::prepare(std::vector<Wish> wishes) {
    PictureCache::Surplus surplus;  // ends after the lock
    const Lock lock(m_mutex);
    m_wishes.set(wishes);
    surplus = resolveWishes();
    m_changed.notify_all();
}

void PictureStore::Work::setBudget(size_t bytes) {
    std::array<PictureCache::Surplus, 2> surplus;  // ends after the lock
    const Lock lock(m_mutex);
    surplus[0] = m_cache.setBudget(bytes);
    surplus[1] = resolveWishes();
    m_changed.notify_all();
}

size_t PictureStore::Work::sizeInBytes() const {
    const Lock lock(m_mutex);
    return m_cache.sizeInBytes();
}

void PictureStore::Work::clear() {
    PictureCache::Surplus surplus;
    const Lock lock(m_mutex);
    surplus = m_cache.clear();
    ++m_generation;
    for (StoreMedia& media : m_medias)
        media.forgetFailures();
    std::vector<Wish> none;
    m_wishes.set(none);
    (void)resolveWishes();  // nothing is kept any more
}

bool PictureStore::Work::keptPicture(Wish const& wish, Answer& answer) {
    const Lock lock(m_mutex);
    if (wish.media >= m_medias.size() || m_medias[wish.media].state() != StoreMedia::State::open) return false;
    StoreMedia const& media = m_medias[wish.media];
    const Key key{wish.media, media.frameAt(wish.time)};
    FramePtr picture = m_cache.get(key);
    if (!picture) return false;
    answer = {std::move(picture), media.pictures().facts(), media.pictures().path(), key};
    return true;
}

bool PictureStore::Work::isKept(Wish const& wish) const {
    const Lock lock(m_mutex);
    if (wish.media >= m_medias.size() || m_medias[wish.media].state() != StoreMedia::State::open) return false;
    const int64 frame = m_medias[wish.media].frameAt(wish.time);
    return !m_medias[wish.media].holds(frame) || m_cache.contains({wish.media, frame});
}

// ---- Demands

/// Answers what needs no work; false when it does.
bool PictureStore::Work::answerAtOnce(Demand& demand) {
    StoreMedia const& media = m_medias[demand.wish.media];
    if (m_isEnding) {
        finish(demand, hasEnded());
    } else if (media.state() == StoreMedia::State::failed) {
        finish(demand, media.failure());
    } else if (media.state() == StoreMedia::State::open) {
        const Key key{demand.wish.media, media.frameAt(demand.wish.time)};
        demand.answer = {m_cache.get(key), media.pictures().facts(), media.pictures().path(), key};
        if (demand.answer.picture || !media.holds(key.frame)) finish(demand, Outcome());
    }
    return demand.isDone;
}

void PictureStore::Work::finish(Demand& demand, Outcome outcome) {
    demand.outcome = std::move(outcome);
    demand.isDone = true;
}

/// Lets `answering` finish some of those who wait.
template <class Answering>
void PictureStore::Work::answerDemands(Answering answering) {
    const auto isAnswered = [&](Demand* demand) {
        answering(*demand);
        return demand->isDone;
    };
    if (std::erase_if(m_demands, isAnswered) > 0) m_answered.notify_all();
}

// The threads may all be busy with what is less urgent. One of them is asked to step back for each demand that has
// none; it is asked once, so that a demand whose own source is taken does not keep others from their work again and
// again.
void PictureStore::Work::makeRoomFor(Demand const& demand) {
    size_t needed = 0;
    for (const Demand* const waiting : m_demands) {
        StoreMedia& media = m_medias[waiting->wish.media];
        const bool isUnderWay = media.state() == StoreMedia::State::opening ||
                                (media.state() == StoreMedia::State::open &&
                                 media.isBeingDecoded(media.frameAt(waiting->wish.time), waiting->urgency()));
        if (!isUnderWay) ++needed;
        if (isUnderWay && waiting == &demand) return;
    }
    size_t free = m_idleThreads;
    StoreSource* leastUrgent = nullptr;
    for (StoreSource* const source : m_busy) {
        if (source->givesUp)
            ++free;
        else if (source->urgency < demand.urgency() && (!leastUrgent || source->urgency < leastUrgent->urgency))
            leastUrgent = source;
    }
    if (needed > free && leastUrgent) leastUrgent->givesUp = true;
}

void PictureStore::Work::noteOvertaking(Demand const& demand) {
    for (Demand* const other : m_demands) {
        if (other->serial < demand.serial) ++other->overtaken;
    }
}

// ---- Wishes

PictureCache::Surplus PictureStore::Work::resolveWishes() {
    m_wishes.resolve(m_medias, m_cache.budgetInBytes());
    m_cache.setWishes(m_wishes.keys());
    for (size_t media = 0; media < m_medias.size(); ++media) {
        for (auto const& source : m_medias[media].sources()) {
            if (source->isBusy && source->urgency == decodingAhead && !m_wishes.contains({media, source->target}))
                source->givesUp = true;
        }
    }
    return m_cache.setRoomForOthers(m_wishes.roomForOthers());
}

/// Whether a picture that is passed on the way to another should be decoded, if that can be avoided.
bool PictureStore::Work::isWorthKeeping(Key const& key) const {
    if (m_wishes.isEmpty() || m_wishes.hasRoomFor(key)) return true;
    return std::any_of(m_demands.begin(), m_demands.end(), [&](Demand const* demand) {
        return demand->wish.media == key.media && m_medias[key.media].frameAt(demand->wish.time) == key.frame;
    });
}

bool PictureStore::Work::hasDemandFor(size_t media) const {
    return std::any_of(m_demands.begin(), m_demands.end(),
                       [media](Demand const* demand) { return demand->wish.media == media; });
}

// ---- What to do next

PictureStore::Work::Job PictureStore::Work::nextJob() {
    if (const Job job = demandedJob(); job.kind != Job::Kind::none) return job;
    return wishedJob();
}

PictureStore::Work::Job PictureStore::Work::demandedJob() {
    std::vector<Demand*> byUrgency = m_demands;
    std::sort(byUrgency.begin(), byUrgency.end(),
              [](Demand const* a, Demand const* b) { return a->urgency() > b->urgency(); });
    for (const Demand* const demand : byUrgency) {
        StoreMedia const& media = m_medias[demand->wish.media];
        Job job;
        if (media.state() == StoreMedia::State::closed)
            job = openingOf(demand->wish.media);
        else if (media.state() == StoreMedia::State::open)
            job = decodingOf({demand->wish.media, media.frameAt(demand->wish.time)}, demand->urgency());
        if (job.kind == Job::Kind::none) continue;
        noteOvertaking(*demand);
        return job;
    }
    return {};
}

PictureStore::Work::Job PictureStore::Work::wishedJob() {
    size_t ahead = 0;
    bool isFull = false;
    for (Key const& wish : m_wishes.keys()) {
        StoreMedia const& media = m_medias[wish.media];
        if (wish.frame == PictureWishes::anyFrame) {
            // Opening cannot be given up, so one thread stays free of it for demands.
            const bool mayOpen = media.state() == StoreMedia::State::closed && m_openings + 1 < m_threads.size();
            if (mayOpen) return openingOf(wish.media);
            continue;
        }
        if (isFull || media.hasFailed(wish.frame)) continue;
        const size_t kept = m_cache.bytesAt(wish);
        isFull = kept == 0 && !m_wishes.isTimeFor(wish, media, ahead);
        ahead += kept > 0 ? kept : media.expectedBytes();
        if (isFull || kept > 0) continue;
        // Another run through the same media would take the processors from the one that is waited for.
        if (hasDemandFor(wish.media) && media.pictures().runBegin(wish.frame) < wish.frame) continue;
        if (const Job job = decodingOf(wish, decodingAhead); job.kind != Job::Kind::none) return job;
    }
    return {};
}

PictureStore::Work::Job PictureStore::Work::openingOf(size_t media) {
    m_medias[media].beginToOpen();
    ++m_openings;
    return {Job::Kind::open, media};
}

PictureStore::Work::Job PictureStore::Work::decodingOf(Key const& key, Urgency urgency) {
    StoreSource* const source = m_medias[key.media].choose(key.frame, urgency);
    if (!source) return {};
    StoreMedia::begin(*source, key.frame, urgency);
    source->generation = m_generation;
    source->lastUse = ++m_serial;
    if (!std::exchange(source->isAwake, true)) ++m_awake;
    m_busy.push_back(source);

    StoreSource* const restless = m_awake > mostAwake ? leastRecentlyUsedAwake() : nullptr;
    if (restless) {
        restless->isBusy = true;
        restless->target = StoreSource::nowhere;
        restless->urgency = std::numeric_limits<Urgency>::max();
    }
    return {Job::Kind::decode, key.media, key.frame, source, restless};
}

StoreSource* PictureStore::Work::leastRecentlyUsedAwake() const {
    StoreSource* found = nullptr;
    for (StoreMedia const& media : m_medias) {
        for (auto const& source : media.sources()) {
            if (source->isAwake && !source->isBusy && (!found || source->lastUse < found->lastUse))
                found = source.get();
        }
    }
    return found;
}

// ---- The threads

void PictureStore::Work::work() {
    Lock lock(m_mutex);
    while (!m_isEnding) {
        if (const Job job = nextJob(); job.kind != Job::Kind::none) {
            perform(job, lock);
            m_changed.notify_all();  // a source is free, or a media is open
        } else {
            ++m_idleThreads;
            m_changed.wait(lock);
            --m_idleThreads;
        }
    }
}

void PictureStore::Work::perform(Job const& job, Lock& lock) {
    if (job.restless) putToRest(*job.restless, lock);
    if (job.kind == Job::Kind::open)
        open(job, lock);
    else
        decode(job, lock);
}

void PictureStore::Work::putToRest(StoreSource& source, Lock& lock) {
    lock.unlock();
    source.pictures->rest();
    lock.lock();
    source.isBusy = source.isAwake = false;
    source.passed = StoreSource::nowhere;
    --m_awake;
    m_changed.notify_all();
}

void PictureStore::Work::open(Job const& job, Lock& lock) {
    lock.unlock();
    std::unique_ptr<PictureSource> source;
    const Outcome outcome = m_open(job.media, source);
    lock.lock();
    --m_openings;
    StoreMedia& media = m_medias[job.media];
    media.finishOpening(outcome, std::move(source));
    m_awake += media.sources().size();
    answerDemands([&](Demand& demand) {
        if (demand.wish.media == job.media) (void)answerAtOnce(demand);
    });
    PictureCache::Surplus surplus = resolveWishes();
    lock.unlock();
    surplus.clear();
    lock.lock();
}

void PictureStore::Work::decode(Job const& job, Lock& lock) {
    StoreSource& source = *job.source;
    const auto keep = [&](int64 frame, FramePtr const& picture) {
        PictureCache::Surplus surplus;  // ends after the lock
        const Lock keeping(m_mutex);
        source.passed = std::max(source.passed, std::min(frame, job.frame));
        surplus = take({job.media, frame}, picture, source);
    };
    const auto isWanted = [&](int64 frame) {
        if (frame == job.frame) return !source.givesUp;
        const Lock asking(m_mutex);
        return isWorthKeeping({job.media, frame});
    };

    lock.unlock();
    FramePtr picture;
    std::string why;
    const PictureSource::Result result = source.pictures->frame(job.frame, keep, isWanted, picture, why);
    // However a source goes about telling of what it comes by, the picture itself is there.
    if (result == PictureSource::Result::picture) keep(job.frame, picture);
    picture.reset();
    lock.lock();

    source.isBusy = false;
    std::erase(m_busy, &source);
    if (result != PictureSource::Result::failure) return;
    source.passed = StoreSource::nowhere;
    m_medias[job.media].noteFailure(job.frame);
    answerDemands([&](Demand& demand) {
        if (demand.wish.media == job.media && m_medias[job.media].frameAt(demand.wish.time) == job.frame)
            finish(demand, Outcome::failure(why));
    });
}

/// Keeps a picture and hands it to those who wait for it.
PictureCache::Surplus PictureStore::Work::take(Key const& key, FramePtr const& picture, StoreSource& source) {
    StoreMedia& media = m_medias[key.media];
    media.notePicture(PictureCache::bytesOf(*picture));
    answerDemands([&](Demand& demand) {
        if (demand.wish.media != key.media || media.frameAt(demand.wish.time) != key.frame) return;
        demand.answer = {picture, media.pictures().facts(), media.pictures().path(), key};
        finish(demand, Outcome());
    });
    // What began before everything was cleared is not meant to stay.
    return source.generation == m_generation ? m_cache.put(key, picture) : PictureCache::Surplus();
}

}  // namespace qrtplay
