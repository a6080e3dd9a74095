# Builds for x86-64 Windows with the mingw-w64 compiler of the system, the variant with POSIX threads.
# tools/windows/setup.sh puts the libraries into QUORVAN_WINDOWS_PREFIX.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(DEFINED ENV{QUORVAN_WINDOWS_PREFIX})
  set(prefix $ENV{QUORVAN_WINDOWS_PREFIX})
elseif(DEFINED ENV{XDG_CACHE_HOME})
  set(prefix $ENV{XDG_CACHE_HOME}/mxf-quorvan/windows)
else()
  set(prefix $ENV{HOME}/.cache/mxf-quorvan/windows)
endif()

# Headers and libraries come from the prefix and the compiler alone, programs from this system. A package
# may also lie outside: Qt finds its own tools of this system in this way.
set(CMAKE_FIND_ROOT_PATH ${prefix} ${prefix}/qt /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
set(ENV{PKG_CONFIG_LIBDIR} ${prefix}/lib/pkgconfig)

# Qt of this system, whose tools the build runs.
file(GLOB host_qt LIST_DIRECTORIES ON /usr/lib/*/cmake/Qt6HostInfo)
if(host_qt)
  list(GET host_qt 0 host_qt)
  cmake_path(GET host_qt PARENT_PATH host_qt)
  set(QT_HOST_PATH /usr CACHE PATH "Qt of this system")
  set(QT_HOST_PATH_CMAKE_DIR ${host_qt} CACHE PATH "Its descriptions for CMake")
endif()

# The programs bring the compiler's own libraries with them: inside, or with the window as DLLs, which Qt
# shares with the program.
if(NOT QUORVAN_WINDOW)
  set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
endif()

# Runs programs of the build here, which find their DLLs beside those of Qt. What Wine keeps lies in the
# folder of the build, and Wine asks for nothing.
find_program(QUORVAN_WINE NAMES wine)
set(QUORVAN_WINE_ENVIRONMENT WINEPATH=Z:${prefix}/qt/bin WINEPREFIX=${CMAKE_BINARY_DIR}/wine
  WINEDLLOVERRIDES=mscoree,mshtml= WINEDEBUG=-all)
if(QUORVAN_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_COMMAND} -E env ${QUORVAN_WINE_ENVIRONMENT} ${QUORVAN_WINE})
endif()
