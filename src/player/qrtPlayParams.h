#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRational.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtString.h"
#include "foundation/core/qrtTime.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

struct PlayParamsPrivate;

/// Which frames a player produces, and in what order.
///
/// A value object that lives in a `SharedPtr`. All frame positions are whole frame numbers at the object's own frame
/// rate; the range includes both of its ends. Nothing is enforced after construction: the setters and `fromJson` store
/// any value, and `Player::startProducing` checks what it is given.
///
/// Threading: none of its own. One object must not be changed while another thread uses it; the player keeps a copy.
class QRT_PLAYER_EXPORT PlayParams : public RefCountedMT {
public:
    /// What happens at the ends of the range.
    enum PlayMode : int32 {
        single = 0,    ///< play once
        loop = 1,      ///< go on at the other end
        ping_pong = 2  ///< reverse at each end; an end frame is shown once
    };
    /// Which media are produced. Frames are rendered ahead in every mode; with sound, and an audio format set, the
    /// start of a run also positions the graph engine's audio.
    enum ProductionMode : int32 {
        video_only = 0,  ///< frames
        audio_only = 1,  ///< sound
        all = 2          ///< frames and sound
    };

    /// Makes parameters for the range that begins at `start` and is `duration` long, at least one frame.
    /// `step`: frames advanced per `next`, its sign the direction. `current` is not clamped into the range.
    /// Empty, with a message in the log, when there is no memory; so is a clone.
    [[nodiscard]] static SharedPtr<PlayParams> create(Time const& current, Time const& start, Time const& duration,
                                                      Rational const& frameRate, int step, PlayMode playMode,
                                                      ProductionMode productionMode);
    ~PlayParams() override;

    /// A copy of all seven values, with a reference count of its own.
    [[nodiscard]] SharedPtr<PlayParams> clone();
    /// Copies all seven values; the reference count is not touched.
    PlayParams& operator=(PlayParams const& other);
    /// Whether all seven values are equal.
    [[nodiscard]] bool operator==(PlayParams const& other) const;

    /// The frame that playback stands on.
    [[nodiscard]] int64 getCurrentFrame() const;
    /// The first frame of the range.
    [[nodiscard]] int64 getStartFrame() const;
    /// The last frame of the range, which is part of it.
    [[nodiscard]] int64 getEndFrame() const;
    /// Frames per second, which frame numbers count in. Fixed after construction, but for `fromJson` and assignment.
    [[nodiscard]] Rational const& getFrameRate() const;
    /// Frames advanced per `next`; negative for backwards.
    [[nodiscard]] int getStep() const;
    /// What happens at the ends of the range.
    [[nodiscard]] PlayMode getPlayMode() const;
    /// Which media are produced.
    [[nodiscard]] ProductionMode getProductionMode() const;

    /// Store a value as it is, whatever the others are.
    /// @{
    void setCurrentFrame(int64 frame);
    void setStartFrame(int64 frame);
    void setEndFrame(int64 frame);
    void setStep(int step);
    void setPlayMode(PlayMode mode);
    void setProductionMode(ProductionMode mode);
    /// @}

    /// The frame number of a time at a frame rate: to the nearest frame, halves upwards, for positions from -0.5 on;
    /// below that the sum with one half is cut off toward zero (-1.7 frames gives -1). 0 when the time's rate is 0.
    /// Positions beyond 64 bits give the nearest number that fits.
    [[nodiscard]] static int64 getFrame(Time const& time, Rational const& frameRate);

    /// Advances the current frame by one step, by the rules of the play mode.
    /// False when the step is 0, or when `single` mode has left the range; the current frame then lies outside it.
    bool next();

    /// Moves the current frame; `ping_pong` turns to play in the direction of the move.
    /// `Status::out_of_range`, with nothing changed, outside the range or with an unknown play mode.
    Status seek(int64 frame);

    /// A compact JSON object with the members "current_frame", "start_frame", "end_frame", "frame_rate", "step",
    /// "play_mode" and "production_mode". A mode outside its enumeration is written as "".
    [[nodiscard]] String toJson() const;

    /// Reads what `toJson` writes. `Status::invalid_text` when a member is missing or of another kind.
    /// A late failure leaves the members stored that were checked before: step, then play mode, then production mode,
    /// then the three frames. With the environment variable `ZR_DEBUG_OTIO` defined, standard error tells what failed.
    Status fromJson(String const& text);

private:
    friend class CacheEvictionAdvisor;
    friend class PlayerImpl;

    PlayParams(Time const& current, Time const& start, Time const& duration, Rational const& frameRate, int step,
               PlayMode playMode, ProductionMode productionMode);
    PlayParams(PlayParams const& other);

    PlayParamsPrivate* m_private;  // owned
};

}  // namespace QRT_0_81
