#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <string>

namespace qrtplay {

/// Compares a picture with the one that is kept under `name` in the folder of screenshots: every region of 8 x 8 pixels
/// has to be alike on average, so that a letter that is drawn a shade differently does not matter and one that is
/// missing does. What was seen and a picture of the differences are left in the build folder, and the message says
/// where.
///
/// With QRT_KEEP_SCREENSHOTS in the environment the picture is kept in the place of the old one.
[[nodiscard]] ::testing::AssertionResult looksLike(QImage const& seen, std::string const& name);

}  // namespace qrtplay
