# The plug-in alone, built against the 3ds Max SDK, for artists.
install(TARGETS hdoexport
    RUNTIME DESTINATION . COMPONENT programs
    LIBRARY DESTINATION . COMPONENT programs)
hdo_install_text(windows/INSTALL.txt.in INSTALL.txt)
hdo_install_text(${PROJECT_SOURCE_DIR}/LICENSE LICENSE.txt)
set(CPACK_PACKAGE_FILE_NAME hdoexport-${PROJECT_VERSION}-3dsmax2012)
include(zip.cmake)
