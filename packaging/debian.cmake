# The programs with their manual pages, completion and documents as the package hdo-export, and the
# reader of KTA files for other programs as libkta-dev.

# The programs stand beside the plug-in, the converter and the SDK work-alike, where they look for
# them, and a link leads there: so the prefix can be moved.
set(program_dir ${CMAKE_INSTALL_LIBDIR}/hdo-export)
install(TARGETS hdo-export hdoexport haldenexport maxhost
    RUNTIME DESTINATION ${program_dir} COMPONENT programs
    LIBRARY DESTINATION ${program_dir} COMPONENT programs)
install(TARGETS kta RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
file(RELATIVE_PATH program_link /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${program_dir}/hdo-export)
set(link ${CMAKE_CURRENT_BINARY_DIR}/link/hdo-export)
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/link)
file(CREATE_LINK ${program_link} ${link} SYMBOLIC)
install(FILES ${link} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)

# ---------------------------------------------------------------- manual pages and completion

foreach(program hdo-export kta)
    set(page ${CMAKE_CURRENT_BINARY_DIR}/${program}.1.gz)
    set(completion ${CMAKE_CURRENT_BINARY_DIR}/completions/${program})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/completions)
    add_custom_command(
        OUTPUT ${page} ${completion}
        COMMAND ${program} --generate man | gzip -9n > ${page}
        COMMAND ${program} --generate bash-completion > ${completion}
        DEPENDS ${program}
        COMMENT "Making manual page and completion of ${program}"
        VERBATIM)
    list(APPEND pages ${page})
    list(APPEND completions ${completion})
endforeach()
add_custom_target(manual_pages ALL DEPENDS ${pages} ${completions})
install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)
install(FILES ${completions}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT programs)

# ---------------------------------------------------------------- documents

# In the folders in which they refer to one another.
set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/hdo-export)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${doc_dir} COMPONENT programs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${doc_dir} COMPONENT programs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${doc_dir} COMPONENT programs
    FILES_MATCHING PATTERN *.json PATTERN *.cpp)
set(dev_doc_dir ${CMAKE_INSTALL_DATADIR}/doc/libkta-dev)
install(FILES ${PROJECT_SOURCE_DIR}/docs/kta-reader.md ${PROJECT_SOURCE_DIR}/docs/kta-format.md
    DESTINATION ${dev_doc_dir} COMPONENT kta_reader)
install(FILES ${PROJECT_SOURCE_DIR}/examples/list_meshes.cpp
    DESTINATION ${dev_doc_dir}/examples COMPONENT kta_reader)

set(changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
add_custom_command(
    OUTPUT ${changelog}
    COMMAND gzip -9nc ${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog > ${changelog}
    DEPENDS debian/changelog
    VERBATIM)
add_custom_target(changelog ALL DEPENDS ${changelog})
foreach(component programs kta_reader)
    set(directory ${doc_dir})
    if(component STREQUAL kta_reader)
        set(directory ${dev_doc_dir})
    endif()
    install(FILES ${changelog} ${CMAKE_CURRENT_SOURCE_DIR}/debian/copyright
        DESTINATION ${directory} COMPONENT ${component})
endforeach()

# ---------------------------------------------------------------- packages

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL programs kta_reader)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Kestrel Works <hdo-export@kestrel-works.example.com>")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME hdo-export)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PROGRAMS_DESCRIPTION
"exporter of 3D scenes to KTA files, without 3ds Max
hdo-export reads scene descriptions and the model files that Assimp reads,
such as FBX, glTF, Collada and OBJ, loads the HDO exporter's plug-in as 3ds
Max would, and writes an actor and a motion file. It runs in builds and on
farms, tells what was lost and how far an export is from its scene.

kta looks into such files: what they hold, whether they are sound, what
differs between two of them; it draws them and converts them to glTF.")

set(CPACK_DEBIAN_KTA_READER_PACKAGE_NAME libkta-dev)
set(CPACK_DEBIAN_KTA_READER_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_KTA_READER_PACKAGE_DEPENDS "libstdc++-12-dev | libstdc++-dev")
set(CPACK_DEBIAN_KTA_READER_DESCRIPTION
"reader of KTA files (development files)
kta_reader reads the actor and motion files of the HDO exporter: every chunk
and field, with the place and the kind of each fault. It is a static library
in C++20.

This package has the library, its headers, a CMake package, a file for
pkg-config, and an example.")
