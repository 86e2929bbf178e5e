# What `cmake --install` puts where. Two components: the editor, and the runtime that the service is built on.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Readable for all, whatever the umask of who installs.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# --- The editor ---

install(TARGETS vormaqscfg RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT editor)
install(FILES data/vormaqscfg.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT editor)
install(FILES data/vormaqscfg.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT editor)
install(FILES data/vormaqscfg.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT editor)
install(FILES data/ru/vormaqscfg.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/ru/man1 COMPONENT editor)
install(DIRECTORY docs/ru DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT editor)
install(DIRECTORY data/demo/config DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT editor)

# The picture is drawn from the vector file: rsvg-convert -w 128 data/vormaqscfg.svg -o data/vormaqscfg.png
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES data/vormaqscfg.svg DESTINATION ${icons}/scalable/apps COMPONENT editor)
install(FILES data/vormaqscfg.png DESTINATION ${icons}/128x128/apps COMPONENT editor)

# --- The runtime ---

# The headers that the service may include; what is not listed is the runtime's own.
target_sources(vorma_runtime PUBLIC FILE_SET HEADERS BASE_DIRS src FILES
    src/app/log.h src/app/mg_err.h
    src/runtime/mg_file.h src/runtime/mg_info.h
    src/cert/der_errors.h src/cert/der_memory.h src/cert/der_params.h src/cert/der_reader.h src/cert/mg_cert.h
    src/cert/oid_table.h
    src/config/scrambling.h
    src/net/address_syntax.h src/net/mg_ip.h src/net/mg_socket.h src/net/mg_trelm.h
    src/net/provider.h)
set_target_properties(vorma_runtime PROPERTIES EXPORT_NAME runtime)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/vorma_runtime)
install(TARGETS vorma_runtime EXPORT vorma_runtime
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vorma_runtime COMPONENT runtime)
install(EXPORT vorma_runtime NAMESPACE vorma:: DESTINATION ${package} FILE vorma_runtimeTargets.cmake COMPONENT runtime)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vorma_runtimeConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/vorma_runtimeConfig.cmake ${PROJECT_BINARY_DIR}/vorma_runtimeConfigVersion.cmake
    DESTINATION ${package} COMPONENT runtime)

# --- Outside the prefix ---

# The program reads its window's icon from this path, whatever the prefix. The last, since only root may do it.
install(FILES data/vormaqscfg.png DESTINATION /opt/selunara/vormaqs/icons COMPONENT editor)
