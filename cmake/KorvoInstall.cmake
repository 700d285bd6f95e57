# SPDX-License-Identifier: Apache-2.0
# Where what is installed goes, in five components: `library`, `development` (what compiling needs), `lua` (the modules
# and the stubs for editors), `tool` (the service from a shell), and `platform` (the two libraries and the service for
# development machines, which a camera brings itself). The packages of KorvoPackages.cmake are these components. The
# target `product` is what they need built.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

get_target_property(KORVO_SOVERSION korvo-api-action-engine SOVERSION)
set(KORVO_LUA_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/lua/5.1)
set(KORVO_CXX_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/korvo-api-action-engine)
set(KORVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/korvo-api-action-engine)

add_custom_target(product DEPENDS korvo-api-action-engine)

# A file that people read, compressed where gzip is found, as Debian has manuals and changelogs.
find_program(KORVO_GZIP gzip)
mark_as_advanced(KORVO_GZIP)
function(korvo_install_compressed file destination component)
  install(FILES ${file} DESTINATION ${destination} COMPONENT ${component})
  if(KORVO_GZIP)
    get_filename_component(name ${file} NAME)
    install(CODE "execute_process(COMMAND ${KORVO_GZIP} -9nf \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/${name}\"
      COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
  endif()
endfunction()

# The installed file looks for libraries where korvo_search_path() has said, and no longer in the build tree. By the
# command that CMake's own scripts of installation use.
function(korvo_install_search_path target destination component)
  set(joined "$<JOIN:$<TARGET_PROPERTY:${target},INSTALL_RPATH>,:>")
  set(installed "$<JOIN:$<TARGET_PROPERTY:${target},KORVO_INSTALLED_RPATH>,:>")
  install(CODE "file(RPATH_CHANGE
    FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/$<TARGET_FILE_NAME:${target}>\"
    OLD_RPATH [[${joined}]] NEW_RPATH [[${installed}]])" COMPONENT ${component})
endfunction()

# ---- The client library ----

install(TARGETS korvo-api-action-engine EXPORT korvo-api-action-engine
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
korvo_install_search_path(korvo-api-action-engine ${CMAKE_INSTALL_LIBDIR} library)

install(FILES include/korvo_api_action_engine.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
# The C++ layer: what stands in the tree, and what the build writes.
if(TARGET korvo-action-engine-hpp)
  add_dependencies(product cpp-layer-header)
  install(DIRECTORY include/korvo DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
    FILES_MATCHING PATTERN "*.hpp")
  get_target_property(layer cpp-layer-header KORVO_HEADER)
  install(FILES ${layer} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/korvo COMPONENT development)
  install(TARGETS korvo-action-engine-hpp EXPORT korvo-api-action-engine)
  install(DIRECTORY examples/cpp DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT development
    FILES_MATCHING PATTERN "*.cpp")
endif()
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

if(KORVO_STRING_DEFINITION)
  set(KORVO_STRING_FLAG " -D${KORVO_STRING_DEFINITION}")
endif()
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
    add_dependencies(product lua-stub)
    get_target_property(stub lua-stub KORVO_STUB)
    install(FILES ${stub} DESTINATION ${CMAKE_INSTALL_DATADIR}/korvo-api-action-engine/lua-stub COMPONENT lua)
  endif()
  # korvo.action_engine: what stands in the tree and what the build writes, where scripts look for Lua files.
  if(TARGET lua-layer)
    add_dependencies(product lua-layer)
    install(TARGETS korvo_action_engine_events LIBRARY DESTINATION ${KORVO_LUA_MODULE_DIR} COMPONENT lua)
    korvo_install_search_path(korvo_action_engine_events ${KORVO_LUA_MODULE_DIR} lua)
    install(DIRECTORY src/lua_layer/korvo DESTINATION ${CMAKE_INSTALL_DATADIR}/lua/5.1 COMPONENT lua
      FILES_MATCHING PATTERN "*.lua")
    get_target_property(table lua-layer KORVO_TABLE)
    install(FILES ${table} DESTINATION ${CMAKE_INSTALL_DATADIR}/lua/5.1/korvo/action_engine COMPONENT lua)
    get_target_property(stub lua-layer KORVO_STUB)
    install(FILES ${stub} DESTINATION ${CMAKE_INSTALL_DATADIR}/korvo-api-action-engine/lua-stub/korvo COMPONENT lua)
  endif()
  install(DIRECTORY examples/lua DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT lua
    FILES_MATCHING PATTERN "*.lua")
endif()

install(DIRECTORY examples/c DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT development
  FILES_MATCHING PATTERN "*.c")

# ---- The development platform ----

if(KORVO_PLATFORM STREQUAL "development")
  add_dependencies(product korvo-core korvo-interfaces korvo-action-engine-simulator)
  install(TARGETS korvo-core korvo-interfaces EXPORT korvo-api-action-engine
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT platform NAMELINK_COMPONENT development)
  install(FILES platform/core/include/korvo_core.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  install(TARGETS korvo-action-engine-simulator
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT platform)
  korvo_install_search_path(korvo-interfaces ${CMAKE_INSTALL_LIBDIR} platform)
  korvo_install_search_path(korvo-action-engine-simulator ${CMAKE_INSTALL_BINDIR} platform)
  # Where systemd looks for units of users, whatever the prefix's own lib folder is called.
  install(FILES simulator/systemd/korvo-action-engine-simulator.service
    DESTINATION lib/systemd/user COMPONENT platform)
  install(FILES simulator/systemd/network.conf
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/korvo-development-platform/examples COMPONENT platform)
  korvo_install_compressed(simulator/korvo-action-engine-simulator.1 ${CMAKE_INSTALL_MANDIR}/man1 platform)
  korvo_install_compressed(simulator/korvo-action-engine-capture.5 ${CMAKE_INSTALL_MANDIR}/man5 platform)
endif()

# ---- The tool ----

if(TARGET korvo-action-engine)
  add_dependencies(product korvo-action-engine tool-pages)
  install(TARGETS korvo-action-engine RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  korvo_install_search_path(korvo-action-engine ${CMAKE_INSTALL_BINDIR} tool)
  get_target_property(written tool-pages KORVO_FOLDER)
  install(FILES ${written}/korvo-action-engine
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions COMPONENT tool)
  # Debian keeps apart what its packages bring and what an administrator installs.
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(zsh_folder ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions)
  else()
    set(zsh_folder ${CMAKE_INSTALL_DATAROOTDIR}/zsh/site-functions)
  endif()
  install(FILES ${written}/_korvo-action-engine DESTINATION ${zsh_folder} COMPONENT tool)
  korvo_install_compressed(${written}/korvo-action-engine.1 ${CMAKE_INSTALL_MANDIR}/man1 tool)
  korvo_install_compressed(${written}/korvo-action-engine-catalogue.5 ${CMAKE_INSTALL_MANDIR}/man5 tool)
endif()

# ---- What people read ----

# In a folder called like the package that the component makes.
set(KORVO_LIBRARY_PACKAGE libkorvo-api-action-engine${KORVO_SOVERSION})
set(KORVO_DEVELOPMENT_PACKAGE libkorvo-api-action-engine-dev)
set(KORVO_LUA_PACKAGE lua-korvo-api-action-engine)
set(KORVO_TOOL_PACKAGE korvo-action-engine)
set(KORVO_PLATFORM_PACKAGE korvo-development-platform)

set(KORVO_PACKAGE_CONTACT "The korvo-api-action-engine developers <developers@korvo-api-action-engine.invalid>"
  CACHE STRING "Whom the packages name as their maintainer")
# What Debian wants to read beside that, in its own form.
string(TIMESTAMP KORVO_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/debian/changelog ${PROJECT_BINARY_DIR}/installed/changelog @ONLY)

function(korvo_install_documents component package)
  set(folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package})
  install(FILES cmake/debian/copyright ${ARGN} DESTINATION ${folder} COMPONENT ${component})
  korvo_install_compressed(CHANGELOG.md ${folder} ${component})
  korvo_install_compressed(${PROJECT_BINARY_DIR}/installed/changelog ${folder} ${component})
endfunction()
korvo_install_documents(library ${KORVO_LIBRARY_PACKAGE} docs/on-the-camera.md docs/oddities.md docs/reliability.md
  docs/versioning.md SECURITY.md)
korvo_install_documents(development ${KORVO_DEVELOPMENT_PACKAGE} README.md docs/cpp.md docs/in-your-program.md)
if(KORVO_LUA)
  korvo_install_documents(lua ${KORVO_LUA_PACKAGE} docs/lua-layer.md docs/lua.md)
endif()
if(TARGET korvo-action-engine)
  korvo_install_documents(tool ${KORVO_TOOL_PACKAGE} docs/tool.md)
  install(DIRECTORY examples/shell DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${KORVO_TOOL_PACKAGE}/examples
    COMPONENT tool USE_SOURCE_PERMISSIONS FILES_MATCHING PATTERN "*.sh")
endif()
if(KORVO_PLATFORM STREQUAL "development")
  korvo_install_documents(platform ${KORVO_PLATFORM_PACKAGE}
    docs/development-platform.md docs/configuration-sample.json docs/service.md docs/simulator-control.md
    docs/catalogue-format.md)
  install(FILES simulator/README.md DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${KORVO_PLATFORM_PACKAGE}
    RENAME action-engine-simulator.md COMPONENT platform)
endif()
