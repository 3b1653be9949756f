# The code, one static library a room, so that the linker knows which room may use which library: one
# that a room names as PRIVATE is for the room itself.

# The version, told only to the files that say it.
set_source_files_properties(${CMAKE_SOURCE_DIR}/parent/command/CommandLine.cpp PROPERTIES
  COMPILE_DEFINITIONS ANNIVO_VERSION="${PROJECT_VERSION}")
set_source_files_properties("${CMAKE_SOURCE_DIR}/codecs/icalendar/EventFile+Writing.cpp" PROPERTIES
  COMPILE_DEFINITIONS ANNIVO_SHORT_VERSION="${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")

function(annivo_module target folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/(main|ZPKLimitSystem)\\.cpp$")
  add_library(${target} STATIC ${sources})
  target_link_libraries(${target} PRIVATE annivo_options PUBLIC ${ARGN})
  target_include_directories(${target} INTERFACE ${CMAKE_SOURCE_DIR})
endfunction()

annivo_module(annivo_base base)
target_link_libraries(annivo_base PRIVATE cctz PkgConfig::utf8proc PkgConfig::uuid)

annivo_module(annivo_xml codecs/xml annivo_base)
annivo_module(annivo_plist_codec codecs/plist annivo_xml annivo_base)
target_link_libraries(annivo_plist_codec PRIVATE PkgConfig::pugixml)
annivo_module(annivo_icalendar codecs/icalendar annivo_base)
annivo_module(annivo_vcard codecs/vcard annivo_icalendar annivo_base)

annivo_module(annivo_foundation platform/foundation annivo_plist_codec annivo_base)
annivo_module(annivo_appkit platform/appkit annivo_foundation)
annivo_module(annivo_coredata platform/coredata annivo_foundation annivo_xml)
target_link_libraries(annivo_coredata PRIVATE PkgConfig::sqlite3 PkgConfig::pugixml)
annivo_module(annivo_addressbook platform/addressbook annivo_coredata annivo_foundation)
annivo_module(annivo_calendarstore platform/calendarstore annivo_foundation annivo_icalendar)
if(ANNIVO_SANITIZE)
  # What reads whole ledgers and event files keeps its time limits under the sanitizers too.
  foreach(module annivo_coredata annivo_calendarstore annivo_icalendar annivo_xml)
    target_compile_options(${module} PRIVATE -O1)
  endforeach()
endif()
annivo_module(annivo_sparkle platform/sparkle annivo_foundation ${CMAKE_DL_LIBS})
annivo_module(annivo_platform platform annivo_appkit annivo_addressbook annivo_calendarstore
  annivo_sparkle annivo_coredata annivo_foundation)

# The domain. It sees platform headers and nothing of what stands behind them. ZPKLimitSystem is
# the leaf of run/ that contacts/ looks back to.
add_library(annivo_limits STATIC ${CMAKE_SOURCE_DIR}/run/ZPKLimitSystem.cpp)
target_link_libraries(annivo_limits PRIVATE annivo_options PUBLIC annivo_platform)
annivo_module(annivo_contacts contacts annivo_limits annivo_platform)
annivo_module(annivo_calendar calendar annivo_platform)
annivo_module(annivo_format format annivo_calendar annivo_platform)
annivo_module(annivo_run run annivo_contacts annivo_calendar annivo_format annivo_platform)

# The parent application, but for its main.
annivo_module(annivo_settings parent/settings annivo_run annivo_platform)
annivo_module(annivo_sources parent/sources annivo_settings annivo_vcard)
annivo_module(annivo_runs parent/runs annivo_sources)
annivo_module(annivo_command parent/command annivo_runs)
target_link_libraries(annivo_command PRIVATE CLI11::CLI11)
