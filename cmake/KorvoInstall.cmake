# SPDX-License-Identifier: Apache-2.0
# Where what is installed goes, in four components: `library`, `development` (what compiling needs), `lua` (the module and
# the stub for editors), and `platform` (the two libraries and the service for development machines, which a camera
# brings itself). The packages of KorvoPackages.cmake are these components.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

get_target_property(KORVO_SOVERSION korvo-api-action-engine SOVERSION)
set(KORVO_LUA_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/lua/5.1)
set(KORVO_CXX_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/korvo-api-action-engine)
set(KORVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/korvo-api-action-engine)

# ---- The client library ----

install(TARGETS korvo-api-action-engine EXPORT korvo-api-action-engine
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)

install(FILES include/korvo_api_action_engine.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
# For C++ that goes deeper: hosts that extend the Lua module, other clients built on the base classes.
install(FILES src/json/json.h src/json/lists.h src/json/numbers.h
  DESTINATION ${KORVO_CXX_INCLUDE_DIR}/json COMPONENT development)
install(FILES src/frame/interfaces.h src/frame/uuid_generator.h
  DESTINATION ${KORVO_CXX_INCLUDE_DIR}/frame COMPONENT development)

install(EXPORT korvo-api-action-engine NAMESPACE korvo:: FILE korvo-api-action-engine-targets.cmake
  DESTINATION ${KORVO_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/korvo-api-action-engine-config.cmake.in
  ${PROJECT_BINARY_DIR}/korvo-api-action-engine-config.cmake INSTALL_DESTINATION ${KORVO_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korvo-api-action-engine-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/korvo-api-action-engine-config.cmake
  ${PROJECT_BINARY_DIR}/korvo-api-action-engine-config-version.cmake
  DESTINATION ${KORVO_CMAKE_DIR} COMPONENT development)

configure_file(cmake/korvo-api-action-engine.pc.in ${PROJECT_BINARY_DIR}/korvo-api-action-engine.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/korvo-api-action-engine.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# ---- The Lua module ----

if(KORVO_LUA)
  file(RELATIVE_PATH to_library ${CMAKE_INSTALL_FULL_LIBDIR}/lua/5.1 ${CMAKE_INSTALL_FULL_LIBDIR})
  set(module_link ${PROJECT_BINARY_DIR}/installed/korvo_api_action_engine.so)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/installed)
  file(CREATE_LINK ${to_library}libkorvo-api-action-engine.so.${KORVO_SOVERSION} ${module_link} SYMBOLIC)
  install(FILES ${module_link} DESTINATION ${KORVO_LUA_MODULE_DIR} COMPONENT lua)
  install(FILES src/lua/conversions.h src/lua/module.h src/lua/typed_pointer.h
    DESTINATION ${KORVO_CXX_INCLUDE_DIR}/lua COMPONENT development)
  # Not where require() looks, which would take it for the module.
  if(TARGET lua-stub)
    get_target_property(stub lua-stub KORVO_STUB)
    install(FILES ${stub} DESTINATION ${CMAKE_INSTALL_DATADIR}/korvo-api-action-engine/lua-stub COMPONENT lua)
  endif()
  install(DIRECTORY examples/lua DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT lua
    FILES_MATCHING PATTERN "*.lua")
endif()

install(DIRECTORY examples/c DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT development
  FILES_MATCHING PATTERN "*.c")

# ---- The development platform ----

if(KORVO_PLATFORM STREQUAL "development")
  install(TARGETS korvo-core korvo-interfaces EXPORT korvo-api-action-engine
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT platform NAMELINK_COMPONENT development)
  install(FILES platform/core/include/korvo_core.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  install(TARGETS korvo-action-engine-simulator
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT platform)
  install(FILES simulator/korvo-action-engine-simulator.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT platform)
endif()
