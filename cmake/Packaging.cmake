# `make install` and `make package`: what an installation holds, and the packages a release
# publishes. Linux gets a .deb and a .tar.gz, macOS a .pkg; each package gets a "<name>.sha256"
# file beside it ("<64 hex digits>  <name>"), the form the update command verifies.
include(GNUInstallDirs)

install(TARGETS velmora RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# The desktop application once it exists.
if(TARGET VelmoraApp)
  install(TARGETS VelmoraApp BUNDLE DESTINATION Applications RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
# The manual page and the completions velmora wrote of itself (target velmora-docs), where man,
# bash-completion, zsh and fish look for them.
install(FILES ${CMAKE_BINARY_DIR}/man/velmora.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${CMAKE_BINARY_DIR}/completions/velmora.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME velmora)
install(FILES ${CMAKE_BINARY_DIR}/completions/_velmora DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${CMAKE_BINARY_DIR}/completions/velmora.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_VENDOR "Velmora")
set(CPACK_PACKAGE_CONTACT "Velmora developers <velmora@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "See where storage goes and look after disks, safely")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
if(APPLE)
  # The installer the update command runs: "Velmora-X.Y.Z.pkg" with "Velmora-X.Y.Z.pkg.sha256".
  set(CPACK_GENERATOR productbuild)
  set(CPACK_PACKAGE_FILE_NAME "Velmora-${PROJECT_VERSION}")
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr/local)
  set(CPACK_PRODUCTBUILD_IDENTIFIER app.velmora.Velmora)
else()
  set(CPACK_GENERATOR "DEB;TGZ")
  # "linux" in the tarball's name is how the update command tells it from other systems' tarballs.
  set(CPACK_PACKAGE_FILE_NAME "velmora-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR}")
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gh")
endif()
include(CPack)
