# The plug-in alone, against the 3ds Max SDK as it is installed: MAXSDK_DIR holds include/, x64/lib/
# and, for the Morpher's channels, samples/modifiers/morpher/include/. Meant for Visual C++ 2008,
# whose dialect and run-time library 3ds Max 2012 asks for.

set(maxsdk_library_dir ${MAXSDK_DIR}/x64/lib)
set(maxsdk_libraries core maxutil geom mesh paramblk2 bmm Morpher)
set(maxsdk_morpher_dir ${MAXSDK_DIR}/samples/modifiers/morpher/include)

if(NOT EXISTS ${MAXSDK_DIR}/include/max.h)
    message(FATAL_ERROR "MAXSDK_DIR: no ${MAXSDK_DIR}/include/max.h, expected the 3ds Max SDK's folder")
endif()
if(NOT EXISTS ${maxsdk_morpher_dir}/MorpherApi.h)
    message(FATAL_ERROR "MAXSDK_DIR: no ${maxsdk_morpher_dir}/MorpherApi.h, expected the SDK's "
                        "samples there")
endif()
foreach(library IN LISTS maxsdk_libraries)
    if(NOT EXISTS ${maxsdk_library_dir}/${library}.lib)
        message(FATAL_ERROR "MAXSDK_DIR: no ${maxsdk_library_dir}/${library}.lib, expected the "
                            "SDK's 64-bit import libraries there")
    endif()
endforeach()

set(CMAKE_CXX_STANDARD 98)
# The one that 3ds Max itself uses (/MD), in every configuration.
set(CMAKE_MSVC_RUNTIME_LIBRARY MultiThreadedDLL)

# The names that src/ links to.
add_library(maxsdk INTERFACE)
target_include_directories(maxsdk SYSTEM INTERFACE ${MAXSDK_DIR}/include ${maxsdk_morpher_dir})
add_library(maxhost INTERFACE)
foreach(library IN LISTS maxsdk_libraries)
    target_link_libraries(maxhost INTERFACE ${maxsdk_library_dir}/${library}.lib)
endforeach()
target_link_libraries(maxhost INTERFACE comctl32 user32)

function(hdo_plugin_target target)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src)
    if(MSVC)
        # 8-bit texts; the safe text functions stand in for the plain ones where the size is known.
        target_compile_definitions(${target} PRIVATE
            WIN32 _WINDOWS _USRDLL _MBCS _CRT_SECURE_CPP_OVERLOAD_STANDARD_NAMES=1
            _CRT_SECURE_NO_WARNINGS _SCL_SECURE_NO_DEPRECATE)
        target_compile_options(${target} PRIVATE /W3 /fp:precise)
    else()
        target_compile_definitions(${target} PRIVATE __USE_MINGW_ANSI_STDIO=1)
        target_compile_options(${target} PRIVATE -pedantic-errors -Wall -Wextra -Werror
                                                 -ffp-contract=off -fno-tree-vectorize)
    endif()
endfunction()

add_subdirectory(src)
add_subdirectory(packaging)
