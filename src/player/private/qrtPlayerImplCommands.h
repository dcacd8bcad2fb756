#pragma once

#include <new>

#include "qrtPlayerImpl.h"

namespace QRT_0_81 {

// The commands of the player thread: each carries one request across and calls the engine's method for it. The
// synchronous ones refer to their caller's arguments, which live until the caller wakes.

class PlayerImpl::CmdStartProducing final : public CmdSynchronous {
public:
    CmdStartProducing(Status* status, CmdCompletion* completion, SharedPtr<PlayParams> const& params)
        : CmdSynchronous(CmdType::start_producing, status, completion), m_params(params) {}

private:
    Status run(PlayerImpl& engine) override { return engine._startProducing(m_params); }

    SharedPtr<PlayParams> const& m_params;
};

class PlayerImpl::CmdStopProducing final : public CmdSynchronous {
public:
    CmdStopProducing(Status* status, CmdCompletion* completion)
        : CmdSynchronous(CmdType::stop_producing, status, completion) {}

private:
    Status run(PlayerImpl& engine) override { return engine._stopProducing(); }
};

class PlayerImpl::CmdSetComposition final : public CmdSynchronous {
public:
    CmdSetComposition(Status* status, CmdCompletion* completion, SharedPtr<Composition> const& composition,
                      List<SharedPtr<ExternalSegment>> const& externalSegments)
        : CmdSynchronous(CmdType::set_composition, status, completion),
          m_composition(composition),
          m_externalSegments(externalSegments) {}

private:
    Status run(PlayerImpl& engine) override { return engine._setComposition(m_composition, m_externalSegments); }

    const SharedPtr<Composition> m_composition;
    const List<SharedPtr<ExternalSegment>> m_externalSegments;
};

class PlayerImpl::CmdUpdateComposition final : public CmdSynchronous {
public:
    CmdUpdateComposition(Status* status, CmdCompletion* completion, SharedPtr<Composition> const& composition,
                         String const& description)
        : CmdSynchronous(CmdType::update_composition, status, completion),
          m_composition(composition),
          m_description(description) {}

private:
    Status run(PlayerImpl& engine) override { return engine._updateComposition(m_composition, m_description); }

    const SharedPtr<Composition> m_composition;
    const String m_description;
};

class PlayerImpl::CmdSetVideoResolution final : public CmdSynchronous {
public:
    CmdSetVideoResolution(Status* status, CmdCompletion* completion, VideoBufferResolution const& resolution)
        : CmdSynchronous(CmdType::set_video_resolution, status, completion), m_resolution(resolution) {}

private:
    Status run(PlayerImpl& engine) override { return engine._setVideoResolution(m_resolution); }

    const VideoBufferResolution m_resolution;
};

class PlayerImpl::CmdSetVideoFrameRate final : public CmdSynchronous {
public:
    CmdSetVideoFrameRate(Status* status, CmdCompletion* completion, Rational const& rate)
        : CmdSynchronous(CmdType::set_video_frame_rate, status, completion), m_rate(rate) {}

private:
    Status run(PlayerImpl& engine) override { return engine._setVideoFrameRate(m_rate); }

    const Rational m_rate;
};

class PlayerImpl::CmdSetAudioFormat final : public CmdSynchronous {
public:
    CmdSetAudioFormat(Status* status, CmdCompletion* completion, ConstSharedPtr<AudioFormatInterface> const& format)
        : CmdSynchronous(CmdType::set_audio_format, status, completion), m_format(format) {}

private:
    Status run(PlayerImpl& engine) override { return engine._setAudioFormat(m_format); }

    const ConstSharedPtr<AudioFormatInterface> m_format;
};

class PlayerImpl::CmdSetRamOutputs final : public CmdSynchronous {
public:
    CmdSetRamOutputs(Status* status, CmdCompletion* completion, bool ramOutputs)
        : CmdSynchronous(CmdType::set_ram_outputs, status, completion), m_ramOutputs(ramOutputs) {}

private:
    Status run(PlayerImpl& engine) override { return engine._setRamOutputs(m_ramOutputs); }

    const bool m_ramOutputs;
};

class PlayerImpl::CmdSetPref final : public CmdSynchronous {
public:
    CmdSetPref(Status* status, CmdCompletion* completion, String const& name, int value)
        : CmdSynchronous(CmdType::set_pref, status, completion), m_name(name), m_value(value) {}

private:
    Status run(PlayerImpl& engine) override { return engine._setPref(m_name, m_value); }

    const String m_name;
    const int m_value;
};

class PlayerImpl::CmdGetPref final : public CmdSynchronous {
public:
    CmdGetPref(Status* status, CmdCompletion* completion, String const& name, int* value)
        : CmdSynchronous(CmdType::get_pref, status, completion), m_name(name), m_value(value) {}

private:
    Status run(PlayerImpl& engine) override { return engine._getPref(m_name, *m_value); }

    const String m_name;
    int* const m_value;
};

class PlayerImpl::CmdStartProducingAudio final : public Cmd {
public:
    CmdStartProducingAudio() noexcept : Cmd(CmdType::start_producing_audio) {}
    void execute(PlayerImpl& engine) override { (void)engine._startProducingAudio(); }
};

class PlayerImpl::CmdProduceVideoBuffer final : public CmdSynchronous {
public:
    CmdProduceVideoBuffer(Status* status, CmdCompletion* completion, int64 frameNumber, bool onDemand,
                          SharedPtr<VideoBuffer>& videoBuffer)
        : CmdSynchronous(CmdType::produce_video_buffer, status, completion),
          m_frameNumber(frameNumber),
          m_onDemand(onDemand),
          m_videoBuffer(videoBuffer) {}

private:
    Status run(PlayerImpl& engine) override {
        return engine._produceVideoBuffer(m_frameNumber, m_onDemand, m_videoBuffer);
    }

    const int64 m_frameNumber;
    const bool m_onDemand;
    SharedPtr<VideoBuffer>& m_videoBuffer;
};

class PlayerImpl::CmdProduceNextVideoBuffer final : public Cmd {
public:
    CmdProduceNextVideoBuffer() noexcept : Cmd(CmdType::produce_next_video_buffer) {}
    void execute(PlayerImpl& engine) override { (void)engine._produceNextVideoBuffer(); }
    std::unique_ptr<Cmd> another() const override {
        return std::unique_ptr<Cmd>(new (std::nothrow) CmdProduceNextVideoBuffer);
    }
};

/// Tells the production loop where the host is.
class PlayerImpl::CmdUpdateCurrentFrameNumber final : public Cmd {
public:
    explicit CmdUpdateCurrentFrameNumber(int64 frameNumber) noexcept
        : Cmd(CmdType::update_current_frame_number), m_frameNumber(frameNumber) {}
    void execute(PlayerImpl& engine) override { (void)engine._updateCurrentFrameNumber(m_frameNumber); }

private:
    const int64 m_frameNumber;
};

/// Ends the player thread's loop by its type alone.
class PlayerImpl::CmdTerminate final : public Cmd {
public:
    CmdTerminate() noexcept : Cmd(CmdType::terminate) {}
    void execute(PlayerImpl&) override {}
};

}  // namespace QRT_0_81
