# What `cmake --install` puts where. Two components: the editor, and the runtime that the service is built on.
# Libraries lie in Debian's folder of the architecture, below /usr/local too, where its tools look as well.
if(CMAKE_LIBRARY_ARCHITECTURE AND NOT DEFINED CMAKE_INSTALL_LIBDIR)
    set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "")
endif()
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
install(DIRECTORY docs/ru DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT editor
    PATTERN *.head.html EXCLUDE)
if(GUIDE_HTML)
    install(FILES ${GUIDE_HTML} DESTINATION ${CMAKE_INSTALL_DOCDIR}/ru COMPONENT editor)
endif()
install(DIRECTORY data/demo/config DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT editor)

# The pictures are drawn from the vector file by scripts/icons.
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES data/vormaqscfg.svg DESTINATION ${icons}/scalable/apps COMPONENT editor)
foreach(size 16 22 24 32 48 64 128 256)
    install(FILES data/icons/${size}.png DESTINATION ${icons}/${size}x${size}/apps RENAME vormaqscfg.png COMPONENT editor)
endforeach()

# --- The runtime ---

# The headers that the service may include, as <vorma/app/log.h>; what is not listed is the runtime's own. They include
# each other relative to where they stand, so that they read the same here and installed.
foreach(header
        app/log app/mg_err
        runtime/listed_files runtime/mg_file runtime/mg_info
        cert/der_errors cert/der_memory cert/der_params cert/der_reader cert/mg_cert cert/oid_table
        config/scrambling
        net/address_syntax net/mg_ip net/mg_socket net/mg_trelm net/provider)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES src/${header}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vorma/${folder} COMPONENT runtime)
endforeach()
set_target_properties(vorma_runtime PROPERTIES EXPORT_NAME runtime)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/vorma_runtime)
install(TARGETS vorma_runtime EXPORT vorma_runtime
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vorma_runtime NAMESPACE vorma:: DESTINATION ${package} FILE vorma_runtimeTargets.cmake COMPONENT runtime)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vorma_runtimeConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/vorma_runtimeConfig.cmake ${PROJECT_BINARY_DIR}/vorma_runtimeConfigVersion.cmake
    DESTINATION ${package} COMPONENT runtime)

# With the prefix of the very installation, which may be another than that of the build.
install(CODE "
    set(PROJECT_VERSION ${PROJECT_VERSION})
    set(CMAKE_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
    set(CMAKE_INSTALL_LIBDIR ${CMAKE_INSTALL_LIBDIR})
    configure_file(\"${PROJECT_SOURCE_DIR}/cmake/vorma_runtime.pc.in\" \"${PROJECT_BINARY_DIR}/vorma_runtime.pc\" @ONLY)" COMPONENT runtime)
install(FILES ${PROJECT_BINARY_DIR}/vorma_runtime.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT runtime)
install(DIRECTORY examples/service DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvorma-runtime-dev/examples COMPONENT runtime)

# --- Outside the prefix ---

# The program reads its window's icon from this path, whatever the prefix. The last, since only root may do it.
install(FILES data/icons/128.png DESTINATION /opt/selunara/vormaqs/icons RENAME vormaqscfg.png COMPONENT editor)
