#pragma once

extern "C" {
#include <libswresample/swresample.h>
}

#include <memory>

namespace qrtplay {

struct SwrDeleter {
    void operator()(SwrContext* context) const { swr_free(&context); }
};
using SwrPtr = std::unique_ptr<SwrContext, SwrDeleter>;

}  // namespace qrtplay
