# SPDX-License-Identifier: Apache-2.0
# Debian packages, one for each component of KorvoInstall.cmake: cpack --config build/<preset>/CPackConfig.cmake
# Equal sources give equal packages when SOURCE_DATE_EPOCH is set.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvo-api-action-engine)
set(CPACK_PACKAGE_CONTACT "${KORVO_PACKAGE_CONTACT}")
# Each package has a description of its own, the first line a summary; with a summary for all they would share that.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL library development lua tool platform)
if(NOT KORVO_LUA)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL lua)
endif()
if(NOT TARGET korvo-action-engine)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL tool)
endif()
if(KORVO_PLATFORM STREQUAL "external")
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL platform)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What packages of programs that link our libraries will depend on.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/platform/core ${PROJECT_BINARY_DIR}/platform/interfaces)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(library ${KORVO_LIBRARY_PACKAGE})
set(platform ${KORVO_PLATFORM_PACKAGE})
set(same_version "(= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "client library of a camera's action_engine service
The service runs actions (send an e-mail, upload a file, save a snapshot,
move the camera's head, switch a relay) when triggers fire (a timer, an
ONVIF event). Programs call one plain C function per operation: waiting, in
two steps, or with a callback.
.
This package holds the shared library, which is also a Lua module.")
# Where the platform is the camera's, it is no package of ours.
if(KORVO_PLATFORM STREQUAL "development")
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "${platform} ${same_version}")
  set(needs_platform ", ${platform} ${same_version}")
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${KORVO_DEVELOPMENT_PACKAGE})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "client library of a camera's action_engine service (development files)
The service runs actions when triggers fire; programs call one plain C
function per operation.
.
This package holds what compiling programs takes: the C header, which is the
manual, the C++ headers of the base classes and of hosts of the Lua module, a
pkg-config file, a CMake package, and example programs in C.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} ${same_version}${needs_platform}")
# The C++ headers of the base classes include Boost's, those for hosts of the Lua module Lua's. C callers need neither.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "libboost1.81-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "liblua5.1-0-dev")

set(CPACK_DEBIAN_LUA_PACKAGE_NAME ${KORVO_LUA_PACKAGE})
set(CPACK_DEBIAN_LUA_PACKAGE_SECTION interpreters)
set(CPACK_DEBIAN_LUA_DESCRIPTION "Lua 5.1 modules for a camera's action_engine service
Scripts for Lua 5.1 and LuaJIT create, list and bind actions and triggers, and
wait for events and answers.
.
This package holds korvo.action_engine, which takes named arguments and gives
tables; below it korvo_api_action_engine, the functions that C programs call;
their manuals, example scripts, and stubs with which editors complete and
explain both.")
set(CPACK_DEBIAN_LUA_PACKAGE_DEPENDS "${library} ${same_version}")
set(CPACK_DEBIAN_LUA_PACKAGE_SUGGESTS "lua5.1 | luajit")
# The component holds links and texts; there is no program in it whose libraries could be looked up.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${KORVO_TOOL_PACKAGE})
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "camera's action_engine service from a shell
Every operation of the service is a command, with results as tables or JSON
and exit codes that scripts can rely on. Rules are made in one go and undone
when a step fails; whole catalogues are exported, compared and imported;
events are watched and injected; and where the service keeps traces, it tells
why an action ran or did not.
.
This package holds the program korvo-action-engine, its manual pages, its
manual, example scripts, and completion for bash and zsh.")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${library} ${same_version}${needs_platform}")
# For pictures, and for the example scripts.
set(CPACK_DEBIAN_TOOL_PACKAGE_SUGGESTS "graphviz, jq")

set(CPACK_DEBIAN_PLATFORM_PACKAGE_NAME ${platform})
set(CPACK_DEBIAN_PLATFORM_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PLATFORM_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PLATFORM_DESCRIPTION "action_engine service and platform libraries for workstations
Programs written for a camera run unchanged on a workstation with this package:
libkorvo-core and libkorvo-interfaces in place of the camera's own, and
korvo-action-engine-simulator, which keeps the catalogue, fires real timers,
takes events, writes snapshots and mails into folders, and can be told to
answer late, wrongly or not at all.")

include(CPack)
