# The third-party libraries, by the names that CMake or pkg-config know them by.
find_package(PkgConfig REQUIRED)
find_package(CLI11 REQUIRED)
find_package(CURL REQUIRED)

# A run of the agent lasts a few milliseconds, and each shared library costs a part of one at its
# start: where there is a static archive of what the agent links, it goes before the shared one.
set(suffixes ${CMAKE_FIND_LIBRARY_SUFFIXES})
set(CMAKE_FIND_LIBRARY_SUFFIXES .a ${suffixes})
pkg_check_modules(pugixml REQUIRED IMPORTED_TARGET pugixml)
pkg_check_modules(utf8proc REQUIRED IMPORTED_TARGET libutf8proc)
pkg_check_modules(uuid REQUIRED IMPORTED_TARGET uuid)
pkg_check_modules(sqlite3 REQUIRED IMPORTED_TARGET sqlite3)
# What the archive needs where the shared library brings it along.
target_link_libraries(PkgConfig::sqlite3 INTERFACE m ${CMAKE_DL_LIBS})
# cctz tells of itself in neither way.
find_library(CCTZ_LIBRARY NAMES cctz REQUIRED)
find_path(CCTZ_INCLUDE_DIR NAMES cctz/time_zone.h REQUIRED)
add_library(cctz INTERFACE)
target_link_libraries(cctz INTERFACE ${CCTZ_LIBRARY})
target_include_directories(cctz SYSTEM INTERFACE ${CCTZ_INCLUDE_DIR})
set(CMAKE_FIND_LIBRARY_SUFFIXES ${suffixes})
