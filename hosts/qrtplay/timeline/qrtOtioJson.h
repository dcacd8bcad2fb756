#pragma once

#include <rapidjson/document.h>

#include <string>

#include "base/qrtLimits.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Reads the JSON of an OTIO file: as Python writes it, so NaN and Infinity are numbers. Members named "metadata" are
/// left out: nothing here needs them, and they are most of what many files hold.
///
/// Failures say what is wrong and in which line. The nesting and the number of values are limited, so that no text
/// overflows the stack or takes memory without bounds.
Outcome readOtioJson(std::string const& text, rapidjson::Document& document, size_t mostValues = maxJsonValues);

}  // namespace qrtplay
