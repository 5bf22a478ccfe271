# Installing kibbar like desktop software (cmake --install, GNUInstallDirs) and
# the Debian package CPack builds from it:
#   bin/kibbar                                   the program
#   lib[/<triplet>]/kibbar/libkibplatform.so     the platform library the program and bundles share
#   lib[/<triplet>]/kibbar/bundles/Parlo.menuextra/  the extra's bundle
#   share/kibbar/examples/                        the built-in scenario, more scenarios and scripts
#   share/doc/kibbar/                             README, docs, pictures, copyright, changelog
#   share/man/man1/kibbar.1.gz                    the manual page
#   share/applications/kibbar.desktop             starts kibbar --panel
#   /etc/xdg/autostart/kibbar.desktop             starts kibbar --panel with the session
include(GNUInstallDirs)

set(KIB_INSTALL_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/kibbar)
# The program finds libkibplatform and the bundle relative to its own place.
file(RELATIVE_PATH kib_bin_to_private /${CMAKE_INSTALL_BINDIR} /${KIB_INSTALL_PRIVATE_LIBDIR})
set_target_properties(kibbar PROPERTIES INSTALL_RPATH "$ORIGIN/${kib_bin_to_private}")
target_compile_definitions(kibhost PRIVATE KIB_INSTALLED_BUNDLE_DIR="${kib_bin_to_private}/bundles")
install(TARGETS kibbar RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS kibplatform LIBRARY DESTINATION ${KIB_INSTALL_PRIVATE_LIBDIR} NAMELINK_SKIP)

if(TARGET VelmoKibExtraBundle)
  set(kib_bundle_dir ${KIB_INSTALL_PRIVATE_LIBDIR}/bundles/Parlo.menuextra)
  set_target_properties(VelmoKibExtraBundle PROPERTIES INSTALL_RPATH "$ORIGIN/../..")
  install(TARGETS VelmoKibExtraBundle LIBRARY DESTINATION ${kib_bundle_dir})
  install(FILES ${CMAKE_SOURCE_DIR}/MenuExtra/bundle/Info.json DESTINATION ${kib_bundle_dir})
  install(DIRECTORY ${CMAKE_SOURCE_DIR}/Resources/ DESTINATION ${kib_bundle_dir}/Resources)
endif()

install(DIRECTORY ${CMAKE_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/kibbar/examples)
install(FILES ${CMAKE_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs
        PATTERN "kibbar.1" EXCLUDE)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})

# Manual page and changelog compressed as Debian wants them (gzip -9n: no name, no time stamp).
find_program(KIB_GZIP gzip REQUIRED)
set(kib_manpage ${CMAKE_BINARY_DIR}/packaging/kibbar.1.gz)
set(kib_changelog ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
add_custom_command(OUTPUT ${kib_manpage}
                   COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
                   COMMAND ${KIB_GZIP} -9nc ${CMAKE_SOURCE_DIR}/docs/kibbar.1 > ${kib_manpage}
                   DEPENDS ${CMAKE_SOURCE_DIR}/docs/kibbar.1 VERBATIM)
add_custom_command(OUTPUT ${kib_changelog}
                   COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
                   COMMAND ${KIB_GZIP} -9nc ${CMAKE_CURRENT_LIST_DIR}/changelog > ${kib_changelog}
                   DEPENDS ${CMAKE_CURRENT_LIST_DIR}/changelog VERBATIM)
add_custom_target(kibbar_packaging_files ALL DEPENDS ${kib_manpage} ${kib_changelog})
install(FILES ${kib_manpage} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${kib_changelog} DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(FILES ${CMAKE_CURRENT_LIST_DIR}/kibbar.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
# XDG autostart entries live in the system configuration folder: /etc/xdg/autostart
# when the prefix is /usr (the package), <prefix>/etc/xdg/autostart otherwise. The
# prefix is only known at install time (cmake --install --prefix, CPack).
install(CODE "
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    set(kib_autostart /etc/xdg/autostart)
  else()
    set(kib_autostart \${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_SYSCONFDIR}/xdg/autostart)
  endif()
  file(INSTALL ${CMAKE_CURRENT_LIST_DIR}/kibbar-autostart.desktop DESTINATION \${kib_autostart}
       RENAME kibbar.desktop)")

# The Debian package: cmake --build build --target package (or cpack in the build folder).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kibbar)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "kibbar developers <kibbar@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "status-bar extra showing your messaging status and buddies")
set(CPACK_PACKAGE_DESCRIPTION
    "kibbar shows your own instant-messaging presence in the desktop's panel as an\n"
    "icon with a short scrolling banner. Its menu changes your status, lists the\n"
    "people available now and opens chats with them, and shows an active\n"
    "screen-sharing session. It runs in a terminal, headless on scripts, or in\n"
    "any panel that hosts StatusNotifierItems, over a simulated messaging world.")
string(REPLACE ";" "" CPACK_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# libkibplatform is the package's own private library: not a dependency to look for elsewhere.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/platform)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(kib_conffiles ${CMAKE_BINARY_DIR}/packaging/conffiles)
file(WRITE ${kib_conffiles} "/etc/xdg/autostart/kibbar.desktop\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${kib_conffiles})
# Installed with DESTDIR under the prefix /usr, so the autostart entry lands in /etc.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
