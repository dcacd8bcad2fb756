#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "host/qrtFakePictureSource.h"
#include "media/qrtPictureStore.h"

namespace qrtplay {

inline std::vector<int64> range(int64 first, int64 last) {
    std::vector<int64> numbers(static_cast<size_t>(last - first + 1));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

/// A store over fake media of 25 frames a second.
class PictureStoreTest : public ::testing::Test {
protected:
    using Wish = PictureStore::Wish;

    FakeMedia& add(FakeMedia::Shape shape) {
        medias.push_back(std::make_shared<FakeMedia>(std::move(shape)));
        return *medias.back();
    }
    void openStore(size_t roomForPictures = 1000) {
        const auto open = [this](size_t media, std::unique_ptr<PictureSource>& source) {
            source = medias[media]->makeSource();
            return Outcome();
        };
        store = std::make_unique<PictureStore>(medias.size(), open, roomForPictures * fakePictureBytes());
    }
    static Wish wish(int64 frame, size_t media = 0) { return {media, ExactTime::ofFrame(frame, Rational(25, 1))}; }
    static std::vector<Wish> wishes(std::vector<int64> const& frames, size_t media = 0) {
        std::vector<Wish> all;
        for (const int64 frame : frames)
            all.push_back(wish(frame, media));
        return all;
    }
    /// The number of the picture that is answered; -1 for none, -2 for a failure.
    int64 ask(int64 frame, size_t media = 0) const {
        PictureStore::Answer answer;
        return store->picture(wish(frame, media), answer).success() ? numberOf(answer.picture) : -2;
    }
    std::future<int64> askOnAThread(int64 frame, size_t media = 0) const {
        return std::async(std::launch::async, [this, frame, media] { return ask(frame, media); });
    }

    std::vector<std::shared_ptr<FakeMedia>> medias;
    std::unique_ptr<PictureStore> store;
};

}  // namespace qrtplay
