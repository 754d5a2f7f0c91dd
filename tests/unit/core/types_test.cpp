#include "core/types.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace Plinth;

PLINTH_STATIC_ASSERT(sizeof(Int32) == 4, usable_in_a_namespace);

TEST(Types, WidthsAndSigns) {
    EXPECT_EQ(sizeof(Int8), 1u);
    EXPECT_EQ(sizeof(UInt8), 1u);
    EXPECT_EQ(sizeof(Int16), 2u);
    EXPECT_EQ(sizeof(UInt16), 2u);
    EXPECT_EQ(sizeof(Int32), 4u);
    EXPECT_EQ(sizeof(UInt32), 4u);
    EXPECT_EQ(sizeof(Int64), 8u);
    EXPECT_EQ(sizeof(UInt64), 8u);
    EXPECT_TRUE(std::is_signed_v<Int8> && std::is_unsigned_v<UInt8>);
    EXPECT_TRUE(std::is_signed_v<Int16> && std::is_unsigned_v<UInt16>);
    EXPECT_TRUE(std::is_signed_v<Int32> && std::is_unsigned_v<UInt32>);
    EXPECT_TRUE(std::is_signed_v<Int64> && std::is_unsigned_v<UInt64>);
    PLINTH_STATIC_ASSERT(sizeof(Float64) == 8, usable_in_a_function);
}

// A false condition leaves a type without definition, which has no size.
template <bool condition, class = void>
struct Compiles : std::false_type {};
template <bool condition>
struct Compiles<condition, std::void_t<decltype(sizeof(StaticAssertion<condition>))>>
    : std::true_type {};

TEST(Types, AssertionStopsTheCompilerOnlyWhereItIsFalse) {
    EXPECT_TRUE(Compiles<true>::value);
    EXPECT_FALSE(Compiles<false>::value);
}

}  // namespace
