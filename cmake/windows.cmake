# What a Windows build on Debian needs beside the compiler.

# The header-only libraries, without the rest of the system's headers.
set(HDO_HEADER_ONLY_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)
file(MAKE_DIRECTORY ${HDO_HEADER_ONLY_INCLUDE_DIR})
foreach(library nlohmann rapidjson CLI stb tsl utf8 utf8.h)
    file(CREATE_LINK /usr/include/${library} ${HDO_HEADER_ONLY_INCLUDE_DIR}/${library} SYMBOLIC)
endforeach()

# Part of the programs, so that no other one is found when they run.
set(ZLIB_USE_STATIC_LIBS ON)
find_library(GCRYPT_LIBRARY libgcrypt.a REQUIRED)
find_library(GPG_ERROR_LIBRARY libgpg-error.a REQUIRED)
add_library(gcrypt INTERFACE IMPORTED)
target_link_libraries(gcrypt INTERFACE ${GCRYPT_LIBRARY} ${GPG_ERROR_LIBRARY} ws2_32)

set(HDO_ASSIMP_DIR "" CACHE PATH
    "Assimp for Windows, as packaging/windows_assimp builds it; without it no model files are read")
if(HDO_ASSIMP_DIR)
    find_package(assimp REQUIRED PATHS ${HDO_ASSIMP_DIR} NO_DEFAULT_PATH)
    # It names the C++ library too, which would become part of the program: its modules share one.
    set_target_properties(assimp::assimp PROPERTIES INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)
endif()

# The compiler's libraries, beside the programs.
foreach(library libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(COPY_FILE ${path} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${library} ONLY_IF_DIFFERENT)
    list(APPEND HDO_COMPILER_LIBRARIES ${path})
endforeach()

add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
add_library(rapidjson INTERFACE IMPORTED)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
add_library(utf8cpp INTERFACE IMPORTED)
foreach(target nlohmann_json::nlohmann_json rapidjson CLI11::CLI11 utf8cpp)
    target_include_directories(${target} SYSTEM INTERFACE ${HDO_HEADER_ONLY_INCLUDE_DIR})
endforeach()

# Programs of this build run under Wine with a home, and where wanted a display, of the build's own.
# Debian's wine64 package leaves its programs out of PATH.
find_program(HDO_WINE NAMES wine64 wine PATHS /usr/lib/wine)
find_program(HDO_WINESERVER NAMES wineserver wineserver64 PATHS /usr/lib/wine)
foreach(script wine.sh wine-desktop.sh)
    configure_file(${CMAKE_CURRENT_LIST_DIR}/${script}.in ${PROJECT_BINARY_DIR}/${script} @ONLY
                   FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                    WORLD_READ WORLD_EXECUTE)
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_BINARY_DIR}/wine.sh)
