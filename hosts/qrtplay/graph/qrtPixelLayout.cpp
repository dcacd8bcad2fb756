#include "graph/qrtPixelLayout.h"

#include <bit>

namespace qrtplay {

namespace {

constexpr uint64 notUploadable =
    AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;

bool isXyz(AVPixelFormat format) {
    return format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE;
}

bool hasAlpha(AVPixFmtDescriptor const& descriptor) {
    return (descriptor.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

/// Adds number `number` of the format's components as number `as` of the layout's; false when its samples are not
/// channels of texels.
bool addComponent(AVPixFmtDescriptor const& descriptor, int number, size_t as, PixelLayout& layout) {
    const AVComponentDescriptor& component = descriptor.comp[number];
    if (component.depth != layout.bits || component.shift != layout.shift) return false;
    if (component.step % layout.bytesPerChannel != 0 || component.offset % layout.bytesPerChannel != 0) return false;
    const int channels = component.step / layout.bytesPerChannel;
    const int channel = component.offset / layout.bytesPerChannel;
    constexpr int mostChannels = 4;
    if (channels < 1 || channels > mostChannels || channel >= channels) return false;

    const bool isChroma = !layout.isRgb && as > 0 && as != PixelLayout::alpha;
    PixelLayout::Plane plane;
    plane.source = component.plane;
    plane.channels = channels;
    plane.widthShift = isChroma ? descriptor.log2_chroma_w : 0;
    plane.heightShift = isChroma ? descriptor.log2_chroma_h : 0;

    int index = 0;
    while (index < layout.planeCount && layout.planes[static_cast<size_t>(index)].source != plane.source)
        ++index;
    PixelLayout::Plane& known = layout.planes[static_cast<size_t>(index)];
    if (index == layout.planeCount) {
        known = plane;
        ++layout.planeCount;
    } else if (known.channels != plane.channels || known.widthShift != plane.widthShift ||
               known.heightShift != plane.heightShift) {
        return false;  // luma and chroma alternate, as in yuyv422
    }
    layout.components[as] = {index, channel};
    return true;
}

/// The kind of number that a sample is; false when no texture holds it.
bool describeSamples(AVPixFmtDescriptor const& descriptor, PixelLayout& layout) {
    constexpr int bitsPerByte = 8;
    constexpr int mostBits = 16;
    constexpr int floatBits = 32;
    layout.bits = descriptor.comp[0].depth;
    layout.shift = descriptor.comp[0].shift;
    layout.isFloat = (descriptor.flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    if (layout.isFloat ? layout.bits != floatBits : layout.bits < bitsPerByte || layout.bits > mostBits) return false;
    layout.bytesPerChannel = layout.isFloat ? 4 : layout.bits > bitsPerByte ? 2 : 1;
    const bool isBigEndian = (descriptor.flags & AV_PIX_FMT_FLAG_BE) != 0;
    layout.isSwapped = layout.bytesPerChannel > 1 && isBigEndian != (std::endian::native == std::endian::big);
    return layout.shift + layout.bits <= layout.bytesPerChannel * bitsPerByte;
}

}  // namespace

std::optional<PixelLayout> describeLayout(AVPixelFormat format) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
    if (!descriptor || (descriptor->flags & notUploadable) != 0) return std::nullopt;

    PixelLayout layout;
    layout.isXyz = isXyz(format);
    layout.isRgb = layout.isXyz || (descriptor->flags & AV_PIX_FMT_FLAG_RGB) != 0;
    layout.componentCount = descriptor->nb_components >= 3 ? 3 : 1;
    layout.hasAlpha = hasAlpha(*descriptor);
    if (!describeSamples(*descriptor, layout)) return std::nullopt;
    for (int number = 0; number < layout.componentCount; ++number) {
        if (!addComponent(*descriptor, number, static_cast<size_t>(number), layout)) return std::nullopt;
    }
    if (layout.hasAlpha && !addComponent(*descriptor, layout.componentCount, PixelLayout::alpha, layout))
        return std::nullopt;
    return layout;
}

AVPixelFormat uploadableFormat(AVPixelFormat format) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
    if (!descriptor) return AV_PIX_FMT_NONE;
    const bool deep = descriptor->comp[0].depth > 8;
    const bool alpha = hasAlpha(*descriptor);
    const auto choice = [deep, alpha](AVPixelFormat plain, AVPixelFormat plainDeep, AVPixelFormat withAlpha,
                                      AVPixelFormat withAlphaDeep) {
        if (alpha) return deep ? withAlphaDeep : withAlpha;
        return deep ? plainDeep : plain;
    };
    if ((descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER)) != 0)
        return choice(AV_PIX_FMT_RGB0, AV_PIX_FMT_RGB48, AV_PIX_FMT_RGBA, AV_PIX_FMT_RGBA64);
    if (descriptor->nb_components < 3)
        return choice(AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY16, AV_PIX_FMT_YA8, AV_PIX_FMT_YA16);
    if (descriptor->log2_chroma_w == 1 && descriptor->log2_chroma_h == 1)
        return choice(AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P16, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA420P16);
    if (descriptor->log2_chroma_w == 1 && descriptor->log2_chroma_h == 0)
        return choice(AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV422P16, AV_PIX_FMT_YUVA422P, AV_PIX_FMT_YUVA422P16);
    return choice(AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV444P16, AV_PIX_FMT_YUVA444P, AV_PIX_FMT_YUVA444P16);
}

}  // namespace qrtplay
