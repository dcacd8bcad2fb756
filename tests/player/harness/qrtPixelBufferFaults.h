#pragma once

namespace QRT_0_81 {

/// Lets operations of pixel buffers fail that no driver at hand can be brought to fail.
///
/// The linker leads this program's own calls of the two operations through here; see `--wrap` in the build file. A
/// fault holds for one scope. Threading: tests arm it while no other thread uses a pixel buffer.
class PixelBufferFault final {
public:
    enum class Operation { bind, unmap };

    explicit PixelBufferFault(Operation operation);
    ~PixelBufferFault();
    PixelBufferFault(PixelBufferFault const&) = delete;
    PixelBufferFault& operator=(PixelBufferFault const&) = delete;
};

}  // namespace QRT_0_81
