#include "qrtDecodingUnderTest.h"

#include <stdexcept>
#include <utility>

#include "media/qrtOpenPictures.h"

namespace qrtplay {

DecodingUnderTest::DecodingUnderTest(std::string const& path, size_t budgetInBytes)
    : m_pictures(
          1,
          [path](size_t, std::unique_ptr<PictureSource>& source) {
              MediaReference reference;
              reference.kind = MediaReference::Kind::file;
              reference.path = path;
              return openPictures(reference, source);
          },
          budgetInBytes) {
    PictureStore::Answer answer;
    if (Outcome outcome = m_pictures.picture({0, ExactTime()}, answer); outcome.failed())
        throw std::runtime_error(outcome.message());
    m_facts = answer.facts;
    m_pixels.resize(size_t{4} * static_cast<size_t>(m_facts.width) * static_cast<size_t>(m_facts.height));
}

void DecodingUnderTest::play(int64 first, int64 last, Way) {
    m_step = first <= last ? 1 : -1;
}

FrameView DecodingUnderTest::frame(int64 number) {
    m_course.note(number, m_step);
    std::vector<PictureStore::Wish> wishes;
    int64 planned = number;
    for (int64 ahead = m_course.framesAhead(); ahead > 0 && planned >= 0 && planned < m_facts.frameCount; --ahead) {
        wishes.push_back({0, ExactTime::ofFrame(planned, m_facts.frameRate)});
        planned = m_course.next(planned);
    }
    const PictureStore::Wish wanted = wishes.front();
    m_pictures.prepare(std::move(wishes));
    PictureStore::Answer answer;
    if (Outcome outcome = m_pictures.picture(wanted, answer); outcome.failed())
        throw std::runtime_error(outcome.message());

    AVFrame const& from = *answer.picture;
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), from.width, from.height,
                                        static_cast<AVPixelFormat>(from.format), from.width, from.height,
                                        AV_PIX_FMT_RGBA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    std::uint8_t* const to[] = {m_pixels.data()};
    const int stride[] = {4 * from.width};
    if (!m_scaler || sws_scale(m_scaler.get(), from.data, from.linesize, 0, from.height, to, stride) <= 0)
        throw std::runtime_error("a picture cannot be converted");
    return {m_pixels.data(), from.width, from.height, false};
}

}  // namespace qrtplay
