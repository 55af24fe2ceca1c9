// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TestRandom.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

namespace morvanelab::test
{

using Values = std::vector<double>;

inline Values noise (int count, std::uint64_t seed = 7)
{
    TestRandom random (seed);
    Values values (static_cast<std::size_t> (count));
    for (double& value : values)
        value = random.between (-1.0, 1.0);
    return values;
}

inline double sumOfSquares (const Values& values)
{
    return std::inner_product (values.begin(), values.end(), values.begin(), 0.0);
}

inline void expectNear (const Values& actual, const Values& expected, double tolerance)
{
    ASSERT_EQ (actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
        ASSERT_NEAR (actual[i], expected[i], tolerance) << i;
}

} // namespace morvanelab::test
