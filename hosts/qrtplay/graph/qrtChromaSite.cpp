#include "graph/qrtChromaSite.h"

namespace qrtplay {

namespace {

/// Where chroma samples sit among the luma samples that share one, as a fraction of the way from the first to the last.
struct ChromaSite {
    float x;
    float y;
};

ChromaSite siteOf(AVChromaLocation location, AVPixelFormat format) {
    switch (location) {
        case AVCHROMA_LOC_LEFT: return {0.0f, 0.5f};
        case AVCHROMA_LOC_CENTER: return {0.5f, 0.5f};
        case AVCHROMA_LOC_TOPLEFT: return {0.0f, 0.0f};
        case AVCHROMA_LOC_TOP: return {0.5f, 0.0f};
        case AVCHROMA_LOC_BOTTOMLEFT: return {0.0f, 1.0f};
        case AVCHROMA_LOC_BOTTOM: return {0.5f, 1.0f};
        default: break;
    }
    // JPEG centres, the video standards since MPEG-2 put chroma on the left column.
    const bool isJpeg = format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P ||
                        format == AV_PIX_FMT_YUVJ440P || format == AV_PIX_FMT_YUVJ411P;
    return {isJpeg ? 0.5f : 0.0f, 0.5f};
}

/// In texels of the chroma plane, to be added to the luma position divided by `share`.
float chromaOffset(float site, int share) {
    const float distance = site * static_cast<float>(share - 1) + 0.5f;  // of the first chroma sample from the edge
    return 0.5f - distance / static_cast<float>(share);
}

/// ITU-T H.262, figure 6-3: what lies halfway between lines of a whole picture lies a quarter of a line below the first
/// line of the first field, and three quarters below that of the second. Chroma that lies on a line does so in each
/// field.
float fieldSite(float site, int field) {
    if (site != 0.5f) return site;
    return field == 0 ? 0.25f : 0.75f;
}

}  // namespace

ChromaPlace chromaPlace(AVFrame const& picture, PixelLayout const& layout, AVChromaLocation location) {
    ChromaPlace place;
    if (layout.componentCount == 1) return place;
    PixelLayout::Plane const& plane = layout.planes[static_cast<size_t>(layout.components[1].plane)];
    const int shareX = 1 << plane.widthShift;
    const int shareY = 1 << plane.heightShift;
    const ChromaSite site = siteOf(location, static_cast<AVPixelFormat>(picture.format));
    place.scaleX = 1.0f / static_cast<float>(shareX);
    place.scaleY = 1.0f / static_cast<float>(shareY);
    place.offsetX = chromaOffset(site.x, shareX);
    place.offsetY = chromaOffset(site.y, shareY);

    const int rows = (picture.height + shareY - 1) / shareY;
    place.isByField = picture.interlaced_frame != 0 && plane.heightShift == 1 && rows >= 2;
    for (int field = 0; field < 2; ++field) {
        place.fieldSites[field] = fieldSite(site.y, field);
        const int fieldRows = (rows + 1 - field) / 2;
        place.lastFieldRows[field] = static_cast<float>(fieldRows - 1);
    }
    return place;
}

}  // namespace qrtplay
