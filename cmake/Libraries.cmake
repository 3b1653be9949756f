# The third-party libraries. Where a static archive exists it is used: a run of the agent lasts a
# few milliseconds, and each shared library costs a part of one at its start.
find_package(PkgConfig REQUIRED)

function(annivo_library target archive header)
  find_library(${target}_FILE NAMES ${archive} REQUIRED)
  find_path(${target}_INCLUDE ${header} REQUIRED)
  add_library(${target} INTERFACE)
  target_link_libraries(${target} INTERFACE ${${target}_FILE} ${ARGN})
  target_include_directories(${target} SYSTEM INTERFACE ${${target}_INCLUDE})
endfunction()

annivo_library(annivo_plist plist-2.0 plist/plist.h)
annivo_library(annivo_cctz cctz cctz/time_zone.h)
annivo_library(annivo_sqlite libsqlite3.a sqlite3.h m ${CMAKE_DL_LIBS})
annivo_library(annivo_pugixml libpugixml.a pugixml.hpp)
annivo_library(annivo_utf8proc libutf8proc.a utf8proc.h)
