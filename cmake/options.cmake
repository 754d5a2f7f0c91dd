# What every target of the project is compiled with.

# The same scene must give the same bytes in every build, so no contraction of a*b+c and no
# fast-math; nor vectorisation, in which GCC 12 leaves out the rounding of (double)(float)x.
# Warnings are errors.
add_library(hdo_options INTERFACE)
target_compile_options(hdo_options INTERFACE -Wall -Wextra -Wshadow -Werror -ffp-contract=off
                                             -fno-tree-vectorize)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # The compiler clears up less often: a tenth of the compile time, for a quarter more memory.
    target_compile_options(hdo_options INTERFACE --param=ggc-min-expand=200
                                                 --param=ggc-min-heapsize=400000)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in any "literal" + std::string.
    target_compile_options(hdo_options INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    # The 3ds Max SDK's classes hide functions of their bases that have other parameters.
    target_compile_options(hdo_options INTERFACE -Wno-overloaded-virtual)
endif()
target_include_directories(hdo_options INTERFACE ${PROJECT_SOURCE_DIR})
if(HDO_SANITIZE)
    target_compile_options(hdo_options INTERFACE -fsanitize=${HDO_SANITIZE}
                                                 -fno-sanitize-recover=all)
    target_link_options(hdo_options INTERFACE -fsanitize=${HDO_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND HDO_SANITIZE MATCHES undefined)
        # A third of the compile time. The address sanitizer stops at a null pointer as well, and
        # the fuzzers' build has them all.
        target_compile_options(hdo_options INTERFACE -fno-sanitize=null,alignment,vptr,object-size)
        # What is proven is the product: tests are watched for what they do to the heap alone.
        target_compile_options(hdo_options INTERFACE
            "$<$<BOOL:$<TARGET_PROPERTY:HDO_HAS_TEST_HEADERS>>:-fno-sanitize=undefined;--param=asan-stack=0>")
    endif()
endif()
if(HDO_FUZZ)
    # What the fuzzers look at while they run.
    target_compile_options(hdo_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(WIN32)
    # mingw's own stdio formats like glibc's, so logs agree to the character on both systems.
    target_compile_definitions(hdo_options INTERFACE __USE_MINGW_ANSI_STDIO=1 NOMINMAX
                                                     WIN32_LEAN_AND_MEAN)
    target_compile_options(hdo_options INTERFACE
        "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<NOT:$<BOOL:$<TARGET_PROPERTY:HDO_HAS_TEST_HEADERS>>>>:SHELL:-include ${PROJECT_SOURCE_DIR}/cmake/windows/utf8_paths.h>")
endif()

# Makes a target of a command line: it runs once, and its templates compile long.
function(hdo_command_line_target target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

# What src/ and the headers it includes are compiled with: the dialect of Visual C++ 2008.
add_library(hdo_cxx03 INTERFACE)
target_link_libraries(hdo_cxx03 INTERFACE hdo_options)
target_compile_options(hdo_cxx03 INTERFACE -pedantic-errors)
target_include_directories(hdo_cxx03 INTERFACE ${PROJECT_SOURCE_DIR}/src)

# Makes a target of the plug-in: the dialect above, and nothing exported but what is marked.
function(hdo_plugin_target target)
    target_link_libraries(${target} PRIVATE hdo_cxx03)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O2>)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 98
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
endfunction()
