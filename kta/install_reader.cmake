# Installs the reader for programs of others: `cmake --install BUILD --component kta_reader`. They
# find it as the CMake package kta_reader (target kta::reader) or with pkg-config, and include
# <kta/reader.h>.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kta_reader)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/kta_reader)

install(TARGETS kta_reader EXPORT kta_reader
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT kta_reader)
# Under the names by which the headers include one another.
install(FILES reader.h issues.h DESTINATION ${include_dir}/kta COMPONENT kta_reader)
install(FILES ${PROJECT_SOURCE_DIR}/src/format/records.h
    DESTINATION ${include_dir}/format COMPONENT kta_reader)
install(FILES ${PROJECT_SOURCE_DIR}/src/core/types.h
    DESTINATION ${include_dir}/core COMPONENT kta_reader)

install(EXPORT kta_reader NAMESPACE kta:: FILE kta_reader-config.cmake
    DESTINATION ${package_dir} COMPONENT kta_reader)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/kta_reader-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kta_reader-config-version.cmake
    DESTINATION ${package_dir} COMPONENT kta_reader)

# The way from the file back to the prefix, so that what is installed can be moved.
file(RELATIVE_PATH HDO_PC_PREFIX /prefix/${pkgconfig_dir} /prefix)
configure_file(kta_reader.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kta_reader.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kta_reader.pc
    DESTINATION ${pkgconfig_dir} COMPONENT kta_reader)
