# Installation, by component: library, dev (headers, CMake package, pkg-config file) and terminal.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
string(COMPARE EQUAL "${CMAKE_INSTALL_PREFIX}" /usr system)

# install_gzipped(FILE NAME DESTINATION COMPONENT): FILE, with @VARIABLES@ filled in, compressed as NAME.gz.
function(install_gzipped file name destination component)
  set(text ${CMAKE_CURRENT_BINARY_DIR}/packaging/${component}/${name})
  configure_file(${file} ${text} @ONLY)
  execute_process(COMMAND gzip -9nkf ${text} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${text}.gz DESTINATION ${destination} COMPONENT ${component})
endfunction()

# install_configured(FILE DESTINATION COMPONENT): FILE.in with @VARIABLES@ filled in.
function(install_configured name destination component)
  configure_file(packaging/${name}.in packaging/${name} @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/packaging/${name} DESTINATION ${destination} COMPONENT ${component})
endfunction()

# Only the headers of the boundary. They need C++17.
file(GLOB boundary CONFIGURE_DEPENDS host/*.h)
target_sources(pocketagent PUBLIC FILE_SET HEADERS
  BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${boundary} pocketagent/ipocketagent.h)
target_compile_features(pocketagent INTERFACE cxx_std_17)

install(TARGETS pocketagent EXPORT pocketagent
  LIBRARY COMPONENT library NAMELINK_COMPONENT dev
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/pocketagent COMPONENT dev)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/pocketagent)
install(EXPORT pocketagent NAMESPACE pocketagent:: FILE pocketagentConfig.cmake DESTINATION ${package} COMPONENT dev)
write_basic_package_version_file(packaging/pocketagentConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/packaging/pocketagentConfigVersion.cmake
  DESTINATION ${package} COMPONENT dev)
file(RELATIVE_PATH UP /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
install_configured(pocketagent.pc ${CMAKE_INSTALL_LIBDIR}/pkgconfig dev)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)

# install_program(PROGRAM COMPONENT): with its man page and its systemd unit.
function(install_program program component)
  file(READ packaging/hardening.conf HARDENING)
  install(TARGETS ${program} RUNTIME COMPONENT ${component})
  install_gzipped(packaging/${program}.1.in ${program}.1 ${CMAKE_INSTALL_MANDIR}/man1 ${component})
  install_configured(${program}.service lib/systemd/system ${component})
endfunction()

if(POCKETAGENT_TERMINAL)
  if(NOT system)  # the loader searches only the system's folders
    file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(pocket-terminal PROPERTIES INSTALL_RPATH $ORIGIN/${libraries})
  endif()
  install_program(pocket-terminal terminal)
  install_program(pocket-relay relay)
endif()

if(system)
  include(cmake/packages.cmake)
endif()
