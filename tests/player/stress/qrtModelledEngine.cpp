#include "qrtModelledEngine.h"

#include <QOpenGLBuffer>
#include <QOpenGLContext>

namespace QRT_0_81 {

namespace {

VideoBufferResolution formatOf(int64 width) {
    return {static_cast<int32>(width), 8, 4, 8, false};
}

SharedPtr<PlayParams> paramsOf(ModelParams const& params) {
    const Rational rate(24, 1);
    return PlayParams::create(Time(params.current, rate), Time(params.start, rate),
                              Time(params.end - params.start + 1, rate), rate, params.step,
                              static_cast<PlayParams::PlayMode>(params.mode), PlayParams::video_only);
}

}  // namespace

ModelledEngine::ModelledEngine(PlayerImpl& engine) : m_engine(engine) {
    LogMsg::setSink([](LogMsg const&) {});
    FailingGraphEngine::isFailing() = false;
    ModelParams ahead;
    ModelParams behind;
    behind.step = -1;
    for (Command const& command : {Command{CmdType::stop_producing},
                                   {CmdType::set_composition},
                                   {CmdType::set_ram_outputs, 0},
                                   {CmdType::set_video_resolution, m_model.width},
                                   {CmdType::set_pref, m_model.head, ahead},
                                   {CmdType::set_pref, m_model.tail, behind},
                                   {CmdType::start_producing, 0, m_model.params},
                                   {CmdType::stop_producing}}) {
        Caller caller;
        commandOf(command, caller)->execute(m_engine);
        require(caller.status.success(), "the engine can be brought to where the model begins");
    }
    Inspector::queue(m_engine).discardAll();
    (void)Inspector::cache(m_engine).clear();
    m_segment.addObserver(&m_engine);
    LogMsg::setSink([this](LogMsg const& message) { m_lines.push_back(LogCapture::withoutPrefix(message.text())); });
}

ModelledEngine::~ModelledEngine() {
    LogMsg::setSink([](LogMsg const&) {});
    (void)Inspector::stopProducing(m_engine);
    m_held.clear();
    (void)Inspector::cache(m_engine).clear();
    Inspector::queue(m_engine).discardAll();
}

void ModelledEngine::require(bool holds, std::string const& what) {
    if (!holds && m_fault.empty()) m_fault = what;
}

ModelLog ModelledEngine::takeLog() {
    return ModelLog(std::exchange(m_lines, {}));
}

std::unique_ptr<Cmd> ModelledEngine::commandOf(Command const& command, Caller& caller) {
    switch (command.type) {
        case CmdType::start_producing:
            caller.params = paramsOf(command.params);
            return make<Inspector::CmdStartProducing>(caller, caller.params);
        case CmdType::stop_producing: return make<Inspector::CmdStopProducing>(caller);
        case CmdType::set_composition:
            return make<Inspector::CmdSetComposition>(caller, FakeComposition::create(0, EngineModel::numFrames),
                                                      List<SharedPtr<ExternalSegment>>());
        case CmdType::set_video_resolution:
            return make<Inspector::CmdSetVideoResolution>(caller, formatOf(command.number));
        case CmdType::set_ram_outputs: return make<Inspector::CmdSetRamOutputs>(caller, command.number != 0);
        case CmdType::produce_video_buffer:
            return make<Inspector::CmdProduceVideoBuffer>(caller, command.number, true, caller.buffer);
        default:
            return make<Inspector::CmdSetPref>(
                caller,
                command.params.step > 0 ? Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES : Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES,
                static_cast<int>(command.number));
    }
}

void ModelledEngine::post(Command const& command) {
    Caller& caller = m_callers.emplace_back();
    Command modelled = command;
    modelled.result = m_nextCaller;
    m_waiting[m_nextCaller++] = &caller;
    if (command.type == CmdType::produce_video_buffer) {
        caller.frame = command.number;
        Inspector::queue(m_engine).pushFront(commandOf(command, caller));
        m_model.postFront(modelled);
    } else {
        Inspector::queue(m_engine).pushBack(commandOf(command, caller));
        m_model.postBack(modelled);
    }
    compare("post", takeLog());
}

void ModelledEngine::fetch(int64 frame) {
    const bool isInRange = frame >= 0 && frame <= EngineModel::numFrames;
    // A host that has to wait does its part behind the production when that is done.
    if (isInRange && m_model.cache.count(frame) == 0) return post({CmdType::produce_video_buffer, frame});
    SharedPtr<VideoBuffer> buffer;
    const Status status = m_engine.getVideoBuffer(frame, buffer);
    ModelLog log = takeLog();
    std::optional<int> modelled;
    require(status.get() == m_model.fetch(log, frame, modelled), "fetch: another status");
    if (buffer && modelled) m_held.push_back({buffer, *modelled});
    compare("fetch", log);
}

void ModelledEngine::finishFetch(int id, bool isSuccess, std::optional<int> const& modelled) {
    Caller& caller = *m_waiting.at(id);
    if (!isSuccess) return;
    m_held.push_back({caller.buffer, modelled.value_or(-1)});
    caller.buffer.reset();
    if (Inspector::isProducing(m_engine)) Inspector::postCurrentFrameNumber(m_engine, caller.frame);
    m_model.noteFetched(caller.frame);
}

void ModelledEngine::drop(size_t which) {
    const int modelled = m_held[which].modelled;
    m_held.erase(m_held.begin() + static_cast<std::ptrdiff_t>(which));
    ModelLog log = takeLog();
    m_model.drop(log, modelled);
    compare("drop", log);
}

void ModelledEngine::invalidate() {
    m_segment.notify(InvalidationHint(0, 1));
    ModelLog log = takeLog();
    m_model.invalidate(log);
    compare("invalidation", log);
}

void ModelledEngine::letRenderFail() {
    FailingGraphEngine::isFailing() = m_model.isRenderFailing = true;
}

void ModelledEngine::runOne() {
    std::unique_ptr<Cmd> command = Inspector::queue(m_engine).take();
    const CmdType type = command->type();
    command->execute(m_engine);
    command.reset();
    if (type == CmdType::set_composition) (void)Inspector::cache(m_engine).clear();  // the host's part
    ModelLog log = takeLog();
    Command done;
    std::optional<int> modelled;
    const int status = m_model.run(log, done, modelled);
    require(done.type == type, "command " + std::to_string(static_cast<int>(type)) + " instead of " +
                                   std::to_string(static_cast<int>(done.type)));
    if (!m_fault.empty()) return;
    if (const auto waiting = m_waiting.find(done.result); waiting != m_waiting.end()) {
        const Status answered = waiting->second->status;
        require(answered.get() == status, "command " + std::to_string(static_cast<int>(type)) + " answers " +
                                              std::to_string(answered.get()) + " instead of " + std::to_string(status));
        if (type == CmdType::produce_video_buffer) finishFetch(done.result, answered.success(), modelled);
    }
    compare("command", log);
}

void ModelledEngine::compare(char const* what, ModelLog const& log) {
    require(log.fault().empty(), std::string(what) + ": line " + log.fault());
    require(Inspector::queue(m_engine).size() == m_model.queue.size(),
            std::string(what) + ": " + std::to_string(Inspector::queue(m_engine).size()) + " commands instead of " +
                std::to_string(m_model.queue.size()));
    std::set<int64> cached;
    for (CachedFrame const& frame : cachedFrames(m_engine))
        cached.insert(frame.number);
    std::set<int64> expected;
    for (auto const& record : m_model.cache)
        expected.insert(record.first);
    require(cached == expected, std::string(what) + ": other frames are cached");
    require(Inspector::isProducing(m_engine) == m_model.isProducing, std::string(what) + ": another state");
    PlayParams const& params = Inspector::playParams(m_engine);
    require(params.getCurrentFrame() == m_model.params.current && params.getStep() == m_model.params.step,
            std::string(what) + ": playback is elsewhere");
    require(m_engine.getGraphEngine()->getStep() == m_model.engineStep,
            std::string(what) + ": the graph engine was told another step");
    comparePool("framebuffers", ResourcePoolInspector::stateOf(Inspector::fboPool(m_engine)), m_model.framebuffers);
    comparePool("blocks", ResourcePoolInspector::stateOf(Inspector::ramPool(m_engine)), m_model.blocks);
    if (!m_fault.empty()) m_fault += "; the lines of the last step:" + log.text();
}

void ModelledEngine::comparePool(char const* name, PoolState const& pool, ModelPool const& model) {
    const uint64 size = model.isInitialized ? model.size : 0;
    require(pool.size == size && pool.numFree == model.numFree && pool.lent.size() == model.lent.size(),
            std::string(name) + ": " + std::to_string(pool.numFree) + " free and " + std::to_string(pool.lent.size()) +
                " lent of " + std::to_string(pool.size) + " instead of " + std::to_string(model.numFree) + ", " +
                std::to_string(model.lent.size()) + " and " + std::to_string(size));
}

}  // namespace QRT_0_81
