# A zip of one folder: the programs with everything that they need beside them, documents, licences.

install(TARGETS hdo-export kta hdoexport haldenexport maxhost
    RUNTIME DESTINATION . COMPONENT programs
    LIBRARY DESTINATION . COMPONENT programs)
# Debian's have symbols for the debugger, ten times their size.
foreach(library IN LISTS HDO_COMPILER_LIBRARIES)
    get_filename_component(name ${library} NAME)
    set(stripped ${CMAKE_CURRENT_BINARY_DIR}/${name})
    execute_process(COMMAND ${CMAKE_STRIP} -o ${stripped} ${library} COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${stripped} DESTINATION . COMPONENT programs)
endforeach()

if(TARGET hdo_assimp)
    set(HDO_SCENES_READ "Scenes are scene descriptions (*.maxscene.json), and model files of the formats
that docs\\formats.md lists, such as FBX, glTF, Collada and OBJ.")
    install(DIRECTORY ${HDO_ASSIMP_DIR}/licences DESTINATION . COMPONENT programs)
endif()
hdo_install_text(windows/INSTALL.txt.in INSTALL.txt)

install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION . COMPONENT programs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION . COMPONENT programs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION . COMPONENT programs
    FILES_MATCHING PATTERN *.json)

# ---------------------------------------------------------------- licences

# The project's own, with the header files that it is compiled with; then, from Debian's packages, of
# what stands in the folder or in the programs: the compiler's libraries, mingw-w64's run-time
# library, zlib, libgcrypt, libgpg-error, three.js; and the long ones that these refer to.
hdo_install_text(debian/copyright licences/hdo-exporter.txt)
foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev libz-mingw-w64-dev
        libgcrypt-mingw-w64-dev libgpg-error-mingw-w64-dev libjs-three)
    set(licence /usr/share/doc/${package}/copyright)
    if(NOT EXISTS ${licence})
        message(FATAL_ERROR "no ${licence}, expected the package ${package}")
    endif()
    install(FILES ${licence} DESTINATION licences RENAME ${package}.txt COMPONENT programs)
endforeach()
foreach(licence LGPL-2.1 GPL-2 GPL-3)
    install(FILES /usr/share/common-licenses/${licence}
        DESTINATION licences RENAME ${licence}.txt COMPONENT programs)
endforeach()

# ---------------------------------------------------------------- package

set(CPACK_PACKAGE_FILE_NAME hdo-exporter-${PROJECT_VERSION}-win64)
include(zip.cmake)
