#include "media/qrtSlateSource.h"

#include <utility>

#include "media/qrtSlatePainter.h"

namespace qrtplay {

SlateSource::SlateSource(std::string path, FramePtr picture, Rational const& rate)
    : m_path(std::move(path)), m_picture(std::move(picture)) {
    m_facts.width = m_picture->width;
    m_facts.height = m_picture->height;
    m_facts.frameRate = rate;
    m_facts.frameCount = endlessFrameCount;
    m_facts.pixelFormat = static_cast<AVPixelFormat>(m_picture->format);
    m_facts.colour = completeColour({AVCOL_SPC_RGB, AVCOL_RANGE_JPEG, AVCOL_PRI_BT709, AVCOL_TRC_IEC61966_2_1},
                                    m_facts.pixelFormat, m_facts.height);
}

PictureSource::Result SlateSource::frame(int64 frame, Keep const& keep, IsWanted const&, FramePtr& picture,
                                         std::string&) {
    picture = m_picture;
    keep(frame, picture);
    return Result::picture;
}

std::unique_ptr<PictureSource> makeMissingSlate(std::string const& name, std::string const& reason, QSize size,
                                                Rational const& rate) {
    constexpr QSize usualSize(1920, 1080);
    constexpr int mostRows = static_cast<int>(maxPicturePixels / maxPictureSide);
    if (size.isEmpty()) size = usualSize;
    size = size.boundedTo(QSize(maxPictureSide, mostRows));
    FramePtr picture = paintSlate(size, QStringLiteral("Media missing"),
                                  {QString::fromStdString(name), QString::fromStdString(reason)});
    if (!picture) return nullptr;
    const bool isRate = rate.getNumerator() > 0 && rate.getDenominator() > 0;
    return std::make_unique<SlateSource>(name, std::move(picture), isRate ? rate : Rational(24, 1));
}

}  // namespace qrtplay
