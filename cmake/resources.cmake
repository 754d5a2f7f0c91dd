# Compiled resources (string tables, dialogs) in modules of both systems, from one .rc file.

if(NOT WIN32)
    find_program(HDO_WINDRES NAMES x86_64-w64-mingw32-windres
                 DOC "Compiler of Windows resources (package binutils-mingw-w64-x86-64)" REQUIRED)
endif()

# hdo_add_resources(<target> <file.rc>)
# Links the compiled resources into <target>. For Windows they are what Windows expects; elsewhere
# the module carries the same .res bytes between its exported symbols module_resources_begin and
# module_resources_end, where host/win32 finds them.
function(hdo_add_resources target rcfile)
    cmake_path(ABSOLUTE_PATH rcfile NORMALIZE)
    if(WIN32)
        target_sources(${target} PRIVATE ${rcfile})
        return()
    endif()
    cmake_path(GET rcfile STEM name)
    set(directory ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources)
    set(compiled ${directory}/${name}.res)
    file(MAKE_DIRECTORY ${directory})
    # windres would preprocess with mingw's C compiler; the host's is there already.
    add_custom_command(
        OUTPUT ${compiled}
        COMMAND
            ${HDO_WINDRES} "--preprocessor=${CMAKE_C_COMPILER}" --preprocessor-arg=-E
            --preprocessor-arg=-xc-header --preprocessor-arg=-DRC_INVOKED
            --preprocessor-arg=-I${PROJECT_SOURCE_DIR}/host/win32 --preprocessor-arg=-MD
            --preprocessor-arg=-MT --preprocessor-arg=${compiled} --preprocessor-arg=-MF
            --preprocessor-arg=${compiled}.d -O res -i ${rcfile} -o ${compiled}
        DEPENDS ${rcfile}
        DEPFILE ${compiled}.d
        COMMENT "Compiling resources ${name}.rc"
        VERBATIM)
    set(source ${directory}/${name}_resources.cpp)
    file(
        CONFIGURE
        OUTPUT ${source}
        CONTENT
            [[
asm(".section .rodata, \"a\", %progbits\n"
    ".balign 4\n"
    ".global module_resources_begin\n"
    "module_resources_begin:\n"
    ".incbin \"@compiled@\"\n"
    ".global module_resources_end\n"
    "module_resources_end:\n"
    ".previous\n");
]]
        @ONLY)
    set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS ${compiled})
    target_sources(${target} PRIVATE ${source} ${compiled})
endfunction()
