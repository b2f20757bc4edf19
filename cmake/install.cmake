# What an installation consists of, and the package of it: cpack in a release build makes a .deb.
include(GNUInstallDirs)
# Our libraries are in a folder of their own: no other program is to link them.
set(private_libraries ${CMAKE_INSTALL_LIBDIR}/torvell)

install(TARGETS torvell RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS torvcore rvx_platform rvx LIBRARY DESTINATION ${private_libraries})
set_target_properties(torvell PROPERTIES
  INSTALL_RPATH "$ORIGIN/../${private_libraries}")
set_target_properties(torvcore rvx rvx_platform PROPERTIES INSTALL_RPATH "$ORIGIN")

install(DIRECTORY docs/help DESTINATION ${CMAKE_INSTALL_DATADIR}/torvell FILES_MATCHING PATTERN *.md)
install(FILES docs/man/torvell.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/completion/torvell.bash RENAME torvell
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES packaging/org.torvell.Torvell.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/torvell.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES packaging/org.torvell.Torvell.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/torvell)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME torvell)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The TORVELL developers <torvell@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Runs trays of oil samples on RVX cold-cranking simulators")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
# Found from what the programs link; the libraries of our own are in the package.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/bin)
# The window's platform plugin, its icon theme and what draws the icon are loaded by name.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6gui6, libqt6svg6, hicolor-icon-theme")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-qpa-plugins, fonts-dejavu-core")
include(CPack)
