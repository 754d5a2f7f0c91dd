# What a Windows build on Debian needs beside the compiler.

# The header-only libraries, without the rest of the system's headers.
set(HDO_HEADER_ONLY_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)
file(MAKE_DIRECTORY ${HDO_HEADER_ONLY_INCLUDE_DIR})
foreach(library nlohmann CLI)
    file(CREATE_LINK /usr/include/${library} ${HDO_HEADER_ONLY_INCLUDE_DIR}/${library} SYMBOLIC)
endforeach()

# The compiler's libraries, beside the programs.
foreach(library libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(COPY_FILE ${path} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${library} ONLY_IF_DIFFERENT)
endforeach()

add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
foreach(target nlohmann_json::nlohmann_json CLI11::CLI11)
    target_include_directories(${target} SYSTEM INTERFACE ${HDO_HEADER_ONLY_INCLUDE_DIR})
endforeach()
