#include "viewer/playing/qrtSoundDevice.h"
#include "viewer/qrtMadeDevice.h"

namespace qrtplay {

MadeDevice::MadeDevice() {
    if (!qEnvironmentVariableIsSet("QRT_SOUND_SERVER")) qputenv("PULSE_SERVER", "unix:/nonexistent");
}

MadeDevice::~MadeDevice() = default;

bool MadeDevice::make(Kind kind) {
    m_whyNot = kind == Kind::silent ? "this process was started without a sound server"
                                    : "a sound server has no device that cannot be opened";
    return kind == Kind::silent && nameOf(usualSoundDevice()) == "default";
}

}  // namespace qrtplay
