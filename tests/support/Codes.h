// Result codes in failure messages by name as well as number:
//   EXPECT_TRUE(ReturnsCode(call(), kQuorinError_BadArgument)) << "case " << c;
// prints "returned -21772 kQuorinError_NullPointer, expected -21773
// kQuorinError_BadArgument" when the two differ.
#pragma once

#include <gtest/gtest.h>

#include "quorin/ErrorNames.h"

namespace quorin::test {

inline ::testing::AssertionResult ReturnsCode(Quorin_Error actual, Quorin_Error expected) {
    if (actual == expected) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "returned " << actual << " " << Quorin_ErrorName(actual) << ", expected "
                                         << expected << " " << Quorin_ErrorName(expected);
}

}  // namespace quorin::test
