#include "graph/qrtPixelLayout.h"

namespace qrtplay {

namespace {

constexpr uint64 notUploadable = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL |
                                 AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;

bool isXyz(AVPixelFormat format) {
    return format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE;
}

/// Adds component `number` to the layout; false when its samples are not channels of texels.
bool addComponent(AVPixFmtDescriptor const& descriptor, int number, PixelLayout& layout) {
    const AVComponentDescriptor& component = descriptor.comp[number];
    if (component.depth != layout.bits || component.shift != layout.shift) return false;
    if (component.step % layout.bytesPerChannel != 0 || component.offset % layout.bytesPerChannel != 0) return false;
    const int channels = component.step / layout.bytesPerChannel;
    const int channel = component.offset / layout.bytesPerChannel;
    constexpr int mostChannels = 4;
    if (channels < 1 || channels > mostChannels || channel >= channels) return false;

    const bool isChroma = !layout.isRgb && number > 0;
    PixelLayout::Plane plane;
    plane.source = component.plane;
    plane.channels = channels;
    plane.widthShift = isChroma ? descriptor.log2_chroma_w : 0;
    plane.heightShift = isChroma ? descriptor.log2_chroma_h : 0;

    int index = 0;
    while (index < layout.planeCount && layout.planes[static_cast<size_t>(index)].source != plane.source) ++index;
    PixelLayout::Plane& known = layout.planes[static_cast<size_t>(index)];
    if (index == layout.planeCount) {
        known = plane;
        ++layout.planeCount;
    } else if (known.channels != plane.channels || known.widthShift != plane.widthShift ||
               known.heightShift != plane.heightShift) {
        return false;  // luma and chroma alternate, as in yuyv422
    }
    layout.components[static_cast<size_t>(number)] = {index, channel};
    return true;
}

}  // namespace

std::optional<PixelLayout> describeLayout(AVPixelFormat format) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
    if (!descriptor || (descriptor->flags & notUploadable) != 0 || isXyz(format)) return std::nullopt;
    constexpr int bitsPerByte = 8;
    constexpr int mostBits = 16;

    PixelLayout layout;
    layout.isRgb = (descriptor->flags & AV_PIX_FMT_FLAG_RGB) != 0;
    layout.componentCount = descriptor->nb_components >= 3 ? 3 : 1;
    layout.bits = descriptor->comp[0].depth;
    layout.shift = descriptor->comp[0].shift;
    if (layout.bits < bitsPerByte || layout.bits > mostBits) return std::nullopt;
    layout.bytesPerChannel = layout.bits > bitsPerByte ? 2 : 1;
    if (layout.bytesPerChannel == 2 && (descriptor->flags & AV_PIX_FMT_FLAG_BE) != 0) return std::nullopt;
    if (layout.shift + layout.bits > layout.bytesPerChannel * bitsPerByte) return std::nullopt;
    for (int number = 0; number < layout.componentCount; ++number) {
        if (!addComponent(*descriptor, number, layout)) return std::nullopt;
    }
    return layout;
}

AVPixelFormat uploadableFormat(AVPixelFormat format) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
    if (!descriptor) return AV_PIX_FMT_NONE;
    const bool deep = descriptor->comp[0].depth > 8;
    if (isXyz(format)) return AV_PIX_FMT_RGB48LE;
    if ((descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER)) != 0)
        return deep ? AV_PIX_FMT_RGB48LE : AV_PIX_FMT_RGBA;
    if (descriptor->nb_components < 3) return deep ? AV_PIX_FMT_GRAY16LE : AV_PIX_FMT_GRAY8;
    if (descriptor->log2_chroma_w == 1 && descriptor->log2_chroma_h == 1)
        return deep ? AV_PIX_FMT_YUV420P16LE : AV_PIX_FMT_YUV420P;
    if (descriptor->log2_chroma_w == 1 && descriptor->log2_chroma_h == 0)
        return deep ? AV_PIX_FMT_YUV422P16LE : AV_PIX_FMT_YUV422P;
    return deep ? AV_PIX_FMT_YUV444P16LE : AV_PIX_FMT_YUV444P;
}

}  // namespace qrtplay
