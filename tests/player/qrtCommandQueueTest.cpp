#include "qrtCommandQueue.h"

#include <gtest/gtest.h>
