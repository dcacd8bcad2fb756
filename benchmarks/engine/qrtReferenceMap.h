#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// What a cached frame is measured against: a map under a mutex whose look-up copies a counted pointer. The cache's own
/// keys are texts, so texts, made beforehand, are the reference.
template <class Key>
class ReferenceMap final {
public:
    explicit ReferenceMap(int64 numFrames) {
        for (int64 frame = 0; frame < numFrames; ++frame) {
            m_keys.push_back(keyOf(frame));
            m_map.emplace(m_keys.back(), std::make_shared<int64>(frame));
        }
    }

    [[nodiscard]] std::shared_ptr<int64> fetch(int64 frame) {
        const std::lock_guard lock(m_mutex);
        return m_map.find(m_keys[static_cast<size_t>(frame)])->second;
    }

private:
    static Key keyOf(int64 frame) {
        if constexpr (std::is_same_v<Key, std::string>) {
            return std::to_string(frame);
        } else {
            return frame;
        }
    }

    std::vector<Key> m_keys;
    std::mutex m_mutex;
    std::unordered_map<Key, std::shared_ptr<int64>> m_map;  // under m_mutex
};

}  // namespace QRT_0_81
