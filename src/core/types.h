// Fixed-width types and the compile-time assertion.
#ifndef PLINTH_TYPES_H
#define PLINTH_TYPES_H

namespace Plinth {

typedef signed char Int8;
typedef unsigned char UInt8;
typedef short Int16;
typedef unsigned short UInt16;
typedef int Int32;
typedef unsigned int UInt32;
#if defined(_MSC_VER)
typedef __int64 Int64;
typedef unsigned __int64 UInt64;
#else
// By width: the standard of 1998 has no `long long`.
typedef int Int64 __attribute__((__mode__(__DI__)));
typedef unsigned int UInt64 __attribute__((__mode__(__DI__)));
#endif
typedef float Float32;
typedef double Float64;

template <bool condition>
struct StaticAssertion;
template <>
struct StaticAssertion<true> {};

}  // namespace Plinth

// Stops the compiler where the condition is false. Usable in any scope; `name` is an identifier
// that no other assertion of the same scope has.
#define PLINTH_STATIC_ASSERT(condition, name) \
    enum { plinthAssertion_##name = sizeof(::Plinth::StaticAssertion<(condition)>) }

namespace Plinth {

PLINTH_STATIC_ASSERT(sizeof(Int8) == 1 && sizeof(UInt8) == 1, types_of_8_bits);
PLINTH_STATIC_ASSERT(sizeof(Int16) == 2 && sizeof(UInt16) == 2, types_of_16_bits);
PLINTH_STATIC_ASSERT(sizeof(Int32) == 4 && sizeof(UInt32) == 4, types_of_32_bits);
PLINTH_STATIC_ASSERT(sizeof(Int64) == 8 && sizeof(UInt64) == 8, types_of_64_bits);
PLINTH_STATIC_ASSERT(sizeof(Float32) == 4 && sizeof(Float64) == 8, types_of_reals);

}  // namespace Plinth

#endif
