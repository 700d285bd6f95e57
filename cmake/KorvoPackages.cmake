# SPDX-License-Identifier: Apache-2.0
# Debian packages, one for each component of KorvoInstall.cmake: cpack --config build/<preset>/CPackConfig.cmake
# Equal sources give equal packages when SOURCE_DATE_EPOCH is set.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvo-api-action-engine)
set(CPACK_PACKAGE_CONTACT "The korvo-api-action-engine developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL library development lua platform)
if(NOT KORVO_LUA)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL lua)
endif()
if(KORVO_PLATFORM STREQUAL "external")
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL platform)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/platform/core ${PROJECT_BINARY_DIR}/platform/interfaces)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(library libkorvo-api-action-engine${KORVO_SOVERSION})
set(platform korvo-development-platform)
set(same_version "(= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "Client library of the camera's action_engine service")
# Where the platform is the camera's, it is no package of ours.
if(KORVO_PLATFORM STREQUAL "development")
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "${platform} ${same_version}")
  set(needs_platform ", ${platform} ${same_version}")
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorvo-api-action-engine-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Client library of the camera's action_engine service, development files")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} ${same_version}${needs_platform}")
# The C++ headers of the base classes include Boost's, those for hosts of the Lua module Lua's. C callers need neither.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "libboost1.81-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "liblua5.1-0-dev")

set(CPACK_DEBIAN_LUA_PACKAGE_NAME lua-korvo-api-action-engine)
set(CPACK_DEBIAN_LUA_PACKAGE_SECTION interpreters)
set(CPACK_DEBIAN_LUA_DESCRIPTION "Lua 5.1 module for the camera's action_engine service")
set(CPACK_DEBIAN_LUA_PACKAGE_DEPENDS "${library} ${same_version}")
set(CPACK_DEBIAN_LUA_PACKAGE_SUGGESTS "lua5.1 | luajit")
# It holds a link and texts; there is no program in it whose libraries could be looked up.
set(CPACK_DEBIAN_LUA_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_PLATFORM_PACKAGE_NAME ${platform})
set(CPACK_DEBIAN_PLATFORM_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PLATFORM_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PLATFORM_DESCRIPTION
  "The camera's platform libraries and its action_engine service, for workstations")

include(CPack)
