# What is installed beside the programs, and the Debian package: packaging/make_deb.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON) # installing needs the two programs, not tests and benchmarks
set(package planilha-de-bombas)

install(PROGRAMS packaging/${package} DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/${package}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/planilha.svg RENAME ${package}.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(PROGRAMS demo/make_station demo/leituras.sh DESTINATION ${CMAKE_INSTALL_DATADIR}/${package}/demo)
install(DIRECTORY demo/ DESTINATION ${CMAKE_INSTALL_DATADIR}/${package}/demo
  FILES_MATCHING PATTERN "*.sql" PATTERN "*.awk" PATTERN "*.ini" PATTERN tour EXCLUDE)
install(FILES README.md CHANGELOG.md docs/manual.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
install(FILES LICENSE RENAME copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
install(DIRECTORY docs/pictures DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${package})
set(CPACK_PACKAGE_CONTACT "Planilha de Bombas <planilha@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "daily pump reading sheet of a fuel station")
set(CPACK_PACKAGE_DESCRIPTION
  "Meter readings of the pumps, closing with stock deduction, registers, fuel ledger, tank dip readings and printed
reports, on an Access data file (.mdb) or a MySQL server. With a demonstration station.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Beside the linked libraries: icon, standard buttons in Portuguese, the papers' fonts.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, qt6-translations-l10n, fonts-liberation")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "odbc-mariadb")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cups-client")
include(CPack)
