# The three Debian packages, made by CPack: the library with its headers, the terminal, and the relay. See scripts/make-packages.
set(POCKETAGENT_MAINTAINER "pocketagent maintainers <maintainers@pocketagent.invalid>" CACHE STRING
  "Name and address of the packages' maintainer")

# The changelog's heading has the date of the release.
file(STRINGS CHANGELOG.md heading REGEX "^## \\[${PROJECT_VERSION}\\] - ")
string(REGEX MATCH "[0-9-]+$" released "${heading}")
if(NOT released)
  message(FATAL_ERROR "CHANGELOG.md has no heading \"## [${PROJECT_VERSION}] - YYYY-MM-DD\"")
endif()
execute_process(COMMAND date --utc --rfc-email --date=${released} OUTPUT_VARIABLE RELEASE_DATE
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

# install_documents(PACKAGE COMPONENT): the documents that every Debian package must have.
function(install_documents PACKAGE component)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${PACKAGE})
  install_gzipped(CHANGELOG.md changelog ${folder} ${component})
  install_gzipped(packaging/changelog.Debian.in changelog.Debian ${folder} ${component})
  install(FILES packaging/copyright DESTINATION ${folder} COMPONENT ${component})
endfunction()
install_documents(pocketagent library)
install_documents(pocket-terminal terminal)
install_documents(pocket-relay relay)

set(control ${PROJECT_SOURCE_DIR}/packaging/control)

# make_service(SERVICE COMPONENT): its settings file and the scripts of its package, which are left in `scripts`.
function(make_service SERVICE component)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/packaging/control/${SERVICE})
  foreach(name conffiles postinst prerm postrm)
    configure_file(${control}/${name}.in ${folder}/${name} @ONLY)
    list(APPEND scripts ${folder}/${name})
  endforeach()
  install(FILES packaging/${SERVICE}.toml DESTINATION /etc/${SERVICE} COMPONENT ${component})
  set(scripts ${scripts} PARENT_SCOPE)
endfunction()
set(CPACK_GENERATOR DEB)
set(CPACK_SET_DESTDIR ON)  # settings go to /etc
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${POCKETAGENT_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_AGENT_PACKAGE_NAME pocketagent)
set(CPACK_DEBIAN_AGENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_AGENT_PACKAGE_CONTROL_EXTRA ${control}/triggers)
set(CPACK_COMPONENT_AGENT_DESCRIPTION "phone access to the accounts of a trading terminal
A shared library that a desktop trading terminal loads, so that a phone can
see and work the terminal's accounts, with its headers, CMake package and
pkg-config file.")

set(CPACK_DEBIAN_TERMINAL_PACKAGE_NAME pocket-terminal)
set(CPACK_DEBIAN_TERMINAL_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_TERMINAL_PACKAGE_DEPENDS "pocketagent (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
make_service(pocket-terminal terminal)
set(CPACK_DEBIAN_TERMINAL_PACKAGE_CONTROL_EXTRA ${scripts})
unset(scripts)
set(CPACK_COMPONENT_TERMINAL_DESCRIPTION "paper-trading terminal that phones can see and work
The reference host of the pocketagent library: a paper-trading terminal with
an embedded database, and a WebSocket gateway for phones. It trades on paper
only.")

set(CPACK_DEBIAN_RELAY_PACKAGE_NAME pocket-relay)
set(CPACK_DEBIAN_RELAY_PACKAGE_SECTION net)
make_service(pocket-relay relay)
set(CPACK_DEBIAN_RELAY_PACKAGE_CONTROL_EXTRA ${scripts})
set(CPACK_COMPONENT_RELAY_DESCRIPTION "relay that connects phones with trading terminals
Serves a web page and WebSockets to phones and passes their messages on to
paper-trading terminals over a cluster of NATS servers, to which both connect.
It keeps neither tokens nor messages.")

include(CPack)
cpack_add_component_group(agent)
cpack_add_component(library GROUP agent)
cpack_add_component(dev GROUP agent)
cpack_add_component(terminal)
cpack_add_component(relay)
