# What implements src/platform on POSIX systems.
set(SYSTEM_SOURCES
  posix/clock_posix.cpp
  posix/console_posix.cpp
  posix/fault_guard_posix.cpp
  posix/file_posix.cpp
  posix/mapping_posix.cpp
  posix/memory_posix.cpp
  posix/path_posix.cpp
  posix/uuid_posix.cpp)
set(SYSTEM_LIBRARIES PkgConfig::uuid)
