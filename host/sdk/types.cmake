# The SDK's helper types: points, matrices, quaternions, strings, containers.
set(MAXHOST_TYPES_SOURCES
    bitarray.cpp
    color.cpp
    euler.cpp
    interval.cpp
    matrix3.cpp
    maxheap.cpp
    point3.cpp
    quat.cpp
    rotation.cpp
    strclass.cpp)
