# SPDX-License-Identifier: Apache-2.0
# Compiles through ccache where that is installed; the presets ask for it, and nothing needs it. A clone in another folder
# finds what this one has compiled: paths below the project count as relative ones, and precompiled headers are compared by
# what they hold. Debug information then names the folder that compiled first: in gdb, `set substitute-path` leads to
# this one. Another launcher that somebody has chosen (CMAKE_CXX_COMPILER_LAUNCHER) stays.

option(KORVO_COMPILER_CACHE "Compile through ccache where that is installed" OFF)

if(KORVO_COMPILER_CACHE)
  find_program(KORVO_CCACHE ccache)
  mark_as_advanced(KORVO_CCACHE)
  if(KORVO_CCACHE)
    foreach(language C CXX)
      if(NOT CMAKE_${language}_COMPILER_LAUNCHER OR CMAKE_${language}_COMPILER_LAUNCHER MATCHES "(^|/)ccache$")
        set(CMAKE_${language}_COMPILER_LAUNCHER
          env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
          ${KORVO_CCACHE})
      endif()
    endforeach()
  endif()
endif()
