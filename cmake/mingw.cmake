# Shared by the two Windows toolchains. The cross-built libraries stand in a prefix outside the checkout that
# ./dev setup fills and names through TAVRIX_WINDOWS_PREFIX_<bits>.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${TAVRIX_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TAVRIX_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${TAVRIX_TRIPLET}-windres)
if(NOT DEFINED CACHE{TAVRIX_WINDOWS_PREFIX} AND DEFINED ENV{TAVRIX_WINDOWS_PREFIX_${TAVRIX_BITS}})
  set(TAVRIX_WINDOWS_PREFIX $ENV{TAVRIX_WINDOWS_PREFIX_${TAVRIX_BITS}} CACHE PATH "Cross-built libraries")
endif()
if(NOT TAVRIX_WINDOWS_PREFIX)
  message(FATAL_ERROR "No cross-built libraries are named. ./dev build win${TAVRIX_BITS} does all of it; by hand, "
    "first: ./dev setup and eval \"$(./dev env)\"")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAVRIX_WINDOWS_PREFIX)
set(CMAKE_FIND_ROOT_PATH ${TAVRIX_WINDOWS_PREFIX} /usr/${TAVRIX_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# CTest runs what was built for Windows through Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine-run;${TAVRIX_BITS})
