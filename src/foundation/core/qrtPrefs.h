#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtString.h"
#include "foundation/core/qrtVector.h"

namespace QRT_0_81 {

/// Integer preferences by name.
class QRT_CORE_EXPORT Prefs {
public:
    /// How many frames ahead of the current one the player keeps rendered.
    static const String PRODUCER_CACHE_NB_HEAD_FRAMES;
    /// How many frames behind the current one the player keeps rendered.
    static const String PRODUCER_CACHE_NB_TAIL_FRAMES;

    virtual ~Prefs();

    /// Sets a preference. Which names and values are accepted is the implementer's to say, in its `Status`.
    virtual Status setPref(String const& name, int value) = 0;
    /// Sets `value` to that of a preference; what an unknown name gives is the implementer's to say.
    virtual Status getPref(String const& name, int& value) const = 0;
    /// Appends the names that `setPref` and `getPref` know.
    virtual Status getPrefs(Vector<String>& names) const = 0;
};

}  // namespace QRT_0_81
