# What implements src/platform on Windows; posix/sources.cmake lists the functions.
set(SYSTEM_SOURCES
  windows/clock_windows.cpp
  windows/console_windows.cpp
  windows/fault_guard_windows.cpp
  windows/file_windows.cpp
  windows/kept_place_windows.cpp
  windows/language_windows.cpp
  windows/mapping_windows.cpp
  windows/memory_windows.cpp
  windows/no_registry_windows.cpp
  windows/path_windows.cpp
  windows/process_windows.cpp
  windows/text_windows.cpp
  windows/uuid_windows.cpp)
set(SYSTEM_LIBRARIES advapi32 ole32 rpcrt4 shell32 uuid)
