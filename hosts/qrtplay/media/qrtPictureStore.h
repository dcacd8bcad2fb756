#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtAv.h"
#include "media/qrtPictureSource.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// Decoded pictures of many media, made on threads of its own, ahead of when they are needed.
///
/// A media is opened when its first picture is wanted, and the clips of one media share what decodes it.
/// Pictures are kept within a budget of memory that all media share. Those that are wished for stay, the most urgent
/// ones longest; others, as what forward play has passed, may take a 64th of it unless nothing is wished for. Forward
/// play needs a 40th of the budget for what is decoded ahead; playing backwards and loops use all of it. Of two
/// requests the newer one goes first, but none is overtaken for ever. Threading: any thread may call any method.
class PictureStore final {
public:
    /// Makes the source of a media; called once for each, on a thread of the store. When it fails, what it says is the
    /// answer to every request.
    using Open = std::function<Outcome(size_t media, std::unique_ptr<PictureSource>& source)>;

    /// A picture of a media by time from its beginning on.
    struct Wish {
        size_t media = 0;
        ExactTime time;
    };
    /// A picture by number.
    struct Key {
        size_t media = 0;
        int64 frame = 0;
        [[nodiscard]] friend auto operator<=>(Key const&, Key const&) noexcept = default;
    };
    /// What `picture` answers.
    struct Answer {
        FramePtr picture;  ///< null when the time lies outside of what the media holds
        VideoFacts facts;
        std::string path;
        Key key;
    };

    static constexpr size_t defaultBudgetInBytes = size_t{512} << 20;

    PictureStore(size_t mediaCount, Open open, size_t budgetInBytes);
    /// Ends its threads; requests that wait fail.
    ~PictureStore();
    PictureStore(PictureStore const&) = delete;
    PictureStore& operator=(PictureStore const&) = delete;

    /// Waits for a picture; goes before everything that is being decoded ahead, and makes it step back where it is in
    /// the way. Failures name the file and the frame.
    Outcome picture(Wish const& wish, Answer& answer);
    /// What will be needed next, the most urgent first; takes the place of what was said before. Never waits.
    void prepare(std::vector<Wish> wishes);

    /// Takes effect at once. One picture is kept even when it is larger than the budget.
    void setBudget(size_t bytes);
    [[nodiscard]] size_t sizeInBytes() const;
    /// Drops all pictures, what is being decoded ahead and what was wished for.
    void clear();
    /// Sets `answer` to a picture that is kept, as `picture` would; false when there is none. Never waits.
    [[nodiscard]] bool keptPicture(Wish const& wish, Answer& answer);
    /// Whether a picture is kept. False for a media that is not open yet; true for a time outside of an open one.
    [[nodiscard]] bool isKept(Wish const& wish) const;

private:
    class Work;
    std::unique_ptr<Work> m_work;
};

}  // namespace qrtplay
