#pragma once

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "base/qrtKit.h"
#include "graph/qrtCpuConverter.h"
#include "graph/qrtCpuForm.h"
#include "graph/qrtPixelPool.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Pictures that the CPU has converted for drawing, on threads of its own, while others are decoded and drawn.
///
/// Holds those that will be drawn next and no others: they take more memory than decoded ones, and are made quickly.
/// Threading: any thread may call any method, but only one at a time calls `take`.
class ReadyPictures final {
public:
    struct Order {
        FramePtr picture;
        CpuForm form;
    };
    /// So many pictures are worth preparing at a time.
    static const size_t mostAhead;

    ReadyPictures();
    /// Ends its threads.
    ~ReadyPictures();
    ReadyPictures(ReadyPictures const&) = delete;
    ReadyPictures& operator=(ReadyPictures const&) = delete;

    /// What will be drawn next, the most urgent first; takes the place of what was said before, and what is not in it
    /// is dropped. Never waits.
    void prepare(std::vector<Order> orders);
    /// Waits for a picture that is in the making; makes one that is not on the caller's thread. Null when memory is
    /// short.
    [[nodiscard]] std::shared_ptr<RgbaPixels const> take(Order const& order);
    /// Drops everything that is ready.
    void clear();
    /// Memory of the pictures that are ready, in use or in the making.
    [[nodiscard]] size_t sizeInBytes() const { return m_pool.sizeInBytes(); }

private:
    struct Entry {
        enum class State { waiting, in_the_making, ready };

        explicit Entry(Order wanted) : order(std::move(wanted)) {}
        [[nodiscard]] bool isFor(Order const& other) const {
            return order.picture == other.picture && order.form.width == other.form.width &&
                   order.form.height == other.form.height;
        }

        const Order order;
        State state = State::waiting;        // under m_mutex
        std::shared_ptr<RgbaPixels> pixels;  // the maker's until it is ready
    };
    using EntryPtr = std::shared_ptr<Entry>;
    using Lock = std::unique_lock<std::mutex>;

    void work();
    void make(Entry& entry, CpuConverter& converter, Lock& lock);
    [[nodiscard]] EntryPtr find(Order const& order) const;

    PixelPool m_pool;
    CpuConverter m_converter;  // of whoever calls `take`

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under m_mutex.
    std::vector<EntryPtr> m_entries;  // the most urgent first
    bool m_isEnding = false;

    std::vector<std::thread> m_threads;  // last: they use everything above
};

}  // namespace qrtplay
