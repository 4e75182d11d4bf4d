# The files that 'cmake --install' copies: headers, both libraries, a CMake package and two pkg-config files.
# All of them find each other relative to their own place, so an installed tree can be moved.
#
# Consumers look for headers in include/vorlen ("Vorlen/Tool.h") and include/vorlen/host ("Pelko/Pole.h").
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Vorlen)
set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/vorlen)

install(TARGETS vorlen EXPORT VorlenTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${header_dir})
install(TARGETS vorlen_host vorlen_host_interface EXPORT VorlenTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${header_dir}/host)
install(EXPORT VorlenTargets NAMESPACE Vorlen:: DESTINATION ${package_dir})

configure_package_config_file(cmake/VorlenConfig.cmake.in VorlenConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(VorlenConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/VorlenConfig.cmake
    ${PROJECT_BINARY_DIR}/VorlenConfigVersion.cmake
    DESTINATION ${package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pkgconfig_prefix ${pkgconfig_prefix})
file(RELATIVE_PATH pkgconfig_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pkgconfig_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(package vorlen vorlen-host)
    configure_file(cmake/${package}.pc.in ${package}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

if(TARGET vorlen_command)
    # The command finds the libraries relative to its own place.
    file(RELATIVE_PATH command_to_libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(vorlen_command PROPERTIES INSTALL_RPATH "$ORIGIN/${command_to_libraries}")
    install(TARGETS vorlen_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES docs/vorlen.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES docs/report.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/vorlen)
    install(FILES completions/vorlen.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME vorlen)
    install(FILES completions/_vorlen DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endif()
