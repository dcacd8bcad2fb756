#include "qrtEngineModel.h"

#include <algorithm>

namespace QRT_0_81 {

namespace {

constexpr char releasing[] = "Releasing frameNumber = ";

std::string textOf(int64 number) {
    return std::to_string(number);
}

}  // namespace

// ---- Playback

bool ModelParams::next() {
    if (step == 0) return false;
    const int64 before = current;
    current = before + step;
    const bool isInside = step > 0 ? current <= end : current >= start;
    if (mode == single || isInside) return mode != single || isInside;
    if (mode == loop) {
        current = step > 0 ? start : end;
        return true;
    }
    current = before - step;
    if (step > 0 ? current < start : current > end) current = before;
    step = -step;
    return true;
}

void ModelParams::seek(int64 frame) {
    const bool turns = (frame > current && step < 0) || (frame < current && step > 0);
    if (mode == ping_pong && turns) step = -step;
    current = frame;
}

ModelParams ModelParams::reversed() const {
    ModelParams other = *this;
    other.step = -step;
    return other;
}

// ---- Log

void ModelLog::expect(std::string const& line) {
    if (!m_fault.empty()) return;
    if (m_next == m_lines.size()) {
        m_fault = "no line where '" + line + "' should be";
    } else if (m_lines[m_next] != line) {
        m_fault = "'" + m_lines[m_next] + "' instead of '" + line + "'";
    }
    ++m_next;
}

int64 ModelLog::choice(std::string const& prefix) {
    if (m_fault.empty() && (m_next == m_lines.size() || m_lines[m_next].rfind(prefix, 0) != 0))
        m_fault = (m_next == m_lines.size() ? "nothing" : "'" + m_lines[m_next] + "'") + " instead of '" + prefix + "'";
    return m_fault.empty() ? std::stoll(m_lines[m_next++].substr(prefix.size())) : -1;
}

std::string ModelLog::fault() const {
    if (m_fault.empty() && m_next < m_lines.size()) return "'" + m_lines[m_next] + "' behind the last line";
    return m_fault;
}

std::string ModelLog::text() const {
    std::string text;
    for (std::string const& line : m_lines)
        text += "\n  " + line;
    return text;
}

// ---- Pools

EngineModel::EngineModel() {
    ModelLog silent({"ResourcePoolFBO::initialize()-numAllocatedFBO=4"});
    resizePools(silent);
}

void EngineModel::setUp(ModelLog& log, ModelPool& pool, uint64 size, int newWidth) {
    if (pool.size == size && pool.width == newWidth && (pool.isInitialized || size == 0)) return;
    if (pool.isInitialized) {
        if (pool.isFramebuffers)
            log.expect("ResourcePoolFBO::uninitialize()-numDeletedFBO=" + std::to_string(pool.numFree));
        pool.lent.clear();
        pool.numFree = 0;
        pool.isInitialized = false;
    }
    pool.size = size;
    pool.width = newWidth;
    if (size == 0) return;
    if (pool.isFramebuffers) log.expect("ResourcePoolFBO::initialize()-numAllocatedFBO=" + std::to_string(size));
    pool.numFree = size;
    pool.isInitialized = true;
}

void EngineModel::resizePools(ModelLog& log) {
    const auto count = static_cast<uint64>(head + tail + 2);
    setUp(log, framebuffers, count, width);
    setUp(log, blocks, ramOutputs ? count : 0, width);
}

std::optional<int> EngineModel::lend(ModelLog& log, ModelPool& pool, bool onDemand) {
    while (pool.numFree == 0 || (pool.numFree == 1 && !onDemand))
        if (evict(log, onDemand) == 0 || log.isLost()) return std::nullopt;
    --pool.numFree;
    log.expect("Locking " + pool.one + " remaining " + std::to_string(pool.numFree));
    pool.lent.insert(m_nextBuffer);
    m_buffers[m_nextBuffer] = {&pool, 1};
    return m_nextBuffer++;
}

void EngineModel::release(ModelLog& log, int buffer) {
    Buffer& known = m_buffers.at(buffer);
    if (--known.numReferences > 0) return;
    ModelPool& pool = *known.pool;
    pool.numFree += pool.lent.erase(buffer);
    if (isProducing && !m_isLookingAhead) queue.push_back({CmdType::produce_next_video_buffer});
    log.expect("Releasing " + pool.one + " remaining " + std::to_string(pool.numFree));
    m_buffers.erase(buffer);
}

// ---- Cache

void EngineModel::removeRecord(ModelLog& log, int64 frame) {
    const auto record = cache.find(frame);
    if (record == cache.end()) return log.expect("a frame that is cached instead of " + textOf(frame));
    const int buffer = record->second;
    cache.erase(record);
    release(log, buffer);
}

void EngineModel::clear(ModelLog& log) {
    while (!cache.empty() && !log.isLost())
        removeRecord(log, log.choice(releasing));
}

size_t EngineModel::evict(ModelLog& log, bool onDemand) {
    if (cache.empty()) return 0;
    const bool isAnyUnwanted =
        isProducing && std::any_of(cache.begin(), cache.end(), [&](auto const& r) { return !isWanted(r.first); });
    const size_t numEvicted = isAnyUnwanted || onDemand ? 1 : 0;
    if (numEvicted > 0) {
        const int64 frame = log.choice(releasing);
        if (isAnyUnwanted && isWanted(frame)) log.expect("a frame that is not wanted instead of " + textOf(frame));
        removeRecord(log, frame);
    }
    log.expect(std::string(onDemand ? "_cacheEvictOne()" : "_cacheTryEvictOne()") +
               " - after - numEvicted = " + std::to_string(numEvicted));
    return numEvicted;
}

bool EngineModel::isWanted(int64 frame) const {
    if (frame == params.current) return true;
    const auto isReached = [frame](ModelParams walk, int count) {
        for (int i = 0; i < count; ++i)
            if (walk.next() && walk.current == frame) return true;
        return false;
    };
    return isReached(params, head) || isReached(params.reversed(), tail);
}

// ---- Production

std::optional<int64> EngineModel::nextFrame() const {
    if (!isProducing) return std::nullopt;
    if (cache.count(params.current) == 0) return params.current;
    ModelParams ahead = params;
    for (int i = 0; i < head; ++i) {
        if (!ahead.next()) return std::nullopt;
        if (cache.count(ahead.current) == 0) return ahead.current;
    }
    ModelParams behind = params.reversed();
    for (int i = 0; i < tail; ++i) {
        if (!behind.next()) return std::nullopt;
        if (cache.count(behind.current) == 0) return behind.current;
    }
    return std::nullopt;
}

int EngineModel::moveTo(int64 frame) {
    if (!isProducing || frame < params.start || frame > params.end) return Status::ok;
    params.seek(frame);
    engineStep = params.step;
    queue.push_back({CmdType::produce_next_video_buffer});
    return Status::ok;
}

int EngineModel::produce(ModelLog& log, int64 frame, bool onDemand, std::optional<int>& buffer) {
    if (const auto cached = cache.find(frame); cached != cache.end()) {
        buffer = cached->second;
        ++m_buffers.at(*buffer).numReferences;
        return Status::ok;
    }
    const auto rendered = lend(log, framebuffers, onDemand);
    if (!rendered) return Status::no_resource;
    if (std::exchange(isRenderFailing, false)) {
        release(log, *rendered);
        return 4711;
    }
    std::optional<int> result = rendered;
    if (ramOutputs) {
        result = lend(log, blocks, onDemand);
        if (!result) {
            release(log, *rendered);
            return Status::no_resource;
        }
    }
    log.expect((ramOutputs ? "Produced RAMOutput frameNumber = " : "Produced VRAMOutput frameNumber = ") +
               textOf(frame));
    cache[frame] = *result;
    ++m_buffers.at(*result).numReferences;
    buffer = result;
    const int status = onDemand ? moveTo(frame) : int{Status::ok};
    if (ramOutputs) release(log, *rendered);
    return status;
}

int EngineModel::produceNext(ModelLog& log) {
    const std::optional<int64> frame = nextFrame();
    if (!frame) {
        log.expect("PlayerImpl::_produceNextVideoBuffer() has no more frames to produce.");
        return Status::ok;
    }
    log.expect("PlayerImpl::_produceNextVideoBuffer() - Trying to produce frameNumber = " + textOf(*frame));
    m_isLookingAhead = true;
    std::optional<int> buffer;
    const int status = produce(log, *frame, false, buffer);
    if (buffer) release(log, *buffer);
    m_isLookingAhead = false;
    if (status != Status::ok) {
        log.expect("Stop producing because status failure = " + std::to_string(status));
    } else {
        queue.push_back({CmdType::produce_next_video_buffer});
    }
    return status;
}

// ---- Commands

int EngineModel::start(ModelLog& log, ModelParams const& wanted) {
    if (isProducing) return Status::already_producing;
    if (wanted.start < 0 || wanted.end > numFrames - 1 || wanted.current < wanted.start ||
        wanted.current > wanted.end) {
        log.expect("Player invalid play params. Player starts at " + textOf(wanted.start) + " ends at " +
                   textOf(wanted.end) + " @ 24/1 and currentFrame is " + textOf(wanted.current) +
                   ". Composition starts at 0 and ends at " + textOf(numFrames - 1) + ".");
        return Status::invalid_play_params;
    }
    params = wanted;
    engineStep = params.step;
    isProducing = true;
    queue.push_back({CmdType::produce_next_video_buffer});
    return Status::ok;
}

int EngineModel::setRamOutputs(ModelLog& log, bool wanted) {
    if (wanted == ramOutputs) return Status::ok;
    if (isProducing) return Status::not_while_producing;
    clear(log);
    ramOutputs = wanted;
    resizePools(log);
    return Status::ok;
}

int EngineModel::setWidth(ModelLog& log, int wanted) {
    if (wanted <= 0) return Status::invalid_argument;
    if (wanted == width) return Status::ok;
    if (isProducing) return Status::not_while_producing;
    clear(log);
    for (ModelPool* const pool : {&framebuffers, &blocks})
        if (pool->isInitialized) setUp(log, *pool, pool->size, wanted);
    width = wanted;
    return Status::ok;
}

int EngineModel::setCount(ModelLog& log, int& count, int wanted) {
    if (isProducing) return Status::not_while_producing;
    if (wanted < 0) return Status::invalid_argument;
    if (std::exchange(count, wanted) != wanted) resizePools(log);
    return Status::ok;
}

int EngineModel::run(ModelLog& log, Command& done, std::optional<int>& buffer) {
    done = queue.front();
    queue.pop_front();
    int status = Status::ok;
    switch (done.type) {
        case CmdType::start_producing: return start(log, done.params);
        case CmdType::stop_producing: isProducing = false; return Status::ok;
        case CmdType::set_composition:
            if (isProducing) status = Status::not_while_producing;
            clear(log);  // the host's part, whatever the result
            return status;
        case CmdType::set_video_resolution: return setWidth(log, static_cast<int>(done.number));
        case CmdType::set_ram_outputs: return setRamOutputs(log, done.number != 0);
        case CmdType::set_pref: return setCount(log, done.params.step > 0 ? head : tail, static_cast<int>(done.number));
        case CmdType::produce_video_buffer: return produce(log, done.number, true, buffer);
        case CmdType::produce_next_video_buffer: return produceNext(log);
        case CmdType::update_current_frame_number: return moveTo(done.number);
        default: return Status::general_failure;
    }
}

// ---- Hosts

int EngineModel::fetch(ModelLog& log, int64 frame, std::optional<int>& buffer) {
    if (frame < 0 || frame > numFrames) return Status::out_of_range;
    log.expect("getVideoBuffer()-before frameNumber = " + textOf(frame));
    buffer = cache.at(frame);
    ++m_buffers.at(*buffer).numReferences;
    log.expect("getVideoBuffer()-after frameNumber = " + textOf(frame));
    noteFetched(frame);
    return Status::ok;
}

void EngineModel::noteFetched(int64 frame) {
    if (!isProducing || frame < params.start || frame > params.end) return;
    const auto updateAt = [this](size_t i) -> std::optional<int64> {
        if (i >= queue.size() || queue[i].type != CmdType::update_current_frame_number) return std::nullopt;
        return queue[i].number;
    };
    const auto first = updateAt(0);
    const auto second = first ? updateAt(1) : std::nullopt;
    const bool isOverruled = first && ((second && *second != *first) || *first == frame);
    if (!isOverruled) queue.push_front({CmdType::update_current_frame_number, frame});
}

void EngineModel::drop(ModelLog& log, int buffer) {
    release(log, buffer);
}

void EngineModel::invalidate(ModelLog& log) {
    if (cache.empty()) return;
    clear(log);
    log.expect("Flushed player cache");
}

}  // namespace QRT_0_81
