#pragma once

#include <QTemporaryDir>
#include <string>

namespace qrtplay {

/// Sound devices for tests: while there is one of these, Qt sees no sound server and no card of this machine, and only
/// what is made here. Qt 5 is given a configuration of ALSA. Qt 6 knows nothing of that, and looks for a sound server
/// once in a process: it has a device where with-sound-server.sh has started the process, and none elsewhere.
class MadeDevice final {
public:
    enum class Kind {
        silent,  ///< takes what it is given
        closed,  ///< is there, but cannot be opened
    };

    MadeDevice();
    ~MadeDevice();
    MadeDevice(MadeDevice const&) = delete;
    MadeDevice& operator=(MadeDevice const&) = delete;

    /// Makes the default device, whose name is "default". False when that cannot be had here; `whyNot` tells.
    [[nodiscard]] bool make(Kind kind);
    [[nodiscard]] std::string const& whyNot() const { return m_whyNot; }

private:
    QTemporaryDir m_folder;
    std::string m_whyNot;
};

}  // namespace qrtplay
