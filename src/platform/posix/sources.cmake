# What implements src/platform on POSIX systems. A folder for another system implements the same
# functions, and asks the fault seam before each call of the system that fault_seam.h names:
#   clock.h        all
#   console.h      all
#   fault_guard.h  RunGuarded
#   file.h         all but the moves of File, Seek, Read, Write, ReadAt, WriteAt and WriteAll
#   kept_place.h   all
#   language.h     UserLanguage
#   mapping.h      MappingGranularity, Unmap and ExpectScattered of MappedView; MakeSystemMapping and
#                  Map of FileMapping
#   memory.h       AvailableMemory
#   no_registry.h  the constructor of NoRegistry
#   path.h         DesktopFolder, AbsolutePath, PathOfAddress
#   process.h      all
#   text.h         AppendInSystemEncoding
#   uuid.h         NewUuid
set(SYSTEM_SOURCES
  posix/clock_posix.cpp
  posix/console_posix.cpp
  posix/fault_guard_posix.cpp
  posix/file_posix.cpp
  posix/kept_place_posix.cpp
  posix/language_posix.cpp
  posix/mapping_posix.cpp
  posix/memory_posix.cpp
  posix/no_registry_posix.cpp
  posix/path_posix.cpp
  posix/process_posix.cpp
  posix/text_posix.cpp
  posix/uuid_posix.cpp)
set(SYSTEM_LIBRARIES PkgConfig::uuid)
