# What is installed beside the programs. debian/ packs it: packaging/make_deb.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON) # installing needs the two programs, not tests and benchmarks
# Whatever the umask of who installs.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(package planilha-de-bombas)

install(PROGRAMS packaging/${package} DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/${package}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/org.planilhadebombas.planilha.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES packaging/planilha.svg RENAME ${package}.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES packaging/man/planilha.1 packaging/man/${package}.1 packaging/man/mdbsql.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(PROGRAMS demo/make_station demo/leituras.sh DESTINATION ${CMAKE_INSTALL_DATADIR}/${package}/demo)
install(DIRECTORY demo/ DESTINATION ${CMAKE_INSTALL_DATADIR}/${package}/demo
  FILES_MATCHING PATTERN "*.sql" PATTERN "*.awk" PATTERN "*.ini" PATTERN tour EXCLUDE)
install(FILES README.md SECURITY.md docs/manual.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
install(FILES LICENSE RENAME copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
install(DIRECTORY docs/pictures DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
